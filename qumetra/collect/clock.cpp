#include "qumetra/collect/clock.h"

#include <time.h>

namespace qumetra {
namespace {

std::uint64_t toTicks(const timespec& time) {
  return static_cast<std::uint64_t>(time.tv_sec) * kTicksPerSecond +
         static_cast<std::uint64_t>(time.tv_nsec);
}

}  // namespace

std::uint64_t monotonicTicks() noexcept {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return toTicks(now);
}

std::uint64_t clockResolutionTicks() noexcept {
  timespec resolution{};
  ::clock_getres(CLOCK_MONOTONIC, &resolution);
  return toTicks(resolution);
}

}  // namespace qumetra
