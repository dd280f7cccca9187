// Numbers as the bytes of a file: little-endian whatever the machine's order.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace pwr {

/// Writes the `sizeof(Unsigned)` bytes of `value` to `at`, the lowest first, and returns the place
/// behind them.
///
///     char* end = pwr::packNumber(std::uint16_t{0x0102}, buffer);    // 02 01
///
/// REQUIRES: there is room for them.
template <std::unsigned_integral Unsigned>
char* packNumber(Unsigned value, char* at) {
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(at, &value, sizeof value);  // One move, where compilers would make one per byte.
  } else {
    for (std::size_t i = 0; i < sizeof value; ++i) {
      at[i] = static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
    }
  }
  return at + sizeof value;
}

/// The number whose bytes stand at `at`, the lowest first. REQUIRES: they are there.
template <std::unsigned_integral Unsigned>
Unsigned unpackNumber(const char* at) {
  Unsigned value = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&value, at, sizeof value);
    return value;
  }
  for (std::size_t i = sizeof(Unsigned); i-- > 0;) {
    value = static_cast<Unsigned>(value << 8U | static_cast<unsigned char>(at[i]));
  }
  return value;
}

/// `packNumber` for the four bytes of a single-precision number.
inline char* packNumber(float value, char* at) {
  static_assert(std::numeric_limits<float>::is_iec559);
  return packNumber(std::bit_cast<std::uint32_t>(value), at);
}

}  // namespace pwr
