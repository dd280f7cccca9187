#include "client/src/common/counter_field.h"

#include <string>

#include <gtest/gtest.h>

#include "client/src/common/hw_operation_metadata.h"
#include "client/src/common/text_parsing.h"
#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using qumetra::test::LogCapture;
using qumetra::test::RecordingSink;
using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr const char* kInitValue = "X_COUNTER7_FOO";

HWOperationMetadata described(const std::string& initValue, const Pairs& pairs) {
  HWOperationMetadata metadata(initValue, "AGGR-TELEM", 8);
  for (const auto& [key, value] : pairs) {
    metadata.addValue(key, value);
  }
  return metadata;
}

/// Parses descriptions into a table, with all warnings showing.
class CounterParsing : public ::testing::Test {
 protected:
  int parse(const Pairs& pairs, const std::string& initValue = kInitValue) {
    const HWOperationMetadata metadata = described(initValue, pairs);
    return parseAggrTelemOperationMetadata("TAG", &metadata, m_counters);
  }
  /// The one field of the one counter.
  const CounterField& field() const { return m_counters.at("COUNTER7").at(0); }
  void expectMalformed(const std::string& warning) {
    EXPECT_TRUE(m_counters.empty());
    EXPECT_EQ(m_log.warnings(), (RecordingSink::Texts{{2, warning}}));
  }

  LogCapture m_log;
  CounterTable m_counters;
};

TEST(CounterName, EndsBeforeTheSeparator) {
  EXPECT_EQ(getCounterNameFromInitValue(kInitValue, "_", "COUNTER"), "COUNTER7");
}

TEST(CounterName, SeparatorIsLookedForOnePlaceBehindThePrefixsStart) {
  EXPECT_EQ(getCounterNameFromInitValue("XA_B_C", "_", "A_B"), "A");
  EXPECT_EQ(getCounterNameFromInitValue("_A_", "_", "_"), "_A");
}

TEST(CounterName, IsEmptyWithoutPrefixOrSeparator) {
  EXPECT_EQ(getCounterNameFromInitValue("X_FOO_BAR", "_", "COUNTER"), "");
  EXPECT_EQ(getCounterNameFromInitValue("X_COUNTER7", "_", "COUNTER"), "");
}

TEST_F(CounterParsing, AllKeysHaveTheirFields) {
  EXPECT_EQ(parse({{"BIT-RANGE", "7:3"},
                   {"ENTITY", "PKG/CORE0"},
                   {"DESCRIPTOR", "C6"},
                   {"DESCRIPTION", "words"},
                   {"DATA-FORMAT", "U8.8"},
                   {"SCALE-FACTOR", "2"},
                   {"DIVIDER", "x"},
                   {"OTHER", "y"}}),
            0);
  EXPECT_EQ(field().label, "CORE0:C6");
  EXPECT_EQ(field().msb, 7);
  EXPECT_EQ(field().lsb, 3);
  EXPECT_EQ(field().entity, "PKG/CORE0");
  EXPECT_EQ(field().subEntity, "CORE0");
  EXPECT_EQ(field().descriptor, "C6");
  EXPECT_EQ(field().description, "words");
  EXPECT_EQ(field().dataFormat, "U8.8");
  EXPECT_EQ(field().scaleFactor, "2");
  EXPECT_EQ(field().divider, "x");
  EXPECT_TRUE(m_log.warnings().empty());
}

TEST_F(CounterParsing, AKeyWithBitRangeInsideIsABitRange) {
  EXPECT_EQ(parse({{"DESCRIPTOR", "d"}, {"FOO-BIT-RANGE-BAR", "5:1"}}), 0);
  EXPECT_EQ(field().msb, 5);
}

TEST_F(CounterParsing, OtherKeysMustMatchWhole) {
  EXPECT_EQ(parse({{"BIT-RANGE", "5:1"}, {"DESCRIPTOR", "d"}, {"MY-ENTITY", "P/S"}}), 0);
  EXPECT_EQ(field().entity, "");
}

TEST_F(CounterParsing, LaterPairsOverrideEarlierOnes) {
  EXPECT_EQ(
      parse({{"BIT-RANGE", "5:1"}, {"DESCRIPTOR", "a"}, {"DESCRIPTOR", "b"}, {"BIT-RANGE", "6:2"}}),
      0);
  EXPECT_EQ(field().descriptor, "b");
  EXPECT_EQ(field().msb, 6);
}

TEST_F(CounterParsing, NumbersMayBeHexadecimalAndAreBytes) {
  EXPECT_EQ(parse({{"BIT-RANGE", "0x1F:256"}, {"DESCRIPTOR", "d"}}), 0);
  EXPECT_EQ(field().msb, 31);
  EXPECT_EQ(field().lsb, 0);
}

TEST_F(CounterParsing, TheFirstDescriptionStandsAndLaterOnesAreIgnoredSilently) {
  EXPECT_EQ(parse({{"BIT-RANGE", "5:1"}, {"DESCRIPTOR", "a"}}), 0);
  EXPECT_EQ(parse({{"BIT-RANGE", "bad"}}), 0);
  EXPECT_EQ(m_counters.at("COUNTER7").size(), 1U);
  EXPECT_EQ(field().descriptor, "a");
  EXPECT_TRUE(m_log.warnings().empty());
}

TEST_F(CounterParsing, NoCounterNameIsAFailure) {
  EXPECT_EQ(parse({{"BIT-RANGE", "5:1"}, {"DESCRIPTOR", "a"}}, "X_FOO"), 1);
  expectMalformed("WARNING: TAG: Unable to extract counter name from operation!\n");
}

TEST_F(CounterParsing, NoMetadataIsAFailureToo) {
  EXPECT_EQ(parseAggrTelemOperationMetadata("TAG", nullptr, m_counters), 1);
  expectMalformed("WARNING: TAG: Unable to extract counter name from operation!\n");
}

TEST_F(CounterParsing, NoEntityAndNoDescriptorIsAFailure) {
  EXPECT_EQ(parse({{"BIT-RANGE", "bad"}}), 1);
  expectMalformed(
      "WARNING: TAG: COUNTER7 declares no ENTITY or DESCRIPTOR; malformed operation metadata\n");
}

TEST_F(CounterParsing, AnEntityWithoutSubEntityMakesNoLabel) {
  EXPECT_EQ(parse({{"BIT-RANGE", "5:1"}, {"ENTITY", "PKG"}}), 1);
}

class MalformedBitRange : public CounterParsing,
                          public ::testing::WithParamInterface<const char*> {};

TEST_P(MalformedBitRange, IsAFailure) {
  EXPECT_EQ(parse({{"BIT-RANGE", GetParam()}, {"DESCRIPTOR", "d"}}), 1);
  expectMalformed("WARNING: TAG: Malformed operation metadata!\n");
}

INSTANTIATE_TEST_SUITE_P(Texts, MalformedBitRange,
                         ::testing::Values("", "7", "7:3:1", "7:", ":", "7:x", "a:b"));

TEST_F(CounterParsing, AMissingBitRangeIsAFailureAndTheNextDescriptionIsParsedAnew) {
  EXPECT_EQ(parse({{"DESCRIPTOR", "d"}}), 1);
  expectMalformed("WARNING: TAG: Malformed operation metadata!\n");
  EXPECT_EQ(parse({{"DESCRIPTOR", "d"}, {"BIT-RANGE", "1:0"}}), 0);
  EXPECT_EQ(field().msb, 1);
}

TEST_F(CounterParsing, ARangeTheWrongWayAroundIsAnErrorAndKept) {
  EXPECT_EQ(parse({{"BIT-RANGE", "3:7"}, {"ENTITY", "P/S"}}), 0);
  EXPECT_EQ(field().msb, 3);
  EXPECT_EQ(field().lsb, 7);
  EXPECT_EQ(m_log.errors(), (RecordingSink::Texts{{1, "ERROR: MSB:3 is less than LSB:7 for S\n"}}));
}

TEST_F(CounterParsing, WarningsNeedTheLevelOrTheTag) {
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  EXPECT_EQ(parse({}), 1);
  EXPECT_TRUE(m_log.warnings().empty());
  m_log.environment().enabledTags.add("TAG");
  EXPECT_EQ(parse({}), 1);
  EXPECT_EQ(m_log.warnings().size(), 1U);
}

TEST(CounterLabel, JoinsSubEntityAndDescriptor) {
  EXPECT_EQ(makeCounterLabel("PKG/CORE0", "C6"), "CORE0:C6");
  EXPECT_EQ(makeCounterLabel("PKG", "C6"), "C6");
  EXPECT_EQ(makeCounterLabel("PKG/CORE0", ""), "CORE0");
  EXPECT_EQ(makeCounterLabel("PKG", ""), "");
}

TEST(SubEntity, IsWhatFollowsTheFirstSlash) {
  EXPECT_EQ(getSubEntity("PKG/CORE0/T1"), "CORE0/T1");
  EXPECT_EQ(getSubEntity("PKG/"), "");
  EXPECT_EQ(getSubEntity("PKG"), "");
}

}  // namespace
}  // namespace pwr
