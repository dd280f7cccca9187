// The names of sample attributes and the colours of states.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

/// The attributes of sample records. The numbers stand in files and never change.
enum KeltoAttribute : std::uint32_t {
  kMetricAttribute = 0,
  kEntityAttribute = 1,
  kFieldAttribute = 2,
  kProcessAttribute = 3,
  kThreadAttribute = 4,
  /// Never written.
  kCallStackFrameAttribute = 5,
  kQuantityAttribute = 6,
  kColorAttribute = 7,
  kInfoAttribute = 8,
  kIntAttribute = 9,
  kUIntAttribute = 10,
  kRealAttribute = 11,
  kIntLowerBoundAttribute = 12,
  kIntUpperBoundAttribute = 13,
  kUIntLowerBoundAttribute = 14,
  kUIntUpperBoundAttribute = 15,
  kRealLowerBoundAttribute = 16,
  kRealUpperBoundAttribute = 17,
  kDurationAttribute = 18,
};

/// A colour as the file carries it: two texts, each "#rrggbb" or three decimals joined by commas.
using KeltoColor = std::pair<std::string, std::string>;

// Hidden: the symbol of a global variable is its bare name, which another library may use too.
#pragma GCC visibility push(hidden)

/// Begins the name of a store whose metric has not shown its name.
extern const std::string UNKNOWN_METRIC_NAME;
/// Names of attributes, padded to 16 characters, for diagnostics. Empty before
/// `createAttributeMap`.
extern std::map<std::uint32_t, std::string> ATTRIBUTE_NAMES;
/// Colours by state. Empty before `createStateColorMap`.
extern std::map<std::string, KeltoColor> STATE_COLORS;

#pragma GCC visibility pop

/// Fill the tables. A second call changes nothing.
void createAttributeMap();
void createStateColorMap();

/// The colour of `state`: that of its row; else that of the first row, in byte order, whose name
/// contains the state's, upper and lower case being the same; else two random ones by `rand()`,
/// which are not kept.
KeltoColor getColor(const std::string& state);
