// The description of this machine for the head of a recording.
#pragma once

#include <string>
#include <vector>

#include "host/system_metadata.h"
#include "host/topology.h"
#include "qumetra/collect/cpuid.h"

namespace qumetra {

class Model;

/// Where the description is read from.
struct SystemScanOptions {
  std::string procfs = "/proc";
  std::string sysfs = "/sys";
  /// Names the operating system in its PRETTY_NAME.
  std::string osRelease = "/etc/os-release";
  /// The command line that results name.
  std::vector<std::string> commandLine;
};

/// The CPU frequency in MHz, never 0: the base frequency or else the highest one that cpufreq tells
/// of the CPU, else the first "cpu MHz" of procfs's cpuinfo, else 1000, which stands for "unknown"
/// since readers refuse a processor without a frequency.
float cpuFrequencyMHz(const std::string& procfs, const std::string& sysfs);

/// The version of this tool in the form of the metadata.
pwr::VersionRecord toolVersion();
/// "major.minor.patch".
std::string toolVersionText();

/// The date and time of day in UTC, so that it does not depend on where the tool runs.
std::string utcNowText();

/// Describes the machine in a metadata object of the model. Platform entry 1, the processor, is
/// always there. Times are left to the collection.
pwr::SystemMetadata& scanSystem(Model& model, const SystemScanOptions& options,
                                const CpuIdentity& cpu,
                                const std::vector<pwr::ThreadLocation>& topology);

}  // namespace qumetra
