// The clock of collections.
#pragma once

#include <cstdint>

namespace qumetra {

/// A tick is a nanosecond of CLOCK_MONOTONIC: time that never steps back, since some point in the
/// past.
inline constexpr std::uint64_t kTicksPerSecond = 1'000'000'000;
inline constexpr std::uint64_t kTicksPerMicrosecond = 1'000;

/// Now, in ticks.
std::uint64_t monotonicTicks() noexcept;
/// The smallest step of the clock, in ticks.
std::uint64_t clockResolutionTicks() noexcept;

}  // namespace qumetra
