// What a sample's element means: the rules that the continuous, JSON and binary results share.
#pragma once

#include <string>

#include "host/handles.h"
#include "host/metric.h"
#include "writers/data_text.h"

/// Whether the values of `metric` stand for a moment instead of a span of time: events do, and
/// sampled values without a quantity, or with that of a rate.
bool hasNoDuration(const pwr::Metric& metric);

/// The name of a metric type in results, "UNKNOWN" for a number without meaning.
const char* metricTypeName(pwr::Metric::MetricType type);

/// Whether states come from the values of such a metric; otherwise elements bring them.
bool isTraced(pwr::Metric::MetricType type);

/// Sets `out` to the text of the first attribute's value. Returns 1 and leaves `out` alone when
/// there is no attribute or its value has no text.
int firstAttributeText(const pwr::AttributeValueManager& attributes, std::string& out);

/// The same, but an entry without an attribute has no text.
inline int namedFirstAttributeText(const pwr::AttributeValueManager& attributes, std::string& out) {
  const auto first = attributes.begin();
  if (first == attributes.end() || first->first == nullptr) {
    return 1;
  }
  return getStringFromData_i(&first->second, &out);
}

/// Whether the handle says that it is a descriptor. One may say so and be none.
bool claimsToBeDescriptor(const pwr::DataHandle& handle);

/// The handle in a value, as far as it matters here.
struct HeldDescriptor {
  /// The value holds a handle that says it is a descriptor.
  bool claimed = false;
  /// Null also for a handle that says so and is none.
  const pwr::DataDescriptor* descriptor = nullptr;
};
HeldDescriptor heldDescriptor(const pwr::Data& value);

/// The name of a handle; empty for null.
std::string nameOf(const pwr::DataHandle* handle);

/// Sets `out` to the state that a descriptor stands for: the text of its first attribute, else its
/// name.
inline void readState(const pwr::DataDescriptor& descriptor, std::string& out) {
  if (namedFirstAttributeText(descriptor, out) != 0) {
    out = nameOf(&descriptor);
  }
}
/// The same as a result.
inline std::string stateOf(const pwr::DataDescriptor& descriptor) {
  std::string state;
  readState(descriptor, state);
  return state;
}

/// The number in a value, or both ends of its range; 0 for a value that holds neither.
struct ValueNumbers {
  /// The low end of a range.
  double value = 0.0;
  /// The high end of a range; otherwise without meaning.
  double high = 0.0;
  bool isRange = false;
};
ValueNumbers numbersOf(const pwr::Data& value);

/// What an element's value says.
struct SampleValue : ValueNumbers {
  /// The value is a state rather than a number; `state` replaces the element's when it is set.
  bool isState = false;
  bool hasState = false;
  std::string state;
};

/// Reads the value of `element`, unscaled. `duration` is the number that states count for. Returns
/// 1 when the value of a sampled metric claims to be a descriptor and is none.
int readValue(const pwr::Metric& metric, const pwr::DataElement& element, double duration,
              SampleValue& out);
