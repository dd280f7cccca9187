#include "client/src/common/platform_requirements.h"

#include <array>

#include "client/src/common/platform_entry.h"
#include "client/src/common/platform_text.h"
#include "host/system_metadata.h"

namespace pwr {

FMSPluginRequirement::FMSPluginRequirement(const CPUMetadata& cpu, bool negate)
    : PluginRequirement("FMS", negate), m_cpu(cpu) {}
FMSPluginRequirement::FMSPluginRequirement(const FMSPluginRequirement& other) = default;
FMSPluginRequirement::~FMSPluginRequirement() = default;

bool FMSPluginRequirement::isPluginRequirementSatisfied_i(
    const SystemMetadata& metadata, const RequirementValues& /*values*/) const {
  const auto* const cpu = platformEntry<CPUMetadata>(metadata, SystemMetadata::kCpu);
  if (cpu == nullptr || cpu->m_family != m_cpu.m_family || cpu->m_model != m_cpu.m_model) {
    return false;
  }
  const bool steppingMatters = cpu->m_stepping != 0 && m_cpu.m_stepping != 0;
  return !steppingMatters || cpu->m_stepping == m_cpu.m_stepping;
}

SCUPluginRequirement::SCUPluginRequirement(std::uint32_t value, bool negate)
    : PluginRequirement("SCU", negate), m_value(value) {}
SCUPluginRequirement::SCUPluginRequirement(const SCUPluginRequirement& other) = default;
SCUPluginRequirement::~SCUPluginRequirement() = default;

bool SCUPluginRequirement::isPluginRequirementSatisfied_i(
    const SystemMetadata& metadata, const RequirementValues& /*values*/) const {
  return m_value == metadata.m_scuWord;
}

OSNamePluginRequirement::OSNamePluginRequirement(const std::string& osName, bool negate)
    : PluginRequirement("OS", negate), m_osName(osName) {}
OSNamePluginRequirement::OSNamePluginRequirement(const OSNamePluginRequirement& other) = default;
OSNamePluginRequirement::~OSNamePluginRequirement() = default;

bool OSNamePluginRequirement::isPluginRequirementSatisfied_i(
    const SystemMetadata& metadata, const RequirementValues& /*values*/) const {
  return m_osName == metadata.m_osName;
}

CPUIDRequirement::CPUIDRequirement(std::uint32_t leaf, std::uint32_t registerIndex,
                                   std::uint32_t mask, std::uint32_t value, bool negate)
    : PluginRequirement("CPUID", negate),
      m_leaf(leaf),
      m_registerIndex(registerIndex),
      m_mask(mask),
      m_value(value) {}
CPUIDRequirement::CPUIDRequirement(const CPUIDRequirement& other) = default;
CPUIDRequirement::~CPUIDRequirement() = default;

bool CPUIDRequirement::isPluginRequirementSatisfied_i(const SystemMetadata& /*metadata*/,
                                                      const RequirementValues& /*values*/) const {
  std::array<std::uint32_t, 4> registers{};
  getCpuid(m_leaf, registers[0], registers[1], registers[2], registers[3]);
  if (m_registerIndex >= registers.size()) {
    return false;
  }
  return (registers[m_registerIndex] & m_mask) == m_value;
}

PCHPluginRequirement::PCHPluginRequirement(const std::string& pchName, bool negate)
    : PluginRequirement("PCH", negate), m_pchName(pchName) {}
PCHPluginRequirement::PCHPluginRequirement(const PCHPluginRequirement& other) = default;
PCHPluginRequirement::~PCHPluginRequirement() = default;

bool PCHPluginRequirement::isPluginRequirementSatisfied_i(
    const SystemMetadata& metadata, const RequirementValues& /*values*/) const {
  return metadata.m_platformName.find(m_pchName) != std::string::npos;
}

}  // namespace pwr
