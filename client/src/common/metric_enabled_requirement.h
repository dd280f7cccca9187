// The requirement that a metric was switched on.
#pragma once

#include "client/src/common/plugin_requirement.h"

namespace pwr {

/// Holds without values. Among values the last key with "METRIC-ENABLED" in it decides, whose value
/// must be "TRUE" or "FALSE"; another value is an error in the log and decides nothing. Without
/// such a key it does not hold. All values go to the quiet stream.
class MetricEnabledRequirement : public PluginRequirement {
 public:
  MetricEnabledRequirement();
  MetricEnabledRequirement(const MetricEnabledRequirement& other);
  ~MetricEnabledRequirement() override;
  bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                      const RequirementValues& values) const override;
};

}  // namespace pwr
