// What a feature does with the counters that its metrics use.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "client/src/common/counter_field.h"

namespace pwr {

// `tag` names the feature in the log and is the tag that switches its messages on.

/// Warns that a counter has an attribute that the feature does not use.
void warnUnappliedAttribute(const std::string& tag, const std::string& counter,
                            const char* attribute);
/// Warns that a metric has a key that the feature does not use.
void warnUnknownMetricMetadata(const std::string& tag, const std::string& key);

/// Returns 1, and tells which counter, when some fields have both sub-entity and descriptor and
/// others have not; else 0.
int rejectMixedSubEntityFields(const std::string& tag, const CounterTable& counters);

/// Adds the fields of `counter` that have both sub-entity and descriptor to `out`, by their labels.
/// What is there stays.
void recordSubEntityFields(const std::string& counter, const CounterTable& counters,
                           std::unordered_map<std::string, CounterField>& out);

/// The entity that the feature shows: what the host makes of `name` and of the device of the first
/// counter that has one. A counter with another device is a warning.
std::string resolveFeatureEntity(const std::string& tag, const std::string& name,
                                 const std::vector<std::string>& counterNames,
                                 const CounterTable& counters);

}  // namespace pwr
