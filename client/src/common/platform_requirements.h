// Requirements that compare the platform with what they were made with.
#pragma once

#include <cstdint>
#include <string>

#include "client/src/common/plugin_requirement.h"
#include "host/platform_metadata.h"

namespace pwr {

/// The processor: family, model and, where both sides know it, stepping.
class FMSPluginRequirement : public PluginRequirement {
 public:
  FMSPluginRequirement(const CPUMetadata& cpu, bool negate);
  FMSPluginRequirement(const FMSPluginRequirement& other);
  ~FMSPluginRequirement() override;
  bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                      const RequirementValues& values) const override;

  CPUMetadata m_cpu;
};

/// The system's 32-bit platform word.
class SCUPluginRequirement : public PluginRequirement {
 public:
  SCUPluginRequirement(std::uint32_t value, bool negate);
  SCUPluginRequirement(const SCUPluginRequirement& other);
  ~SCUPluginRequirement() override;
  bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                      const RequirementValues& values) const override;

  std::uint32_t m_value;
};

/// The operating system's whole name.
class OSNamePluginRequirement : public PluginRequirement {
 public:
  OSNamePluginRequirement(const std::string& osName, bool negate);
  OSNamePluginRequirement(const OSNamePluginRequirement& other);
  ~OSNamePluginRequirement() override;
  bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                      const RequirementValues& values) const override;

  std::string m_osName;
};

/// Bits that the processor tells by its identification instruction. Asks the processor that runs
/// this, not the system that was measured.
class CPUIDRequirement : public PluginRequirement {
 public:
  /// `registerIndex` counts the four result registers a, b, c, d; a larger one never holds.
  CPUIDRequirement(std::uint32_t leaf, std::uint32_t registerIndex, std::uint32_t mask,
                   std::uint32_t value, bool negate);
  CPUIDRequirement(const CPUIDRequirement& other);
  ~CPUIDRequirement() override;
  bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                      const RequirementValues& values) const override;

  std::uint32_t m_leaf;
  std::uint32_t m_registerIndex;
  std::uint32_t m_mask;
  std::uint32_t m_value;
};

/// A platform controller hub, by a part of the platform's name.
class PCHPluginRequirement : public PluginRequirement {
 public:
  PCHPluginRequirement(const std::string& pchName, bool negate);
  PCHPluginRequirement(const PCHPluginRequirement& other);
  ~PCHPluginRequirement() override;
  bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                      const RequirementValues& values) const override;

  std::string m_pchName;
};

}  // namespace pwr
