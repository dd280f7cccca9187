#include "writers/keltowriter_plugin/name_tables.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <vector>

const std::string UNKNOWN_METRIC_NAME = "unknown_metric";
std::map<std::uint32_t, std::string> ATTRIBUTE_NAMES;
std::map<std::string, KeltoColor> STATE_COLORS;

namespace {

constexpr std::array<const char*, 19> kAttributeNames = {
    "METRIC          ", "ENTITY          ", "FIELD           ", "PROCESS         ",
    "THREAD          ", "CALL_STACK_FRAME", "QUANTITY        ", "COLOR           ",
    "INFO            ", "INT             ", "UINT            ", "REAL            ",
    "INT_LOWER_BOUND ", "INT_UPPER_BOUND ", "UINT_LOWER_BOUND", "UINT_UPPER_BOUND",
    "REAL_LOWER_BOUND", "REAL_UPPER_BOUND", "DURATION        ",
};

struct ColorRow {
  const char* color;
  std::vector<const char*> states;
};

/// Spellings with the letter O beside those with the digit 0, and WRITE2 beside READ32, are what
/// hosts send.
const std::vector<ColorRow>& colorRows() {
  static const std::vector<ColorRow> s_rows = {
      {"#ffffff", {"ACPI C0", "ACPI CO"}},
      {"#4a72fe", {"ACPI C1"}},
      {"#69a5ae", {"ACPI C2"}},
      {"#b53c42", {"ACPI C3"}},
      {"213,255,82", {"C0", "CO", "CC0", "CCO", "MC0", "MCO", "PC0", "PCO", "D0i0"}},
      {"152,238,53", {"C1", "CC1", "MC1", "PC1", "D0i1"}},
      {"119,220,30", {"C2", "CC2", "MC2", "PC2"}},
      {"0,238,118", {"C3", "CC3", "MC3", "PC3"}},
      {"89,195,17", {"C4", "CC4", "MC4", "PC4", "D0i2"}},
      {"54,160,10", {"C5", "CC5", "MC5", "PC5"}},
      {"1,150,0", {"C6", "CC6", "MC6", "PC6", "D0i3"}},
      {"0,60,0", {"C7", "CC7", "MC7", "PC7"}},
      {"255,255,102", {"C1i", "CC1i", "MC1i", "PC1i"}},
      {"255,255,51", {"C2i", "CC2i", "MC2i", "PC2i"}},
      {"255,255,0", {"C3i", "CC3i", "MC3i", "PC3i"}},
      {"255,0,0", {"RC0", "RCO"}},
      {"0,0,255", {"RC1"}},
      {"255,112,0", {"RC6"}},
      {"#3CAC3C", {"P[0]", "ACTIVE", "ENABLED"}},
      {"0,151,0", {"P[5]", "Write32", "WRITE2", "W32"}},
      {"250,171,34", {"P[10]", "Read32", "READ32", "R32", "ReadWrite32", "READWRITE32", "RW32"}},
      {"242,28,28", {"P[13]"}},
      {"34,250,171", {"Read64", "READ64", "R64", "ReadWrite64", "READWRITE64", "RW64"}},
      {"0,0,151", {"Write64", "WRITE64", "W64"}},
      {"0,255,133", {"ReadPartial", "READPARTIAL", "RP"}},
      {"80,0,255", {"WritePartial", "WRITEPARTIAL", "WP"}},
      {"79,15,79", {"ReadWritePartial", "READWRITEPARTIAL", "RWP"}},
      {"204,255,204", {"D0ix", "D0iX"}},
      {"153,153,153", {"DISACTIVE", "Self Refresh Cycles", "DISABLED", "IDLE"}},
      {"153,255,255", {"S0", "SO", "S0i0", "S0iO", "SOi0", "SOiO"}},
      {"0,0,102", {"S3"}},
      {"51,153,255", {"S0i1", "SOi1"}},
      {"0,128,255", {"S0i2", "SOi2"}},
      {"0,76,153", {"S0i3", "SOi3"}},
      {"204,153,255", {"S0iR", "SOiR", "S0iX", "SOiX"}},
  };
  return s_rows;
}

/// Of the letters A to Z only, so that the locale does not matter.
char lowered(char character) {
  const bool isUpper = character >= 'A' && character <= 'Z';
  return isUpper ? static_cast<char>(character - 'A' + 'a') : character;
}

bool containsInAnyCase(std::string_view text, std::string_view part) {
  return std::search(text.begin(), text.end(), part.begin(), part.end(),
                     [](char a, char b) { return lowered(a) == lowered(b); }) != text.end();
}

std::string randomColor() {
  std::string color;
  for (int part = 0; part < 3; ++part) {
    color += (part == 0 ? "" : ",") + std::to_string(std::rand() % 256);
  }
  return color;
}

}  // namespace

void createAttributeMap() {
  for (std::size_t id = 0; id < kAttributeNames.size(); ++id) {
    ATTRIBUTE_NAMES[static_cast<std::uint32_t>(id)] = kAttributeNames[id];
  }
}

void createStateColorMap() {
  for (const ColorRow& row : colorRows()) {
    for (const char* state : row.states) {
      STATE_COLORS[state] = {row.color, row.color};
    }
  }
}

KeltoColor getColor(const std::string& state) {
  if (const auto exact = STATE_COLORS.find(state); exact != STATE_COLORS.end()) {
    return exact->second;
  }
  // The row contains the state and not the reverse, so "c1" has the colour of "ACPI C1".
  const auto row =
      std::find_if(STATE_COLORS.begin(), STATE_COLORS.end(),
                   [&state](const auto& entry) { return containsInAnyCase(entry.first, state); });
  if (row != STATE_COLORS.end()) {
    return row->second;
  }
  std::string first = randomColor();
  return {std::move(first), randomColor()};
}
