// Numbers as text, as plain as floors make them.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>

namespace qumetra::bench {

/// No text here is longer.
inline constexpr std::size_t kLongestText = 32;

// Each writes to `out`, which has room for `kLongestText`, and returns the length.

/// With two decimals.
inline std::size_t fixedText(char* out, double value) {
  const auto end = std::to_chars(out, out + kLongestText, value, std::chars_format::fixed, 2).ptr;
  return static_cast<std::size_t>(end - out);
}

/// With six decimals at most.
inline std::size_t realText(char* out, double value) {
  char* end = std::to_chars(out, out + kLongestText, value, std::chars_format::fixed, 6).ptr;
  while (end[-1] == '0') {
    --end;
  }
  return static_cast<std::size_t>((end[-1] == '.' ? end - 1 : end) - out);
}

inline std::size_t countText(char* out, std::uint64_t value) {
  return static_cast<std::size_t>(std::to_chars(out, out + kLongestText, value).ptr - out);
}

}  // namespace qumetra::bench
