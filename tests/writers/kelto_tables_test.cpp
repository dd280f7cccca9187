// The names of attributes and the colours of states.
#include <cstdlib>
#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "writers/keltowriter_plugin/name_tables.h"

namespace {

/// The whole table, state by state, in byte order.
const std::map<std::string, std::string> kColorsByState = {
    {"ACPI C0", "#ffffff"},
    {"ACPI C1", "#4a72fe"},
    {"ACPI C2", "#69a5ae"},
    {"ACPI C3", "#b53c42"},
    {"ACPI CO", "#ffffff"},
    {"ACTIVE", "#3CAC3C"},
    {"C0", "213,255,82"},
    {"C1", "152,238,53"},
    {"C1i", "255,255,102"},
    {"C2", "119,220,30"},
    {"C2i", "255,255,51"},
    {"C3", "0,238,118"},
    {"C3i", "255,255,0"},
    {"C4", "89,195,17"},
    {"C5", "54,160,10"},
    {"C6", "1,150,0"},
    {"C7", "0,60,0"},
    {"CC0", "213,255,82"},
    {"CC1", "152,238,53"},
    {"CC1i", "255,255,102"},
    {"CC2", "119,220,30"},
    {"CC2i", "255,255,51"},
    {"CC3", "0,238,118"},
    {"CC3i", "255,255,0"},
    {"CC4", "89,195,17"},
    {"CC5", "54,160,10"},
    {"CC6", "1,150,0"},
    {"CC7", "0,60,0"},
    {"CCO", "213,255,82"},
    {"CO", "213,255,82"},
    {"D0i0", "213,255,82"},
    {"D0i1", "152,238,53"},
    {"D0i2", "89,195,17"},
    {"D0i3", "1,150,0"},
    {"D0iX", "204,255,204"},
    {"D0ix", "204,255,204"},
    {"DISABLED", "153,153,153"},
    {"DISACTIVE", "153,153,153"},
    {"ENABLED", "#3CAC3C"},
    {"IDLE", "153,153,153"},
    {"MC0", "213,255,82"},
    {"MC1", "152,238,53"},
    {"MC1i", "255,255,102"},
    {"MC2", "119,220,30"},
    {"MC2i", "255,255,51"},
    {"MC3", "0,238,118"},
    {"MC3i", "255,255,0"},
    {"MC4", "89,195,17"},
    {"MC5", "54,160,10"},
    {"MC6", "1,150,0"},
    {"MC7", "0,60,0"},
    {"MCO", "213,255,82"},
    {"PC0", "213,255,82"},
    {"PC1", "152,238,53"},
    {"PC1i", "255,255,102"},
    {"PC2", "119,220,30"},
    {"PC2i", "255,255,51"},
    {"PC3", "0,238,118"},
    {"PC3i", "255,255,0"},
    {"PC4", "89,195,17"},
    {"PC5", "54,160,10"},
    {"PC6", "1,150,0"},
    {"PC7", "0,60,0"},
    {"PCO", "213,255,82"},
    {"P[0]", "#3CAC3C"},
    {"P[10]", "250,171,34"},
    {"P[13]", "242,28,28"},
    {"P[5]", "0,151,0"},
    {"R32", "250,171,34"},
    {"R64", "34,250,171"},
    {"RC0", "255,0,0"},
    {"RC1", "0,0,255"},
    {"RC6", "255,112,0"},
    {"RCO", "255,0,0"},
    {"READ32", "250,171,34"},
    {"READ64", "34,250,171"},
    {"READPARTIAL", "0,255,133"},
    {"READWRITE32", "250,171,34"},
    {"READWRITE64", "34,250,171"},
    {"READWRITEPARTIAL", "79,15,79"},
    {"RP", "0,255,133"},
    {"RW32", "250,171,34"},
    {"RW64", "34,250,171"},
    {"RWP", "79,15,79"},
    {"Read32", "250,171,34"},
    {"Read64", "34,250,171"},
    {"ReadPartial", "0,255,133"},
    {"ReadWrite32", "250,171,34"},
    {"ReadWrite64", "34,250,171"},
    {"ReadWritePartial", "79,15,79"},
    {"S0", "153,255,255"},
    {"S0i0", "153,255,255"},
    {"S0i1", "51,153,255"},
    {"S0i2", "0,128,255"},
    {"S0i3", "0,76,153"},
    {"S0iO", "153,255,255"},
    {"S0iR", "204,153,255"},
    {"S0iX", "204,153,255"},
    {"S3", "0,0,102"},
    {"SO", "153,255,255"},
    {"SOi0", "153,255,255"},
    {"SOi1", "51,153,255"},
    {"SOi2", "0,128,255"},
    {"SOi3", "0,76,153"},
    {"SOiO", "153,255,255"},
    {"SOiR", "204,153,255"},
    {"SOiX", "204,153,255"},
    {"Self Refresh Cycles", "153,153,153"},
    {"W32", "0,151,0"},
    {"W64", "0,0,151"},
    {"WP", "80,0,255"},
    {"WRITE2", "0,151,0"},
    {"WRITE64", "0,0,151"},
    {"WRITEPARTIAL", "80,0,255"},
    {"Write32", "0,151,0"},
    {"Write64", "0,0,151"},
    {"WritePartial", "80,0,255"},
};

class KeltoTables : public ::testing::Test {
 protected:
  KeltoTables() {
    createAttributeMap();
    createStateColorMap();
  }
  static KeltoColor both(const char* color) { return {color, color}; }
};

TEST_F(KeltoTables, AttributesHaveNamesOf16Characters) {
  const std::map<std::uint32_t, std::string> expected = {
      {0, "METRIC          "},  {1, "ENTITY          "},  {2, "FIELD           "},
      {3, "PROCESS         "},  {4, "THREAD          "},  {5, "CALL_STACK_FRAME"},
      {6, "QUANTITY        "},  {7, "COLOR           "},  {8, "INFO            "},
      {9, "INT             "},  {10, "UINT            "}, {11, "REAL            "},
      {12, "INT_LOWER_BOUND "}, {13, "INT_UPPER_BOUND "}, {14, "UINT_LOWER_BOUND"},
      {15, "UINT_UPPER_BOUND"}, {16, "REAL_LOWER_BOUND"}, {17, "REAL_UPPER_BOUND"},
      {18, "DURATION        "},
  };
  EXPECT_EQ(ATTRIBUTE_NAMES, expected);
}

TEST_F(KeltoTables, EveryStateHasItsColorTwice) {
  std::map<std::string, KeltoColor> expected;
  for (const auto& [state, color] : kColorsByState) {
    expected[state] = {color, color};
  }
  EXPECT_EQ(STATE_COLORS, expected);
}

TEST_F(KeltoTables, StatesShare35Colors) {
  EXPECT_EQ(STATE_COLORS.size(), 117U);
  std::set<std::string> colors;
  for (const auto& [state, color] : STATE_COLORS) {
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
