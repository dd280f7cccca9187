// Nodes of the tree of names, and the record of a metric. Bytes are worked out by hand.
#include <cstdlib>

#include "tests/writers/kelto_fixture.h"

namespace {

using qumetra::test::FullDisk;
using qumetra::test::hex;
using qumetra::test::KeltoTest;
using qumetra::test::Node;
using qumetra::test::number;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint64_t kNone = 0xFFFFFFFF;

class KeltoMetadata : public KeltoTest {
 protected:
  KeltoMetadata() {
    deliverSystem();
    m_headerSize = systemStream().size();
  }
  /// What the system stream got behind its header.
  std::string added() { return systemStream().substr(m_headerSize); }

  int writeNode(const std::string& longName, std::uint64_t uid = 9) {
    return m_writer.writeInfoMetadataHelper("k", 3, longName, "", "", 5, uid, -1);
  }
  int describe(const std::string& name, std::uint64_t id = kMetric,
               const pwr::Quantity* quantity = nullptr) {
    return m_writer.handleMetricMetadataHelper(id, 8, name, name, quantity);
  }
  /// The tab and the time-line of a metric of that name.
  std::pair<std::string, std::string> groupsOf(const std::string& name) {
    EXPECT_EQ(describe(name), 0);
    return {nodes("tab_group").back().longName, nodes("timeline_group").back().longName};
  }
  std::vector<std::string> kinds() {
    std::vector<std::string> names;
    for (const Node& node : nodes("info_type")) {
      names.push_back(node.longName);
    }
    return names;
  }

  std::size_t m_headerSize = 0;
};

// The records.

TEST_F(KeltoMetadata, InfoRecord) {
  EXPECT_EQ(m_writer.writeInfoMetadataHelper("kind", 0x01020304, "long", "sh", "d",
                                             0x1112131415161718, 0x2122232425262728, 0x31323334),
            0);
  EXPECT_EQ(hex(added()),
            "10 00 40 02 "
            "00 00 00 00 00 00 00 00 "
            "2c 00 48 00 07 00 02 00 "  // size 44, type 72, sub-type 7, version 2
            "04 03 02 01 "              // kind
            "18 17 16 15 "              // value
            "34 33 32 31 "              // parent
            "28 27 26 25 "              // uid
            "04 00 02 00 04 00 01 00 "  // lengths
            "6c 6f 6e 67 73 68 6b 69 6e 64 64 00 ");
}

TEST_F(KeltoMetadata, InfoRecordWithoutParent) {
  writeNode("x");
  EXPECT_EQ(hex(added().substr(28, 4)), "ff ff ff ff ");
}

TEST_F(KeltoMetadata, LegacyRecordsAreOfVersionOne) {
  m_writer.legacy = true;
  writeNode("x");
  EXPECT_EQ(hex(added().substr(18, 2)), "01 00 ");
}

TEST_F(KeltoMetadata, LegacyComesFromTheEnvironment) {
  ::setenv("PW_ENABLE_LEGACY_KELTO", "y", 1);
  EXPECT_TRUE(qumetra::test::OpenKeltoWriter().legacy);
  ::setenv("PW_ENABLE_LEGACY_KELTO", "yes", 1);
  EXPECT_FALSE(qumetra::test::OpenKeltoWriter().legacy);
  ::unsetenv("PW_ENABLE_LEGACY_KELTO");
  EXPECT_FALSE(qumetra::test::OpenKeltoWriter().legacy);
}

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

// Texts at their limits.

TEST_F(KeltoMetadata, NodeTextOf399CharactersIsWritten) {
  EXPECT_EQ(writeNode(std::string(398, 'x')), 0);
  EXPECT_EQ(added().size(), 44U + 400);
  EXPECT_EQ(number(added(), 12, 2), 432U);
}

TEST_F(KeltoMetadata, NodeTextOf400CharactersIsRefused) {
  EXPECT_EQ(writeNode(std::string(399, 'x')), 1);
  EXPECT_EQ(added(), "");
  EXPECT_THAT(warnings(), ElementsAre("Info names string too long\n"));
}

TEST_F(KeltoMetadata, NodeThatWasTooLongCountsAsWrittenTheSecondTime) {
  writeNode(std::string(399, 'x'));
  EXPECT_EQ(writeNode(std::string(399, 'x')), 0);
  EXPECT_EQ(warnings().size(), 1U);
  EXPECT_EQ(added(), "");
}

TEST_F(KeltoMetadata, SameNodeIsWrittenOnce) {
  writeNode("x");
  const std::string once = added();
  EXPECT_EQ(writeNode("x"), 0);
  EXPECT_EQ(added(), once);
  writeNode("x", 10);
  EXPECT_EQ(added().size(), 2 * once.size());
}

TEST_F(KeltoMetadata, NodeIsKnownByAllThatMakesItUp) {
  m_writer.writeInfoMetadataHelper("kind", 3, "long", "sh", "d", 5, ~std::uint64_t{0}, -1);
  const std::string key =
      "infotype:kind_longname:long_shortname:sh_description:d_value:5_uid:18446744073709551615_"
      "parent_uid:-1";
  ASSERT_TRUE(m_writer.infoRecordIds.contains(key));
  EXPECT_EQ(m_writer.infoRecordIds.at(key), 5);
}

TEST_F(KeltoMetadata, MetricNameOf200CharactersIsTooLong) {
  m_writer.tabGroupIds[7] = 1;
  m_writer.timelineGroupIds[7] = 2;
  const std::string longest(199, 'n');
  EXPECT_EQ(m_writer.writeMetricMetadata(longest, longest, 7, 5, -1, 7, 7), 0);
  EXPECT_EQ(m_writer.writeMetricMetadata(longest + "n", longest + "n", 7, 5, -1, 7, 7), 1);
  EXPECT_THAT(warnings(), ElementsAre("Metric name too long.\n"));
}

// Kinds.

TEST_F(KeltoMetadata, KindsAreNumberedInOrderOfFirstNeed) {
  EXPECT_EQ(m_writer.getInfoTypeMetadataId("b"), 2U);
  EXPECT_EQ(m_writer.getInfoTypeMetadataId("a"), 3U);
  EXPECT_EQ(m_writer.getInfoTypeMetadataId("b"), 2U);
  EXPECT_THAT(kinds(), ElementsAre("metric_type", "b", "a"));
}

TEST_F(KeltoMetadata, FailedKindLeavesAHoleInTheNumbers) {
  EXPECT_EQ(m_writer.getInfoTypeMetadataId(std::string(190, 'k')), ~std::uint64_t{0});
  EXPECT_THAT(warnings(), ElementsAre("Info names string too long\n",
                                      "Failed to write info type metadata for '" +
                                          std::string(190, 'k') + "'.\n"));
  EXPECT_EQ(m_writer.getInfoTypeMetadataId("a"), 3U);
}

TEST_F(KeltoMetadata, MetricNeedsItsKindsInOrder) {
  describe("Name", kMetric, &quantity("Q", "u"));
  EXPECT_THAT(kinds(), ElementsAre("metric_type", "tab_group", "timeline_group", "quantity"));
}

// Metrics.

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

// Quantities.

TEST_F(KeltoMetadata, NoQuantityIsMinusOne) {
  long uid = 0;
  EXPECT_EQ(m_writer.handleQuantityMetadata(nullptr, uid), 0);
  EXPECT_EQ(uid, -1);
}

TEST_F(KeltoMetadata, QuantityTellsNameUnitsAndMultiplier) {
  pwr::Quantity& rate = quantity("Rate", "W/s", 9);
  pwr::Quantity& power = quantity("Power", "W", 3);
  power.setRateConversion(&rate, 0.1234567);
  long uid = 0;
  m_writer.handleQuantityMetadata(&power, uid);
  const Node node = nodes("quantity").back();
  EXPECT_EQ(node.longName, "Power|W|0.123457");
  EXPECT_EQ(node.shortName, "Power");
  EXPECT_EQ(node.description, "quantity_type");
  EXPECT_EQ(node.value, 3U);
  EXPECT_EQ(node.uid, power.getId());
  EXPECT_EQ(node.parent, rate.getId());
  EXPECT_EQ(uid, static_cast<long>(power.getId()));
}

TEST_F(KeltoMetadata, RateStandsBeforeWhatPointsAtIt) {
  pwr::Quantity& rate = quantity("Rate", "W/s");
  pwr::Quantity& power = quantity("Power", "W");
  power.setRateConversion(&rate, 1);
  long uid = 0;
  m_writer.handleQuantityMetadata(&power, uid);
  ASSERT_EQ(nodes("quantity").size(), 2U);
  EXPECT_EQ(nodes("quantity")[0].shortName, "Rate");
  EXPECT_EQ(nodes("quantity")[0].parent, kNone);
  EXPECT_THAT(m_log.warnings(),
              ElementsAre(std::pair(2, "WARNING: Rate Quantity not specified for Rate\n")));
}

TEST_F(KeltoMetadata, PercentSignAloneBecomesAWord) {
  long uid = 0;
  m_writer.handleQuantityMetadata(&quantity("A", "%"), uid);
  m_writer.handleQuantityMetadata(&quantity("B", "%/s"), uid);
  EXPECT_EQ(nodes("quantity")[0].longName, "A|percent|1");
  EXPECT_EQ(nodes("quantity")[1].longName, "B|%/s|1");
}

TEST_F(KeltoMetadata, QuantityTypeIsTheCodeFrom1To13) {
  EXPECT_EQ(m_writer.getKeltoQuantityType(0), 0U);
  EXPECT_EQ(m_writer.getKeltoQuantityType(1), 1U);
  EXPECT_EQ(m_writer.getKeltoQuantityType(13), 13U);
  EXPECT_EQ(m_writer.getKeltoQuantityType(14), 0U);
}

TEST_F(KeltoMetadata, MissingRateIsToldAtEachUse) {
  const pwr::Quantity& power = quantity("Power", "W");
  long uid = 0;
  m_writer.handleQuantityMetadata(&power, uid);
  m_writer.handleQuantityMetadata(&power, uid);
  EXPECT_EQ(m_log.warnings().size(), 2U);
  EXPECT_EQ(nodes("quantity").size(), 1U);
}

TEST_F(KeltoMetadata, ChangedRateIsWrittenAnew) {
  pwr::Quantity& power = quantity("Power", "W");
  long uid = 0;
  m_writer.handleQuantityMetadata(&power, uid);
  power.setRateConversion(&quantity("Rate", "W/s"), 2);
  m_writer.handleQuantityMetadata(&power, uid);
  ASSERT_EQ(nodes("quantity").size(), 3U);
  EXPECT_EQ(nodes("quantity")[2].longName, "Power|W|2");
}

TEST_F(KeltoMetadata, RatesInACircleEndBeforeTheyRepeat) {
  pwr::Quantity& a = quantity("A", "a");
  pwr::Quantity& b = quantity("B", "b");
  a.setRateConversion(&b, 1);
  b.setRateConversion(&a, 1);
  long uid = 0;
  EXPECT_EQ(m_writer.handleQuantityMetadata(&a, uid), 0);
  ASSERT_EQ(nodes("quantity").size(), 2U);
  EXPECT_EQ(nodes("quantity")[0].shortName, "B");
  EXPECT_EQ(nodes("quantity")[0].parent, kNone);
  EXPECT_EQ(nodes("quantity")[1].parent, b.getId());
  EXPECT_EQ(m_writer.handleQuantityMetadata(&b, uid), 0);
  EXPECT_EQ(m_writer.handleQuantityMetadata(&a, uid), 0);
}

TEST_F(KeltoMetadata, LongChainOfRatesIsWritten) {
  pwr::Quantity* first = &quantity("Q", "u");
  for (int i = 0; i < 50'000; ++i) {
    pwr::Quantity& next = quantity("Q", "u");
    next.setRateConversion(first, 1);
    first = &next;
  }
  long uid = 0;
  EXPECT_EQ(m_writer.handleQuantityMetadata(first, uid), 0);
  EXPECT_EQ(m_writer.quantityIds.size(), 50'001U);
}

TEST_F(KeltoMetadata, FailedRateFailsWhatPointsAtIt) {
  const std::string name(200, 'q');
  pwr::Quantity& rate = quantity(name, "u", 5);
  pwr::Quantity& power = quantity("Power", "W", 3);
  power.setRateConversion(&rate, 0.5);
  long uid = 0;
  EXPECT_EQ(m_writer.handleQuantityMetadata(&power, uid), 1);
  const std::vector<std::string> texts = warnings();
  const std::string rateId = std::to_string(rate.getId());
  EXPECT_EQ(texts[texts.size() - 2], "Failed to write quantity metadata name:'" + name +
                                         "' units:'u' type:'5' uid:'" + rateId +
                                         "' rate uid:'-1' multiplier:'1.000000'.\n");
  EXPECT_EQ(texts.back(),
            "Failed to handle rate quantity metadata for quantity name:'Power' units:'W' type:'3' "
            "uid:'" +
                std::to_string(power.getId()) + "' rate uid:'" + rateId +
                "' multiplier:'0.500000'.\n");
}

// Entities.

TEST_F(KeltoMetadata, ParentStandsBeforeItsChild) {
  pwr::EntityHandle& package = entity("Package");
  pwr::EntityHandle& core = entity("Core", &package);
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&core), 0);
  const std::vector<Node> found = nodes("entity");
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].longName, "Package");
  EXPECT_EQ(found[0].parent, kNone);
  EXPECT_EQ(found[1].longName, "Core");
  EXPECT_EQ(found[1].shortName, "Core");
  EXPECT_EQ(found[1].description, "entity_id");
  EXPECT_EQ(found[1].parent, package.getId());
  EXPECT_EQ(found[1].uid, core.getId());
  EXPECT_EQ(found[1].value, core.getId());
}

TEST_F(KeltoMetadata, EntityIsWrittenOnce) {
  pwr::EntityHandle& core = entity("Core");
  m_writer.writeEntityMetadataTopology(&core);
  m_writer.writeEntityMetadataTopology(&core);
  EXPECT_EQ(nodes("entity").size(), 1U);
}

TEST_F(KeltoMetadata, UnnamedEntityIsNA) {
  pwr::EntityHandle& unnamed = entity("");
  m_writer.writeEntityMetadataTopology(&unnamed);
  EXPECT_EQ(nodes("entity")[0].longName, "NA");
  EXPECT_TRUE(m_writer.entityParents.contains("NA_" + std::to_string(unnamed.getId())));
}

TEST_F(KeltoMetadata, EntityThatTurnsUpWithAnotherParentIsRefused) {
  EXPECT_EQ(m_writer.writeEntityMetadata("E", "E", 5, ~std::uint64_t{0}), 0);
  EXPECT_EQ(m_writer.writeEntityMetadata("E", "E", 5, ~std::uint64_t{0}), 0);
  EXPECT_EQ(m_writer.writeEntityMetadata("E", "E", 5, 6), 1);
  EXPECT_THAT(warnings(), ElementsAre("The saved parent entity id '18446744073709551615' for "
                                      "entity 'E' doesn't match the new parent entity id '6'.\n"));
}

TEST_F(KeltoMetadata, EntityThatHasItsNameAndIdFromItsParentIsRefused) {
  const pwr::EntityHandle parent(5, {"E", "", ""}, nullptr);
  const pwr::EntityHandle child(5, {"E", "", ""}, &parent);
  const pwr::EntityHandle grandchild(6, {"G", "", ""}, &child);
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&grandchild), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("The saved parent entity id '18446744073709551615' for entity 'E' "
                          "doesn't match the new parent entity id '5'.\n",
                          "Failed to write entity 'E' metadata.\n",
                          "Failed to write parent entity metadata for entity 'G'.\n"));
}

TEST_F(KeltoMetadata, EntityTreeWithoutARootIsRefused) {
  struct Circle {
    pwr::EntityHandle a;
    pwr::EntityHandle b;
    Circle() : a(5, {"A", "", ""}, &b), b(6, {"B", "", ""}, &a) {}
  };
  const Circle circle;
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&circle.a), 1);
  EXPECT_THAT(warnings(), ElementsAre("Failed to write parent entity metadata for entity 'A'.\n"));
}

TEST_F(KeltoMetadata, DeepEntityTreeIsWritten) {
  const pwr::EntityHandle* deepest = nullptr;
  for (int i = 0; i < 50'000; ++i) {
    deepest = &entity("E", deepest);
  }
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(deepest), 0);
  EXPECT_EQ(m_writer.entityParents.size(), 50'000U);
}

TEST_F(KeltoMetadata, EntityThatCouldNotBeWrittenIsTriedAgain) {
  pwr::EntityHandle& core = entity(std::string(200, 'e'));
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&core), 0);
  EXPECT_THAT(warnings(), ElementsAre("Info names string too long\n"));
  EXPECT_TRUE(m_writer.entityParents.empty());
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&core), 0);
  EXPECT_EQ(m_writer.entityParents.size(), 1U);
  EXPECT_THAT(nodes("entity"), IsEmpty());
}

TEST_F(KeltoMetadata, EntityWithoutItsKindFails) {
  refuse(kSystem);
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&entity("E")), 1);
  EXPECT_THAT(warnings(), ElementsAre("Failed to write info type metadata for 'entity'.\n",
                                      "Failed to write entity 'E' metadata.\n"));
}

// States.

TEST_F(KeltoMetadata, StateIsAFieldWithTheDescriptorsId) {
  std::uint64_t id = 77;
  EXPECT_EQ(m_writer.writeStateMetadata("C6", "C6", id), 0);
  const Node field = nodes("field").back();
  EXPECT_EQ(field.longName, "C6");
  EXPECT_EQ(field.shortName, "C6");
  EXPECT_EQ(field.description, "field_id");
  EXPECT_EQ(field.value, 77U);
  EXPECT_EQ(field.uid, 77U);
  EXPECT_EQ(field.parent, kNone);
}

TEST_F(KeltoMetadata, StateKeepsItsFirstId) {
  std::uint64_t id = 77;
  m_writer.writeStateMetadata("C6", "C6", id);
  id = 78;
  EXPECT_EQ(m_writer.writeStateMetadata("C6", "C6", id), 0);
  EXPECT_EQ(id, 77U);
  EXPECT_EQ(nodes("field").size(), 1U);
}

TEST_F(KeltoMetadata, StateThatCouldNotBeWrittenIsNoFailure) {
  std::uint64_t id = 77;
  const std::string name(200, 's');
  EXPECT_EQ(m_writer.writeStateMetadata(name, name, id), 0);
  EXPECT_TRUE(m_writer.fieldIds.empty());
  EXPECT_EQ(id, 77U);
}

TEST_F(KeltoMetadata, StateWithoutItsKindFails) {
  refuse(kSystem);
  std::uint64_t id = 77;
  EXPECT_EQ(m_writer.writeStateMetadata("C6", "C6", id), 1);
}

TEST_F(KeltoMetadata, ColorNodeTellsBothColors) {
  EXPECT_EQ(m_writer.writeStateColorMetadata("C6"), 0);
  const Node color = nodes("color").back();
  EXPECT_EQ(color.longName, "1,150,0|1,150,0");
  EXPECT_EQ(color.shortName, "C6");
  EXPECT_EQ(color.description, "color_id");
  EXPECT_EQ(color.value, color.uid);
  EXPECT_EQ(color.parent, kNone);
  EXPECT_EQ(static_cast<std::uint64_t>(m_writer.colorIds["C6"]), color.uid);
}

TEST_F(KeltoMetadata, ColorIsWrittenOnce) {
  m_writer.writeStateColorMetadata("unknown state");
  m_writer.writeStateColorMetadata("unknown state");
  EXPECT_EQ(nodes("color").size(), 1U);
}

TEST_F(KeltoMetadata, ColorThatCouldNotBeWrittenFails) {
  EXPECT_EQ(m_writer.writeStateColorMetadata("C6" + std::string(380, 's')), 1);
  refuse(kSystem);
  EXPECT_EQ(m_writer.writeStateColorMetadata("C6"), 1);
}

// Keys.

TEST_F(KeltoMetadata, NameIdKeyIsNameAndId) {
  EXPECT_EQ(m_writer.getNameIdKey("name", ~std::uint64_t{0}), "name_18446744073709551615");
}

TEST_F(KeltoMetadata, UniqueIdIsDrawnOncePerKey) {
  const std::uint64_t first = m_writer.getUniqueId("a");
  EXPECT_EQ(m_writer.getUniqueId("b"), first + 1);
  EXPECT_EQ(m_writer.getUniqueId("a"), first);
}

}  // namespace
