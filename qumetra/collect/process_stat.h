// What procfs tells of one process.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qumetra {

/// One reading of procfs's <pid>/stat. Times are in clock ticks of the kernel's user interface
/// (`sysconf(_SC_CLK_TCK)` per second).
struct ProcessStat {
  std::uint32_t pid = 0;
  std::uint32_t parentPid = 0;
  /// The command name as the kernel has it; any bytes.
  std::string_view name;
  /// The process has ended and only waits to be forgotten.
  bool hasEnded = false;
  /// The time that all its threads spent on CPUs, in user and kernel mode. Never steps back.
  std::uint64_t cpuTime = 0;
  /// Since the start of the machine, times of suspension included.
  std::uint64_t startTime = 0;
};

/// Reads the text of the file. The name points into it. Nothing when it is no such text.
std::optional<ProcessStat> parseProcessStat(std::string_view text);

/// A command name as results show it: at most 15 bytes, what is not printable UTF-8 being "?".
std::string shownProcessName(std::string_view name);

/// One moment on two clocks, in ticks.
struct Moment {
  std::uint64_t monotonic = 0;
  /// Since the start of the machine, times of suspension included.
  std::uint64_t sinceBoot = 0;
};
Moment presentMoment() noexcept;

/// When a process started, by the collection's clock, with the kernel's precision of a clock tick
/// (`ticksPerStep`). 0, which stands for unknown, for a start that this clock cannot tell: the
/// machine was suspended meanwhile and the clock stood still.
std::uint64_t processStartTicks(std::uint64_t startTime, std::uint64_t ticksPerStep,
                                const Moment& now);

}  // namespace qumetra
