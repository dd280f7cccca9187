#include "client/src/common/metric_enabled_requirement.h"

#include "client/src/common/pw_log.h"

namespace pwr {
namespace {

/// Sets `enabled` to what the value says, if it says something.
void applyValue(const std::string& value, bool& enabled) {
  if (value == "TRUE") {
    enabled = true;
  } else if (value == "FALSE") {
    enabled = false;
  } else {
    logError("ERROR: invalid METRIC-ENABLED value %s received: MUST be TRUE or FALSE\n",
             value.c_str());
  }
}

}  // namespace

MetricEnabledRequirement::MetricEnabledRequirement()
    : PluginRequirement("MetricEnabledRequirement") {}
MetricEnabledRequirement::MetricEnabledRequirement(const MetricEnabledRequirement& other) = default;
MetricEnabledRequirement::~MetricEnabledRequirement() = default;

bool MetricEnabledRequirement::isPluginRequirementSatisfied_i(
    const SystemMetadata& /*metadata*/, const RequirementValues& values) const {
  if (values.empty()) {
    return true;
  }
  bool enabled = false;
  for (const auto& [key, value] : values) {
    quietStream() << "REQ. VALUE Key: " << key << ", Value: " << value << "\n";
    if (key.find("METRIC-ENABLED") != std::string::npos) {
      applyValue(value, enabled);
    }
  }
  return enabled;
}

}  // namespace pwr
