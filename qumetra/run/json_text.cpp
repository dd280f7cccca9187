#include "qumetra/run/json_text.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

#include <fmt/format.h>

namespace qumetra {
namespace {

bool isContinuation(unsigned char byte) { return (byte & 0xC0U) == 0x80U; }

/// What the first byte of a character of several bytes says: the length, and the smallest and
/// largest second byte (which rule out overlong forms, surrogates and what lies above U+10FFFF).
struct Lead {
  std::size_t length;
  unsigned char lowest;
  unsigned char highest;
};

Lead leadOf(unsigned char byte) {
  if (byte < 0x80) {
    return {1, 0, 0};
  }
  if (byte >= 0xC2 && byte <= 0xDF) {
    return {2, 0x80, 0xBF};
  }
  if (byte >= 0xE0 && byte <= 0xEF) {
    const bool mayBeSurrogate = byte == 0xED;
    return {3, static_cast<unsigned char>(byte == 0xE0 ? 0xA0 : 0x80),
            static_cast<unsigned char>(mayBeSurrogate ? 0x9F : 0xBF)};
  }
  if (byte >= 0xF0 && byte <= 0xF4) {
    return {4, static_cast<unsigned char>(byte == 0xF0 ? 0x90 : 0x80),
            static_cast<unsigned char>(byte == 0xF4 ? 0x8F : 0xBF)};
  }
  return {0, 0, 0};
}

/// The length of the valid character at the beginning of `text`, or 0. REQUIRES: not empty.
std::size_t characterLength(std::string_view text) {
  const Lead lead = leadOf(static_cast<unsigned char>(text.front()));
  if (lead.length <= 1) {
    return lead.length;
  }
  if (text.size() < lead.length) {
    return 0;
  }
  const auto second = static_cast<unsigned char>(text[1]);
  if (second < lead.lowest || second > lead.highest) {
    return 0;
  }
  for (std::size_t i = 2; i < lead.length; ++i) {
    if (!isContinuation(static_cast<unsigned char>(text[i]))) {
      return 0;
    }
  }
  return lead.length;
}

void appendAscii(std::string& out, char character) {
  switch (character) {
    case '"':
    case '\\':
      out += '\\';
      out += character;
      return;
    case '\n':
      out += "\\n";
      return;
    case '\t':
      out += "\\t";
      return;
    case '\r':
      out += "\\r";
      return;
    default:
      break;
  }
  if (static_cast<unsigned char>(character) < 0x20) {
    fmt::format_to(std::back_inserter(out), "\\u{:04x}", static_cast<unsigned>(character));
  } else {
    out += character;
  }
}

}  // namespace

void appendJsonText(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    if (length == 0) {
      const auto byte = static_cast<unsigned char>(text.front());
      fmt::format_to(std::back_inserter(out), "\\udc{:02x}", static_cast<unsigned>(byte));
    } else if (length == 1) {
      appendAscii(out, text.front());
    } else {
      out += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  out += '"';
}

}  // namespace qumetra
