#include "qumetra/collect/platform_report.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "client/src/common/plugin_requirements.h"
#include "host/platform_metadata.h"
#include "qumetra/collect/cpuid.h"
#include "qumetra/collect/topology_scan.h"
#include "qumetra/model/model.h"

namespace qumetra {
namespace {

/// A bit of the processor's identification that metrics of power and performance lean on.
struct CpuBit {
  const char* condition;
  std::uint32_t leaf;
  /// Counts the result registers a, b, c, d.
  std::uint32_t registerIndex;
  std::uint32_t mask;
};

constexpr std::array kCpuBits = {
    CpuBit{"digital thermal sensor", 6, 0, 1U << 0U},
    CpuBit{"frequency above the nominal one", 6, 0, 1U << 1U},
    CpuBit{"counters of actual and maximum frequency", 6, 2, 1U << 0U},
    CpuBit{"time stamp counter of constant rate", 0x80000007, 3, 1U << 8U},
};

/// Integrated devices stand on the first bus. Those of a virtual machine do as well.
bool isIntegratedGraphics(const PciDevice& device) {
  return device.isDisplay() && device.location.starts_with("0000:00:");
}

void describeGraphics(pwr::SystemMetadata& system, const std::vector<PciDevice>& devices) {
  const bool found = std::any_of(devices.begin(), devices.end(), isIntegratedGraphics);
  system.m_hasIntegratedGraphics = found ? 1 : 0;
}

void describeEndpoints(pwr::SystemMetadata& system,
                       const std::vector<TelemetryEndpoint>& endpoints) {
  for (const TelemetryEndpoint& endpoint : endpoints) {
    system.m_aggregators[endpoint.id].guid = endpoint.guid.value_or(0);
  }
}

std::vector<RequirementState> evaluateRequirements(const pwr::SystemMetadata& system) {
  std::vector<RequirementState> states;
  const auto add = [&](const pwr::PluginRequirement& requirement, const std::string& condition) {
    states.push_back(
        {requirement.m_name, condition, requirement.isPluginRequirementSatisfied_i(system, {})});
  };
  for (const CpuBit& bit : kCpuBits) {
    add(pwr::CPUIDRequirement(bit.leaf, bit.registerIndex, bit.mask, bit.mask, false),
        bit.condition);
  }
  add(pwr::IGFXPresentPluginRequirement(false), "integrated graphics device");
  add(pwr::EnergyReportingPluginRequirement("", ""), "controller hub that reports energy");
  return states;
}

}  // namespace

PlatformReport describePlatform(Model& model, const SystemScanOptions& options) {
  PlatformReport report;
  pwr::SystemMetadata& system =
      scanSystem(model, options, identifyCpu(), scanTopology(options.procfs, options.sysfs));
  report.system = &system;
  report.processor =
      static_cast<const pwr::CPUMetadata*>(system.m_platformMetadata.at(pwr::SystemMetadata::kCpu));
  report.pciDevices = listPciDevices(options.sysfs);
  report.telemetryEndpoints = listTelemetryEndpoints(options.sysfs);
  describeGraphics(system, report.pciDevices);
  describeEndpoints(system, report.telemetryEndpoints);
  report.requirements = evaluateRequirements(system);
  return report;
}

}  // namespace qumetra
