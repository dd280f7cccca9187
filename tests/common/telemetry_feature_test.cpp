#include "client/src/common/telemetry_feature.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "client/src/common/hw_operation_metadata.h"
#include "client/src/common/telemetry_endpoints.h"
#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using qumetra::test::LogCapture;
using qumetra::test::RecordingSink;
using Infos = std::vector<const _qm_aggregator_info*>;

CounterField field(const std::string& entity, const std::string& descriptor) {
  CounterField result;
  result.entity = entity;
  result.descriptor = descriptor;
  result.subEntity = getSubEntity(entity);
  result.label = makeCounterLabel(entity, descriptor);
  return result;
}

TEST(FeatureWarnings, TellAnAttributeThatIsNotApplied) {
  const LogCapture log;
  warnUnappliedAttribute("TAG", "COUNTER1", "DIVIDER");
  EXPECT_EQ(log.warnings(),
            (RecordingSink::Texts{{2,
                                   "WARNING: TAG: counter COUNTER1 declares DIVIDER, which this "
                                   "feature does not apply; ignoring it\n"}}));
}

TEST(FeatureWarnings, TellMetricMetadataThatIsNotUsed) {
  const LogCapture log;
  warnUnknownMetricMetadata("TAG", "KEY");
  EXPECT_EQ(log.warnings(), (RecordingSink::Texts{{2,
                                                   "WARNING: TAG: ignoring metric metadata KEY, "
                                                   "which this feature does not use\n"}}));
}

TEST(FeatureWarnings, NeedTheLevelOrTheTag) {
  LogCapture log(PluginEnvironment::kErrors);
  warnUnknownMetricMetadata("TAG", "KEY");
  warnUnappliedAttribute("TAG", "C", nullptr);
  EXPECT_TRUE(log.warnings().empty());
  log.environment().enabledTags.add("TAG");
  warnUnknownMetricMetadata("TAG", "KEY");
  warnUnappliedAttribute("TAG", "C", nullptr);
  EXPECT_EQ(log.warnings().size(), 2U);
}

TEST(MixedFields, OneFormAloneIsRight) {
  const LogCapture log;
  EXPECT_EQ(rejectMixedSubEntityFields("TAG", {}), 0);
  EXPECT_EQ(rejectMixedSubEntityFields("TAG", {{"A", {field("P/S", "d"), field("P/T", "d")}}}), 0);
  EXPECT_EQ(
      rejectMixedSubEntityFields("TAG", {{"A", {field("P", "d")}}, {"B", {field("P/S", "")}}}), 0);
  EXPECT_TRUE(log.errors().empty());
}

TEST(MixedFields, BothFormsAreAnErrorThatNamesTheFirstFieldWithoutSubEntity) {
  const LogCapture log(PluginEnvironment::kErrors);
  EXPECT_EQ(rejectMixedSubEntityFields(
                "TAG", {{"A", {field("P/S", "d"), field("P", "first"), field("P", "second")}}}),
            1);
  EXPECT_EQ(log.errors(),
            (RecordingSink::Texts{{1,
                                   "ERROR: TAG: counter first reports on no sub-entity while "
                                   "other counters do; a feature cannot mix the two forms\n"}}));
}

TEST(MixedFields, ErrorShowsByItsTagAtQuietLevel) {
  LogCapture log(PluginEnvironment::kQuiet);
  const CounterTable counters = {{"A", {field("P/S", "d"), field("P", "e")}}};
  EXPECT_EQ(rejectMixedSubEntityFields("TAG", counters), 1);
  EXPECT_TRUE(log.errors().empty());
  log.environment().enabledTags.add("TAG");
  EXPECT_EQ(rejectMixedSubEntityFields("TAG", counters), 1);
  EXPECT_EQ(log.errors().size(), 1U);
}

TEST(SubEntityFields, AreRecordedByLabelAndTheFirstStays) {
  CounterField later = field("P/S", "d");
  later.description = "later";
  std::unordered_map<std::string, CounterField> out;
  recordSubEntityFields(
      "A", {{"A", {field("P/S", "d"), field("P", "e"), later}}, {"B", {field("P/T", "d")}}}, out);
  ASSERT_EQ(out.size(), 1U);
  EXPECT_EQ(out.at("S:d").description, "");
}

TEST(SubEntityFields, OfAnUnknownCounterAreNone) {
  std::unordered_map<std::string, CounterField> out;
  recordSubEntityFields("C", {{"A", {field("P/S", "d")}}}, out);
  EXPECT_TRUE(out.empty());
}

TEST(FeatureEntity, IsTheDeviceOfTheFirstCounterThatHasOne) {
  const LogCapture log;
  const CounterTable counters = {{"A", {field("", "d"), field("PKG/S", "d")}},
                                 {"B", {field("PKG", "d")}}};
  EXPECT_EQ(resolveFeatureEntity("TAG", "name", {"unknown", "A", "B"}, counters), "PKG");
  EXPECT_TRUE(log.warnings().empty());
}

TEST(FeatureEntity, WithoutADeviceIsTheName) {
  EXPECT_EQ(resolveFeatureEntity("TAG", "name", {"A"}, {}), "name");
}

TEST(FeatureEntity, AnotherDeviceIsAWarningAndTheFirstStays) {
  const LogCapture log;
  const CounterTable counters = {{"A", {field("ONE/S", "d")}}, {"B", {field("TWO/S", "d")}}};
  EXPECT_EQ(resolveFeatureEntity("TAG", "name", {"A", "B", "A"}, counters), "ONE");
  EXPECT_EQ(log.warnings(),
            (RecordingSink::Texts{{2,
                                   "WARNING: TAG: counter B declares device TWO but an earlier "
                                   "counter declared ONE; using ONE\n"}}));
}

/// A system with endpoints 5 and 9, and messages that name endpoints.
class Endpoints : public ::testing::Test {
 protected:
  Endpoints() {
    m_system.m_aggregators[5].instance = 50;
    m_system.m_aggregators[9].instance = 90;
  }
  void addOperation(const std::vector<std::pair<std::string, std::string>>& pairs) {
    auto metadata = std::make_unique<HWOperationMetadata>("", "", 8);
    metadata->m_pairs = pairs;
    m_message.m_operations.push_back(std::move(metadata));
  }
  int extract() { return extractPMTEndpoints("TAG", m_system, &m_message, m_out); }
  const _qm_aggregator_info* info(std::uint16_t id) { return &m_system.m_aggregators.at(id); }

  LogCapture m_log;
  SystemMetadata m_system;
  MsgMetadata m_message;
  Infos m_out;
};

TEST_F(Endpoints, AreFoundInOrderAndRepeatedly) {
  addOperation({{"ENDPOINT-ID", "9"}, {"OTHER", "1"}, {"ENDPOINT-ID", "0x5"}});
  addOperation({{"ENDPOINT-ID", "9"}});
  EXPECT_EQ(extract(), 0);
  EXPECT_EQ(m_out, (Infos{info(9), info(5), info(9)}));
}

TEST_F(Endpoints, OfNoMessageFail) {
  EXPECT_EQ(extractPMTEndpoints("TAG", m_system, nullptr, m_out), 1);
}

TEST_F(Endpoints, NoneAtAllFailSilently) {
  addOperation({{"OTHER", "5"}});
  m_message.m_operations.push_back(nullptr);
  EXPECT_EQ(extract(), 1);
  EXPECT_TRUE(m_log.warnings().empty());
}

TEST_F(Endpoints, AnUnknownIdEndsTheWalkWithAWarning) {
  addOperation({{"ENDPOINT-ID", "9"}, {"ENDPOINT-ID", "6"}, {"ENDPOINT-ID", "5"}});
  EXPECT_EQ(extract(), 1);
  EXPECT_EQ(m_out, Infos{info(9)});
  EXPECT_EQ(m_log.warnings(),
            (RecordingSink::Texts{
                {2, "WARNING: Endpoint for message not found in loaded endpoints!\n"}}));
}

TEST_F(Endpoints, WarningShowsByItsTag) {
  m_log.environment().verbosity = PluginEnvironment::kQuiet;
  m_log.environment().enabledTags.add("TAG");
  addOperation({{"ENDPOINT-ID", "6"}});
  EXPECT_EQ(extract(), 1);
  EXPECT_EQ(m_log.warnings().size(), 1U);
}

TEST(EndpointId, IsTheLeadingNumber) {
  EXPECT_EQ(extractEndpointIdFromKey("12abc"), 12);
  EXPECT_EQ(extractEndpointIdFromKey("65535"), 65535);
  EXPECT_EQ(extractEndpointIdFromKey("007:x"), 7);
}

TEST(EndpointId, IsZeroWithoutAFittingNumber) {
  for (const char* const key : {"", "abc", "65536", " 1", "-1", "+1", "99999999999999999999"}) {
    EXPECT_EQ(extractEndpointIdFromKey(key), 0) << key;
  }
}

TEST(InstanceInfo, CountsDifferentInstancesAndRanksTheOne) {
  _qm_aggregator_info five;
  five.instance = 5;
  _qm_aggregator_info three;
  three.instance = 3;
  const Infos infos = {&five, nullptr, &three, &five};
  unsigned short index = 7;
  EXPECT_EQ(getPMTInstanceInfo(infos, 5, index), 2U);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(getPMTInstanceInfo(infos, 3, index), 2U);
  EXPECT_EQ(index, 0);
}

TEST(InstanceInfo, AMissingInstanceHasRankZero) {
  _qm_aggregator_info three;
  three.instance = 3;
  unsigned short index = 7;
  EXPECT_EQ(getPMTInstanceInfo({&three}, 4, index), 1U);
  EXPECT_EQ(index, 0);
  EXPECT_EQ(getPMTInstanceInfo({}, 4, index), 0U);
}

}  // namespace
}  // namespace pwr
