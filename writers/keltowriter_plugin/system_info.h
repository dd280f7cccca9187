// The facts about the measured system that the import stream needs for the whole run.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace pwr {
class CPUMetadata;
struct SystemMetadata;
}  // namespace pwr

/// A hardware thread as the file has it: 0, package, core, index of the thread within its core.
using KeltoThreadEntry = std::array<std::uint8_t, 4>;

/// A copy of what the system message tells. All zero when it lacks a processor.
struct KeltoSystemInfo {
  std::uint16_t versionMajor = 0;
  std::uint16_t versionMinor = 0;
  std::uint16_t versionPatch = 0;
  std::string platformName;
  std::string hostName;
  std::string osName;
  /// The machine's architecture, for example "x86_64".
  std::string osType;
  /// 2 to 6, see `keltoOsKind`.
  std::uint32_t osKind = 0;
  std::array<std::uint16_t, 4> osVersion{};
  std::vector<KeltoThreadEntry> threadTable;
  std::uint32_t threadCount = 0;
  std::uint32_t tscFrequencyHz = 0;
  std::uint32_t cpuFrequencyHz = 0;
  std::uint32_t family = 0;
  std::uint32_t model = 0;
  std::uint32_t stepping = 0;
  /// Collection start and stop, in ticks.
  std::uint64_t firstTsc = 0;
  std::uint64_t lastTsc = 0;
  std::uint64_t timerResolutionDiv100 = 0;
  std::uint64_t cpuFrequencyMHz = 0;
};

// Hidden: the symbol of a global variable is its bare name, which another library may use too.
#pragma GCC visibility push(hidden)

/// How often `getCoreThreadCount` was asked for a package and core.
extern std::map<std::pair<int, int>, int> coreThreadCount;

#pragma GCC visibility pop

/// How many times the process has asked for this package and core before: the index of a thread
/// within its core when each thread asks once.
int getCoreThreadCount(int package, int core);

/// Fills `info` from the metadata and its processor.
void fillKeltoSystemInfo(const pwr::SystemMetadata& metadata, const pwr::CPUMetadata& cpu,
                         KeltoSystemInfo& info);

/// The file's number for an operating system: 2 for an `osName` that contains "Window"; else by
/// `osType` 3 for "i?86", 4 for "ia64", 5 for "x86_64", 6 for all others.
std::uint32_t keltoOsKind(const std::string& osName, const std::string& osType);

/// The first four numbers of a version like "5.15.0-91"; missing ones are 0. A number that begins
/// with 0x is hexadecimal, with 0 octal.
std::array<std::uint16_t, 4> keltoOsVersion(const std::string& version);
