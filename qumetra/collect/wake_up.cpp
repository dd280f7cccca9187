#include "qumetra/collect/wake_up.h"

#include <poll.h>
#include <time.h>

#include <algorithm>
#include <array>

#include "qumetra/collect/child_process.h"
#include "qumetra/collect/clock.h"
#include "qumetra/collect/stop_signal.h"

namespace qumetra {
namespace {

/// How long the end of a command may go unnoticed where no descriptor tells of it.
constexpr std::uint64_t kPollTicks = 10'000'000;
/// Longer waits than a day come back without a reason, which keeps the arithmetic in range.
constexpr std::uint64_t kLongestTicks = 86'400 * kTicksPerSecond;

timespec timeUntil(std::uint64_t deadline, std::uint64_t longest) {
  const std::uint64_t now = monotonicTicks();
  const std::uint64_t ticks = deadline > now ? std::min(deadline - now, longest) : 0;
  timespec time{};
  time.tv_sec = static_cast<time_t>(ticks / kTicksPerSecond);
  time.tv_nsec = static_cast<long>(ticks % kTicksPerSecond);
  return time;
}

}  // namespace

void waitFor(std::uint64_t deadline, StopSignal& stop, const ChildProcess* child) {
  // Negative descriptors are passed over.
  const int ended = child != nullptr ? child->descriptor() : -1;
  const bool mustPoll = child != nullptr && ended < 0;
  const timespec timeout = timeUntil(deadline, mustPoll ? kPollTicks : kLongestTicks);
  std::array<pollfd, 2> descriptors{pollfd{stop.descriptor(), POLLIN, 0}, pollfd{ended, POLLIN, 0}};
  // Cut short by a signal or not: the caller looks at its clock and its flags in any case.
  ::ppoll(descriptors.data(), descriptors.size(), &timeout, nullptr);
  stop.clearWakeUp();
}

}  // namespace qumetra
