// Reals as integers, with a defined result for every value.
#pragma once

#include <cstdint>
#include <limits>

namespace pwr {

namespace detail {

/// 2 to the power of 63.
inline constexpr double kSignedEnd = 9223372036854775808.0;

}  // namespace detail

/// The value truncated towards zero. What does not fit gives what a plain conversion on x86-64
/// gives, which files made so far hold: not-a-number and all beyond the type's signed 64-bit range
/// are the smallest number.
inline std::int64_t realToInt64(double value) {
  const bool fits = value >= -detail::kSignedEnd && value < detail::kSignedEnd;
  return fits ? static_cast<std::int64_t>(value) : std::numeric_limits<std::int64_t>::min();
}

/// The same for an unsigned result: a negative value is the bits of the signed one, a value that
/// 64 bits do not hold is 0, not-a-number is 0x8000000000000000.
inline std::uint64_t realToUInt64(double value) {
  if (value >= 0 && value < detail::kSignedEnd) {
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));  // Nearly all.
  }
  if (value >= detail::kSignedEnd) {
    constexpr std::uint64_t kHighestBit = std::uint64_t{1} << 63U;
    return static_cast<std::uint64_t>(realToInt64(value - detail::kSignedEnd)) ^ kHighestBit;
  }
  return static_cast<std::uint64_t>(realToInt64(value));
}

/// The low 32 bits of `realToInt64`.
inline std::uint32_t realToUInt32(double value) {
  return static_cast<std::uint32_t>(realToInt64(value));
}

}  // namespace pwr
