// Requirements that tell the user, once per process, what is missing when they do not hold.
//
// The remark shows at any level of the log and goes to the host's summary. What was told already is
// kept for the life of the process.
#pragma once

#include <cstdint>
#include <string>

#include "client/src/common/plugin_requirement.h"

namespace pwr {

/// Energy reporting is switched on for a part of the platform controller hub. Holds as well for a
/// hub that tells nothing of energy reporting.
class EnergyReportingPluginRequirement : public PluginRequirement {
 public:
  /// `configurationKey` names the hub's word, `featureText` what the remark says is disabled.
  EnergyReportingPluginRequirement(const std::string& configurationKey,
                                   const std::string& featureText);
  EnergyReportingPluginRequirement(const EnergyReportingPluginRequirement& other);
  ~EnergyReportingPluginRequirement() override;
  bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                      const RequirementValues& values) const override;

  std::string m_configurationKey;
  std::string m_featureText;
  std::uint32_t m_bitIndex;
};

/// There is an integrated graphics device.
class IGFXPresentPluginRequirement : public PluginRequirement {
 public:
  explicit IGFXPresentPluginRequirement(bool negate);
  IGFXPresentPluginRequirement(const IGFXPresentPluginRequirement& other);
  ~IGFXPresentPluginRequirement() override;
  bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                      const RequirementValues& values) const override;
};

/// The operating system is new enough for the feature to work beside Enhanced Sign-in Security, or
/// that is off. Each feature is told once.
class VTIODisablePluginRequirement : public PluginRequirement {
 public:
  explicit VTIODisablePluginRequirement(const std::string& featureName);
  VTIODisablePluginRequirement(const VTIODisablePluginRequirement& other);
  ~VTIODisablePluginRequirement() override;
  bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                      const RequirementValues& values) const override;
};

}  // namespace pwr
