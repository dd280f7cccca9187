// Bytes that are not UTF-8, in JSON: each is the escape of a lone surrogate.
#pragma once

#include <cstddef>

namespace qumetra {

/// What turning the escapes of lone surrogates into bytes gave.
struct SurrogateResult {
  /// The new size of the text.
  std::size_t size = 0;
  /// Whether there was a lone surrogate that stands for no byte. It has been replaced by blanks, so
  /// that the rest can be parsed.
  bool isFaulty = false;
  /// Where the first such stands in the old text.
  std::size_t faultAt = 0;
};

/// Replaces, in the JSON text of `size` bytes, the escape of each lone surrogate from \udc80 to
/// \udcff by the single byte 0x80 to 0xff. Surrogate pairs and all other escapes stay.
SurrogateResult replaceLoneSurrogates(char* text, std::size_t size);

}  // namespace qumetra
