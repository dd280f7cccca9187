// Valid UTF-8 and control characters in bytes of unknown origin.
#pragma once

#include <cstddef>
#include <string_view>

namespace qumetra {

/// The length of the UTF-8 sequence that `text` begins with: 1 to 4, or 0 when it begins with a
/// byte that is not part of valid UTF-8. Overlong forms, surrogates and numbers above U+10FFFF are
/// not valid. REQUIRES: `text` is not empty.
std::size_t utf8SequenceLength(std::string_view text);

/// The place of the first byte that is not part of valid UTF-8, or `std::string_view::npos`.
std::size_t findInvalidUtf8(std::string_view text);

/// Whether the byte is a control character of ASCII, of which delete is one.
constexpr bool isControl(char byte) {
  constexpr char kDelete = 0x7f;
  return (byte >= 0 && byte < ' ') || byte == kDelete;
}

}  // namespace qumetra
