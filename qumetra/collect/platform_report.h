// What is known of this machine beside its measurements: for bug reports, and for choosing metrics.
#pragma once

#include <string>
#include <vector>

#include "host/platform_metadata.h"
#include "host/system_metadata.h"
#include "qumetra/access/pci_devices.h"
#include "qumetra/access/telemetry_backend.h"
#include "qumetra/collect/system_scan.h"

namespace qumetra {

class Model;

/// A condition to which metrics are tied, and whether this machine meets it.
struct RequirementState {
  /// The requirement's own name, such as "IGFX".
  std::string name;
  /// What it asks for, in words.
  std::string condition;
  bool holds = false;
};

/// A machine as the tool sees it. The metadata belongs to the model it was made with.
struct PlatformReport {
  const pwr::SystemMetadata* system = nullptr;
  const pwr::CPUMetadata* processor = nullptr;
  /// Empty when they cannot be listed.
  std::vector<PciDevice> pciDevices;
  std::vector<TelemetryEndpoint> telemetryEndpoints;
  std::vector<RequirementState> requirements;
};

/// Looks at the machine. Requirements that do not hold may leave a remark in the environment.
/// Processor bits are always asked of the processor that runs this.
PlatformReport describePlatform(Model& model, const SystemScanOptions& options);

}  // namespace qumetra
