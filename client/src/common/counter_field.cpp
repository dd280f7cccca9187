#include "client/src/common/counter_field.h"

#include <utility>

#include "client/src/common/bit_range.h"
#include "client/src/common/pw_log.h"
#include "client/src/common/text_parsing.h"

namespace pwr {
namespace {

/// The member that a key gives; null for a key of no field.
std::string* memberOf(CounterField& field, const std::string& key) {
  if (key == "ENTITY") {
    return &field.entity;
  }
  if (key == "DIVIDER") {
    return &field.divider;
  }
  if (key == "DESCRIPTOR") {
    return &field.descriptor;
  }
  if (key == "DESCRIPTION") {
    return &field.description;
  }
  if (key == "DATA-FORMAT") {
    return &field.dataFormat;
  }
  return key == "SCALE-FACTOR" ? &field.scaleFactor : nullptr;
}

/// Fills the texts of `field`, and the text of its bit range. Later pairs overrule earlier ones.
void readPairs(const OperationMetadata& metadata, CounterField& field, std::string& bitRange) {
  for (const auto& [key, value] : metadata.m_pairs) {
    if (key.find("BIT-RANGE") != std::string::npos) {
      bitRange = value;
    } else if (std::string* const member = memberOf(field, key)) {
      *member = value;
    }
  }
  field.label = makeCounterLabel(field.entity, field.descriptor);
  field.subEntity = getSubEntity(field.entity);
}

void setBitRange(CounterField& field, const std::string& bitRange) {
  field.msb = retrieveMsbFromMask(bitRange);
  field.lsb = retrieveLsbFromMask(bitRange);
  if (field.msb < field.lsb) {
    // The field is kept all the same: features see what was described.
    logError("ERROR: MSB:%hu is less than LSB:%hu for %s\n", static_cast<unsigned short>(field.msb),
             static_cast<unsigned short>(field.lsb), field.label.c_str());
  }
}

}  // namespace

int parseAggrTelemOperationMetadata(const std::string& tag, const OperationMetadata* metadata,
                                    CounterTable& counters) {
  const std::string name =
      metadata != nullptr ? getCounterNameFromInitValue(metadata->m_initValue, "_", "COUNTER") : "";
  if (metadata == nullptr || name.empty()) {
    logTaggedWarning(tag.c_str(), "WARNING: %s: Unable to extract counter name from operation!\n",
                     tag.c_str());
    return 1;
  }
  if (counters.contains(name)) {
    return 0;
  }
  CounterField field;
  std::string bitRange;
  readPairs(*metadata, field, bitRange);
  if (field.label.empty()) {
    logTaggedWarning(
        tag.c_str(),
        "WARNING: %s: %s declares no ENTITY or DESCRIPTOR; malformed operation metadata\n",
        tag.c_str(), name.c_str());
    return 1;
  }
  if (!isMaskValid(bitRange, ":")) {
    logTaggedWarning(tag.c_str(), "WARNING: %s: Malformed operation metadata!\n", tag.c_str());
    return 1;
  }
  setBitRange(field, bitRange);
  counters[name].push_back(std::move(field));
  return 0;
}

std::string makeCounterLabel(const std::string& entity, const std::string& descriptor) {
  const std::string subEntity = getSubEntity(entity);
  if (subEntity.empty()) {
    return descriptor;
  }
  return descriptor.empty() ? subEntity : subEntity + ":" + descriptor;
}

std::string getSubEntity(const std::string& entity) {
  const auto slash = entity.find('/');
  return slash == std::string::npos ? std::string() : entity.substr(slash + 1);
}

}  // namespace pwr
