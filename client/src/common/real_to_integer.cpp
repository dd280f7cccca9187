#include "client/src/common/real_to_integer.h"

#include <limits>

namespace pwr {

namespace {

/// 2 to the power of 63.
constexpr double kSignedEnd = 9223372036854775808.0;
constexpr std::uint64_t kHighestBit = std::uint64_t{1} << 63U;

}  // namespace

std::int64_t realToInt64(double value) {
  const bool fits = value >= -kSignedEnd && value < kSignedEnd;
  return fits ? static_cast<std::int64_t>(value) : std::numeric_limits<std::int64_t>::min();
}

std::uint64_t realToUInt64(double value) {
  if (value >= kSignedEnd) {
    return static_cast<std::uint64_t>(realToInt64(value - kSignedEnd)) ^ kHighestBit;
  }
  return static_cast<std::uint64_t>(realToInt64(value));
}

std::uint32_t realToUInt32(double value) { return static_cast<std::uint32_t>(realToInt64(value)); }

}  // namespace pwr
