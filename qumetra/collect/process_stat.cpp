#include "qumetra/collect/process_stat.h"

#include <time.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "qumetra/collect/clock.h"
#include "qumetra/collect/kernel_text.h"
#include "qumetra/recording/utf8.h"

namespace qumetra {
namespace {

/// What the kernel keeps of a name, without the zero byte behind it.
constexpr std::size_t kLongestName = 15;

/// The fields behind the name, by their places there.
enum Field : std::size_t {
  kState,
  kParentPid,
  kUserTime = 11,
  kSystemTime,
  kStartTime = 19,
  kUsed
};

using Fields = std::array<std::string_view, kUsed>;

/// False when there are too few.
bool splitFields(std::string_view text, Fields& fields) {
  for (std::string_view& field : fields) {
    text.remove_prefix(std::min(text.find_first_not_of(" \n"), text.size()));
    field = text.substr(0, text.find_first_of(" \n"));
    if (field.empty()) {
      return false;
    }
    text.remove_prefix(field.size());
  }
  return true;
}

std::optional<std::uint32_t> parsePid(std::string_view text) {
  const auto number = parseNumber(trimmed(text));
  if (!number || *number > std::numeric_limits<std::uint32_t>::max()) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(*number);
}

}  // namespace

std::optional<ProcessStat> parseProcessStat(std::string_view text) {
  // The name may hold blanks and brackets: it ends at the last bracket.
  const std::size_t open = text.find('(');
  const std::size_t close = text.rfind(')');
  Fields fields;
  if (open == std::string_view::npos || close == std::string_view::npos || close < open ||
      !splitFields(text.substr(close + 1), fields)) {
    return std::nullopt;
  }
  const auto pid = parsePid(text.substr(0, open));
  const auto parent = parsePid(fields[kParentPid]);
  const auto user = parseNumber(fields[kUserTime]);
  const auto system = parseNumber(fields[kSystemTime]);
  const auto start = parseNumber(fields[kStartTime]);
  if (!pid || !parent || !user || !system || !start) {
    return std::nullopt;
  }
  return ProcessStat{
      .pid = *pid,
      .parentPid = *parent,
      .name = text.substr(open + 1, close - open - 1),
      .hasEnded = std::string_view("ZXx").find(fields[kState][0]) != std::string_view::npos,
      .cpuTime = *user + *system,
      .startTime = *start};
}

std::string shownProcessName(std::string_view name) {
  name = name.substr(0, kLongestName);
  std::string shown;
  while (!name.empty()) {
    const std::size_t length = utf8SequenceLength(name);
    const bool isPrintable = length > 0 && !isControl(name.front());
    shown += isPrintable ? name.substr(0, length) : "?";
    name.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return shown;
}

Moment presentMoment() noexcept {
  timespec boot{};
  ::clock_gettime(CLOCK_BOOTTIME, &boot);
  return {.monotonic = monotonicTicks(),
          .sinceBoot = static_cast<std::uint64_t>(boot.tv_sec) * kTicksPerSecond +
                       static_cast<std::uint64_t>(boot.tv_nsec)};
}

std::uint64_t processStartTicks(std::uint64_t startTime, std::uint64_t ticksPerStep,
                                const Moment& now) {
  const std::uint64_t limit = ticksPerStep > 0 ? now.sinceBoot / ticksPerStep : 0;
  const std::uint64_t age = now.sinceBoot - std::min(startTime, limit) * ticksPerStep;
  return age < now.monotonic ? now.monotonic - age : 0;
}

}  // namespace qumetra
