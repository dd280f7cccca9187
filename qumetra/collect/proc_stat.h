// What procfs's stat says.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace qumetra {

/// The modes in which a CPU spends its time, in the order of the file. Later fields of the file are
/// parts of these.
inline constexpr std::array<std::string_view, 8> kCpuModes = {"user",   "nice", "system",  "idle",
                                                              "iowait", "irq",  "softirq", "steal"};

/// The time that one CPU spent in each mode since the start of the machine, in clock ticks of the
/// kernel's user interface (`sysconf(_SC_CLK_TCK)` per second).
struct CpuTimes {
  std::uint32_t cpu = 0;
  std::array<std::uint64_t, kCpuModes.size()> modes{};
};

/// One reading of the file.
struct ProcStat {
  /// The CPUs that are online.
  std::vector<CpuTimes> cpus;
  std::optional<std::uint64_t> interrupts;
  std::optional<std::uint64_t> contextSwitches;
};

/// Replaces `stat` by what `text` says; keeps its memory. A line that is not as expected is passed
/// over, so what it would have told is absent. Modes that an old kernel does not know are 0.
void parseProcStat(std::string_view text, ProcStat& stat);

}  // namespace qumetra
