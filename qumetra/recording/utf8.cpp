#include "qumetra/recording/utf8.h"

#include <cstdint>
#include <cstring>

namespace qumetra {
namespace {

/// What may follow a lead byte. The range of the second byte is what keeps overlong forms,
/// surrogates and too large numbers out.
struct Lead {
  std::size_t length;
  unsigned char secondLow;
  unsigned char secondHigh;
};

Lead leadOf(unsigned char byte) {
  if (byte >= 0xc2 && byte <= 0xdf) {
    return {2, 0x80, 0xbf};
  }
  if (byte >= 0xe0 && byte <= 0xef) {
    const unsigned char low = byte == 0xe0 ? 0xa0 : 0x80;
    const unsigned char high = byte == 0xed ? 0x9f : 0xbf;
    return {3, low, high};
  }
  if (byte >= 0xf0 && byte <= 0xf4) {
    const unsigned char low = byte == 0xf0 ? 0x90 : 0x80;
    const unsigned char high = byte == 0xf4 ? 0x8f : 0xbf;
    return {4, low, high};
  }
  return {0, 0, 0};
}

unsigned char byteAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

/// Skips whole words of ASCII, which is what most recordings consist of.
std::size_t skipAscii(std::string_view text, std::size_t at) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  std::uint64_t word = 0;
  while (at + sizeof word <= text.size()) {
    std::memcpy(&word, text.data() + at, sizeof word);
    if ((word & kHighBits) != 0) {
      break;
    }
    at += sizeof word;
  }
  return at;
}

}  // namespace

std::size_t utf8SequenceLength(std::string_view text) {
  if (byteAt(text, 0) < 0x80) {
    return 1;
  }
  const Lead lead = leadOf(byteAt(text, 0));
  if (lead.length == 0 || lead.length > text.size()) {
    return 0;
  }
  if (byteAt(text, 1) < lead.secondLow || byteAt(text, 1) > lead.secondHigh) {
    return 0;
  }
  for (std::size_t i = 2; i < lead.length; ++i) {
    if ((byteAt(text, i) & 0xc0) != 0x80) {
      return 0;
    }
  }
  return lead.length;
}

std::size_t findInvalidUtf8(std::string_view text) {
  std::size_t at = skipAscii(text, 0);
  while (at < text.size()) {
    const std::size_t length = utf8SequenceLength(text.substr(at));
    if (length == 0) {
      return at;
    }
    at = skipAscii(text, at + length);
  }
  return std::string_view::npos;
}

}  // namespace qumetra
