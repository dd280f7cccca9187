// The record of a metric, its tab and its time-line. Bytes are worked out by hand.
#include "tests/writers/kelto_metadata_fixture.h"

namespace {

using qumetra::test::hex;
using qumetra::test::KeltoMetadata;
using qumetra::test::Node;
using qumetra::test::number;
using ::testing::ElementsAre;

constexpr std::uint64_t kNone = 0xFFFFFFFF;

// The record.

TEST_F(KeltoMetadata, MetricRecord) {
  m_writer.tabGroupIds[7] = 0x11223344;
  m_writer.timelineGroupIds[7] = 0x55667788;
  m_writer.quantityIds[0x0A0B0C0D] = 0x0A0B0C0D;
  EXPECT_EQ(m_writer.writeMetricMetadata("ab", "cde", 7, 5, 0x0A0B0C0D, 7, 7), 0);
  EXPECT_EQ(hex(stream(kMetric)),
            "10 00 40 02 "
            "00 00 00 00 00 00 00 00 "
            "26 00 48 00 08 00 02 00 "  // size 38, type 72, sub-type 8, version 2
            "05 00 00 00 "              // metric type
            "07 00 00 00 "              // metric id
            "0d 0c 0b 0a "              // quantity
            "44 33 22 11 "              // tab
            "88 77 66 55 "              // time-line
            "02 00 03 00 "              // lengths
            "61 62 63 64 65 00 ");
}

TEST_F(KeltoMetadata, MetricRecordHoldsTheNameTwice) {
  describe("Name");
  const std::string record = stream(kMetric);
  EXPECT_EQ(hex(record.substr(40)), "04 00 04 00 4e 61 6d 65 4e 61 6d 65 00 ");
  EXPECT_EQ(hex(record.substr(28, 4)), "ff ff ff ff ");
}

TEST_F(KeltoMetadata, MetricNameOf200CharactersIsTooLong) {
  m_writer.tabGroupIds[7] = 1;
  m_writer.timelineGroupIds[7] = 2;
  const std::string longest(199, 'n');
  EXPECT_EQ(m_writer.writeMetricMetadata(longest, longest, 7, 5, -1, 7, 7), 0);
  EXPECT_EQ(m_writer.writeMetricMetadata(longest + "n", longest + "n", 7, 5, -1, 7, 7), 1);
  EXPECT_THAT(warnings(), ElementsAre("Metric name too long.\n"));
}

// Metrics.

TEST_F(KeltoMetadata, MetricNeedsItsKindsInOrder) {
  describe("Name", kMetric, &quantity("Q", "u"));
  EXPECT_THAT(kinds(), ElementsAre("metric_type", "tab_group", "timeline_group", "quantity"));
}

TEST_F(KeltoMetadata, MetricIsDescribedOnce) {
  describe("Name");
  const std::string once = stream(kMetric);
  EXPECT_EQ(describe("Other"), 0);
  EXPECT_EQ(stream(kMetric), once);
}

class KeltoMetricType
    : public KeltoMetadata,
      public ::testing::WithParamInterface<std::pair<std::uint64_t, std::uint16_t>> {};

TEST_P(KeltoMetricType, HasItsNumber) {
  m_metric.metricType = static_cast<pwr::Metric::MetricType>(GetParam().first);
  std::uint16_t type = 10;
  EXPECT_EQ(m_writer.handleMetricMetadata(&m_metric, &type), 0);
  EXPECT_EQ(type, GetParam().second);
  EXPECT_EQ(number(stream(kMetric), 20, 4), GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(All, KeltoMetricType,
                         ::testing::Values(std::pair(0U, 8), std::pair(1U, 4), std::pair(2U, 5),
                                           std::pair(3U, 7), std::pair(4U, 9), std::pair(5U, 10),
                                           std::pair(0x100000002U, 10)));

TEST_F(KeltoMetadata, SetValueHintMakesTypeSix) {
  m_metric.metricType = pwr::Metric::SAMPLED_VALUE;
  std::uint16_t type = 6;
  EXPECT_EQ(m_writer.handleMetricMetadata(&m_metric, &type), 0);
  EXPECT_EQ(type, 6);
}

TEST_F(KeltoMetadata, SetValueHintFitsNoOtherMetricType) {
  std::uint16_t type = 6;
  EXPECT_EQ(m_writer.handleMetricMetadata(&m_metric, &type), 1);
  EXPECT_THAT(warnings(), ElementsAre("Wrong metric type used for metric 'Metric'.\n"));
}

TEST_F(KeltoMetadata, TracedTransitionsAreMeasuredInTime) {
  m_metric.metricType = pwr::Metric::TRACED_VALUE_TRANSITION;
  m_metric.quantity = &quantity("Power", "W");
  std::uint16_t type = 10;
  m_writer.handleMetricMetadata(&m_metric, &type);
  ASSERT_EQ(nodes("quantity").size(), 1U);
  EXPECT_EQ(nodes("quantity")[0].longName, "Time|s|1");
  EXPECT_EQ(nodes("quantity")[0].uid, pwr::Quantity::time()->getId());
}

TEST_F(KeltoMetadata, FailedTabGroupIsTold) {
  const std::string name(190, 'n');
  EXPECT_EQ(describe(name), 1);
  EXPECT_EQ(warnings().back(), "Failed to write tab group metadata '" + name + ":7'.\n");
}

TEST_F(KeltoMetadata, FailedTimelineGroupIsTold) {
  const std::string name = "Core C-State" + std::string(174, 'n');
  EXPECT_EQ(describe(name), 1);
  EXPECT_EQ(warnings().back(), "Failed to write timeline group metadata '" + name + ":7'.\n");
}

TEST_F(KeltoMetadata, FailedQuantityIsTold) {
  EXPECT_EQ(describe("Name", kMetric, &quantity(std::string(200, 'q'), "u")), 1);
  EXPECT_EQ(warnings().back(), "Failed to create quantity metadata for metric 'Name'.\n");
}

TEST_F(KeltoMetadata, FailedMetricRecordIsTold) {
  refuse(kMetric);
  EXPECT_EQ(describe("Name"), 1);
  EXPECT_EQ(warnings().back(), "Failed to write metric metadata for metric 'Name'.\n");
}

TEST_F(KeltoMetadata, MetricRecordNeedsItsQuantityFirst) {
  EXPECT_EQ(m_writer.writeMetricMetadata("n", "n", 7, 5, 44, 7, 7), 1);
  EXPECT_THAT(warnings(), ElementsAre("Quantity metadata needs to be processed first.\n"));
}

TEST_F(KeltoMetadata, MetricRecordNeedsItsTabFirst) {
  EXPECT_EQ(m_writer.writeMetricMetadata("n", "n", 7, 5, -1, 7, 7), 1);
  EXPECT_THAT(warnings(), ElementsAre("Tab group metadata needs to be processed first.\n"));
}

TEST_F(KeltoMetadata, MetricRecordNeedsItsTimelineFirst) {
  m_writer.tabGroupIds[7] = 1;
  EXPECT_EQ(m_writer.writeMetricMetadata("n", "n", 7, 5, -1, 7, 7), 1);
  EXPECT_THAT(warnings(), ElementsAre("Timeline group metadata needs to be processed first.\n"));
}

// Tabs and time-lines.

TEST_F(KeltoMetadata, TabOfItsOwnBearsTheMetricsName) {
  describe("Name", 0x1234);
  const Node tab = nodes("tab_group").back();
  EXPECT_EQ(tab.longName, "Name");
  EXPECT_EQ(tab.shortName, "Name");
  EXPECT_EQ(tab.description, "tab_group_id");
  EXPECT_EQ(tab.value, 0x1234U);
  EXPECT_EQ(tab.parent, kNone);
  EXPECT_EQ(tab.uid, m_writer.tabGroupIds[0x1234]);
  EXPECT_EQ(number(stream(0x1234), 32, 4), tab.uid);
}

TEST_F(KeltoMetadata, TimelineBelongsToItsTab) {
  describe("Name", 0x1234);
  const Node timeline = nodes("timeline_group").back();
  EXPECT_EQ(timeline.longName, "Name");
  EXPECT_EQ(timeline.description, "timeline_group_id");
  EXPECT_EQ(timeline.value, 0x1234U);
  EXPECT_EQ(timeline.parent, nodes("tab_group").back().uid);
  EXPECT_EQ(number(stream(0x1234), 36, 4), timeline.uid);
}

TEST_F(KeltoMetadata, PackageStatesShareATabOnly) {
  EXPECT_EQ(groupsOf("Package C-State Residency"),
            std::pair(std::string("C-State Residency/Wakeups"),
                      std::string("Package C-State Residency")));
  describe("Module C-State Residency", 8);
  EXPECT_EQ(nodes("tab_group").size(), 1U);
  EXPECT_EQ(nodes("timeline_group").size(), 2U);
}

TEST_F(KeltoMetadata, CoreStatesShareTabAndTimeline) {
  EXPECT_EQ(groupsOf("Core C-State Residency"), std::pair(std::string("C-State Residency/Wakeups"),
                                                          std::string("Core C-State Residency")));
  describe("CPU Wakeups", 8);
  describe("Aborts", 9);
  EXPECT_EQ(nodes("tab_group").size(), 1U);
  EXPECT_EQ(nodes("timeline_group").size(), 1U);
  EXPECT_EQ(number(stream(9), 36, 4), nodes("timeline_group")[0].uid);
}

TEST_F(KeltoMetadata, AbortsMustBeTheWholeName) {
  EXPECT_EQ(groupsOf("Aborts 2").first, "Aborts 2");
}

TEST_F(KeltoMetadata, VmResidencyIsOnTheStatesTabOnly) {
  EXPECT_EQ(groupsOf("VM Residency"),
            std::pair(std::string("C-State Residency/Wakeups"), std::string("VM Residency")));
}

TEST_F(KeltoMetadata, TemperatureComesBeforePower) {
  EXPECT_EQ(groupsOf("Package Power Temperature").first, "Temperature Metrics");
}

class KeltoTab : public KeltoMetadata,
                 public ::testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(KeltoTab, HoldsTheMetric) { EXPECT_EQ(groupsOf(GetParam().first).first, GetParam().second); }

INSTANTIATE_TEST_SUITE_P(All, KeltoTab,
                         ::testing::Values(std::pair("a temperature", "Temperature Metrics"),
                                           std::pair("Thermals", "Temperature Metrics"),
                                           std::pair("thermals", "Temperature Metrics"),
                                           std::pair("Power", "Power Metrics"),
                                           std::pair("power", "Power Metrics"),
                                           std::pair("POWER", "POWER")));

TEST_F(KeltoMetadata, SharedTabBearsItsOwnNameAndTheFirstMetricsId) {
  describe("Power", 8);
  describe("power too", 9);
  const std::vector<Node> tabs = nodes("tab_group");
  ASSERT_EQ(tabs.size(), 1U);
  EXPECT_EQ(tabs[0].shortName, "Power Metrics");
  EXPECT_EQ(tabs[0].value, 8U);
  EXPECT_EQ(m_writer.tabGroupIds[9], tabs[0].uid);
}

TEST_F(KeltoMetadata, InitForgetsTheSharedGroups) {
  describe("Power", 8);
  m_writer.init("again", false);
  describe("Power", 9);
  EXPECT_EQ(nodes("tab_group").size(), 2U);
}

}  // namespace
