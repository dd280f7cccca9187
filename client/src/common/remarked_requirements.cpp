#include "client/src/common/remarked_requirements.h"

#include <map>

#include "client/src/common/platform_entry.h"
#include "client/src/common/pw_log.h"
#include "host/execute_once.h"
#include "host/pwset.h"
#include "host/system_metadata.h"

namespace pwr {
namespace {

constexpr std::uint32_t kEnergyReportingBit = 2;
constexpr std::uint32_t kWordBits = 32;
/// The last build of the operating system in which the two exclude one another.
constexpr std::uint32_t kLastExclusiveBuild = 26099;

void noteDisabledEnergyReporting(const std::string& featureText) {
  static bool s_noted = false;
  executeOnce(s_noted, [&] {
    const std::string what = featureText.empty() ? "Certain PCH related metrics are disabled."
                                                 : featureText + " is disabled.";
    logPlatformNote("Energy Reporting is disabled in BIOS. " + what);
  });
}

void noteDisabledFeature(const std::string& feature) {
  static PWSet<std::string> s_features;
  if (s_features.add(feature)) {
    logPlatformNote("NOTE: " + feature +
                    " has been disabled due to Enhanced Sign-in Security being enabled.");
  }
}

}  // namespace

EnergyReportingPluginRequirement::EnergyReportingPluginRequirement(
    const std::string& configurationKey, const std::string& featureText)
    : PluginRequirement("EnergyReportingEnabled"),
      m_configurationKey(configurationKey),
      m_featureText(featureText),
      m_bitIndex(kEnergyReportingBit) {}
EnergyReportingPluginRequirement::EnergyReportingPluginRequirement(
    const EnergyReportingPluginRequirement& other) = default;
EnergyReportingPluginRequirement::~EnergyReportingPluginRequirement() = default;

bool EnergyReportingPluginRequirement::isPluginRequirementSatisfied_i(
    const SystemMetadata& metadata, const RequirementValues& /*values*/) const {
  const auto* const hub = platformEntry<PCHMetadata>(metadata, SystemMetadata::kPch);
  if (hub == nullptr) {
    return false;
  }
  const std::map<std::string, std::uint32_t> configuration = hub->getEnergyReportingConfiguration();
  if (configuration.empty()) {
    return true;
  }
  const auto found = configuration.find(m_configurationKey);
  if (found == configuration.end()) {
    return false;
  }
  if (((found->second >> (m_bitIndex % kWordBits)) & 1U) != 0) {
    return true;
  }
  noteDisabledEnergyReporting(m_featureText);
  return false;
}

IGFXPresentPluginRequirement::IGFXPresentPluginRequirement(bool negate)
    : PluginRequirement("IGFX", negate) {}
IGFXPresentPluginRequirement::IGFXPresentPluginRequirement(
    const IGFXPresentPluginRequirement& other) = default;
IGFXPresentPluginRequirement::~IGFXPresentPluginRequirement() = default;

bool IGFXPresentPluginRequirement::isPluginRequirementSatisfied_i(
    const SystemMetadata& metadata, const RequirementValues& /*values*/) const {
  if (metadata.m_hasIntegratedGraphics != 0) {
    return true;
  }
  static bool s_noted = false;
  executeOnce(s_noted, [] {
    logPlatformNote(
        "An integrated graphics device is not detected. Integrated graphics related metrics are "
        "disabled.");
  });
  return false;
}

VTIODisablePluginRequirement::VTIODisablePluginRequirement(const std::string& featureName)
    : PluginRequirement(featureName) {}
VTIODisablePluginRequirement::VTIODisablePluginRequirement(
    const VTIODisablePluginRequirement& other) = default;
VTIODisablePluginRequirement::~VTIODisablePluginRequirement() = default;

bool VTIODisablePluginRequirement::isPluginRequirementSatisfied_i(
    const SystemMetadata& metadata, const RequirementValues& /*values*/) const {
  if (metadata.m_osBuildNumber > kLastExclusiveBuild || metadata.m_secureSignIn != 1) {
    return true;
  }
  noteDisabledFeature(m_name);
  return false;
}

}  // namespace pwr
