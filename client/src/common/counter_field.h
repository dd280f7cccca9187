// The fields of telemetry counters, as operations describe them.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/operation_metadata.h"

namespace pwr {

/// One field of a counter. Texts that stand for numbers are kept as they are: a bad one shows when
/// it is used.
struct CounterField {
  /// From `makeCounterLabel`.
  std::string label;
  /// The highest and the lowest bit of the field.
  std::uint8_t msb = 0;
  std::uint8_t lsb = 0;
  /// A device, and behind "/" the part of it where there is one.
  std::string entity;
  /// What follows the first "/" of `entity`.
  std::string subEntity;
  /// The state or column within the part.
  std::string descriptor;
  std::string description;
  /// For `retrieveQFormat`.
  std::string dataFormat;
  std::string scaleFactor;
  std::string divider;
};

/// The fields of each counter, by its name.
using CounterTable = std::unordered_map<std::string, std::vector<CounterField>>;

// Where a function has a `tag`, it names the feature in the log and is the tag that switches its
// warnings on.

/// Adds the field that `metadata` describes to `counters`. The first description of a counter
/// stands: later ones are ignored, and are a success. Returns 0; a malformed description is a
/// warning and 1, and adds nothing. A range whose first bit is below its last is an error in the
/// log only.
int parseAggrTelemOperationMetadata(const std::string& tag, const OperationMetadata* metadata,
                                    CounterTable& counters);

/// "subentity:descriptor", or the one of them that is there.
std::string makeCounterLabel(const std::string& entity, const std::string& descriptor);
/// What follows the first "/"; empty without one.
std::string getSubEntity(const std::string& entity);

}  // namespace pwr
