// Numbers as the bytes of a file: little-endian whatever the machine's order.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

namespace pwr {

namespace detail {

/// Without a loop, so that compilers make one store of it.
template <std::unsigned_integral Unsigned, std::size_t... Bytes>
void packBytes(Unsigned value, char* at, std::index_sequence<Bytes...> /*bytes*/) {
  ((at[Bytes] = static_cast<char>(static_cast<unsigned char>(value >> (8 * Bytes)))), ...);
}

}  // namespace detail

/// Writes the `sizeof(Unsigned)` bytes of `value` to `at`, the lowest first, and returns the place
/// behind them.
///
///     char* end = pwr::packNumber(std::uint16_t{0x0102}, buffer);    // 02 01
///
/// REQUIRES: there is room for them.
template <std::unsigned_integral Unsigned>
char* packNumber(Unsigned value, char* at) {
  detail::packBytes(value, at, std::make_index_sequence<sizeof(Unsigned)>());
  return at + sizeof(Unsigned);
}

/// The same for the four bytes of a single-precision number.
inline char* packNumber(float value, char* at) {
  static_assert(std::numeric_limits<float>::is_iec559);
  return packNumber(std::bit_cast<std::uint32_t>(value), at);
}

}  // namespace pwr
