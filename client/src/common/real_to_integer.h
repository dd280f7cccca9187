// Reals as integers, with a defined result for every value.
#pragma once

#include <cstdint>

namespace pwr {

/// The value truncated towards zero. What does not fit gives what a plain conversion on x86-64
/// gives, which files made so far hold: not-a-number and all beyond the type's signed 64-bit range
/// are the smallest number.
std::int64_t realToInt64(double value);

/// The same for an unsigned result: a negative value is the bits of the signed one, a value that
/// 64 bits do not hold is 0, not-a-number is 0x8000000000000000.
std::uint64_t realToUInt64(double value);

/// The low 32 bits of `realToInt64`.
std::uint32_t realToUInt32(double value);

}  // namespace pwr
