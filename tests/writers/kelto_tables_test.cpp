// The names of attributes and the colours of states.
#include <cstdlib>
#include <set>

#include <gtest/gtest.h>

#include "writers/keltowriter_plugin/name_tables.h"

namespace {

class KeltoTables : public ::testing::Test {
 protected:
  KeltoTables() {
    createAttributeMap();
    createStateColorMap();
  }
  static KeltoColor both(const char* color) { return {color, color}; }
};

TEST_F(KeltoTables, AttributesHaveNamesOf16Characters) {
  ASSERT_EQ(ATTRIBUTE_NAMES.size(), 19U);
  for (const auto& [id, name] : ATTRIBUTE_NAMES) {
    EXPECT_EQ(name.size(), 16U) << id;
  }
  EXPECT_EQ(ATTRIBUTE_NAMES[kMetricAttribute], "METRIC          ");
  EXPECT_EQ(ATTRIBUTE_NAMES[kCallStackFrameAttribute], "CALL_STACK_FRAME");
  EXPECT_EQ(ATTRIBUTE_NAMES[kDurationAttribute], "DURATION        ");
}

TEST_F(KeltoTables, StatesShare35Colors) {
  EXPECT_EQ(STATE_COLORS.size(), 117U);
  std::set<std::string> colors;
  for (const auto& [state, color] : STATE_COLORS) {
    EXPECT_EQ(color.first, color.second) << state;
    colors.insert(color.first);
  }
  EXPECT_EQ(colors.size(), 35U);
}

TEST_F(KeltoTables, SecondFillingChangesNothing) {
  const auto before = STATE_COLORS;
  createAttributeMap();
  createStateColorMap();
  EXPECT_EQ(STATE_COLORS, before);
  EXPECT_EQ(ATTRIBUTE_NAMES.size(), 19U);
}

TEST_F(KeltoTables, StateWithARowHasItsColor) {
  EXPECT_EQ(getColor("PC6"), both("1,150,0"));
  EXPECT_EQ(getColor("ACPI CO"), both("#ffffff"));
  EXPECT_EQ(getColor("WRITE2"), both("0,151,0"));
  EXPECT_EQ(getColor("SOiX"), both("204,153,255"));
  EXPECT_EQ(getColor("Self Refresh Cycles"), both("153,153,153"));
}

TEST_F(KeltoTables, CaseAloneIsFoundInTheRowItself) { EXPECT_EQ(getColor("pc6"), both("1,150,0")); }

TEST_F(KeltoTables, StateIsFoundInTheFirstRowThatContainsIt) {
  EXPECT_EQ(getColor("c1"), both("#4a72fe"));
}

TEST_F(KeltoTables, UnnamedStateHasTheColorOfEnabled) {
  EXPECT_EQ(getColor("NA"), both("#3CAC3C"));
}

TEST_F(KeltoTables, LongerStateThanItsRowIsUnknown) {
  std::srand(7);
  int parts[6];
  for (int& part : parts) {
    part = std::rand() % 256;
  }
  const auto text = [&parts](int first) {
    return std::to_string(parts[first]) + "," + std::to_string(parts[first + 1]) + "," +
           std::to_string(parts[first + 2]);
  };
  std::srand(7);
  EXPECT_EQ(getColor("C1 Plus"), KeltoColor(text(0), text(3)));
}

TEST_F(KeltoTables, UnknownStateIsNotKept) {
  getColor("C1 Plus");
  EXPECT_EQ(STATE_COLORS.size(), 117U);
}

TEST_F(KeltoTables, UnknownMetricNameIsSetWithTheLibrary) {
  EXPECT_EQ(UNKNOWN_METRIC_NAME, "unknown_metric");
}

}  // namespace
