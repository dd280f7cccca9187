#include "qumetra/recording/json_text.h"

#include <array>
#include <charconv>
#include <cmath>

#include "client/src/common/number_text.h"
#include "qumetra/recording/utf8.h"

namespace qumetra {
namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

void appendUnicodeEscape(std::string& out, unsigned number) {
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) {
    out += kHexDigits[(number >> shift) & 0xf];
  }
}

void appendEscape(std::string& out, unsigned char byte) {
  switch (byte) {
    case '"':
    case '\\':
      out += '\\';
      out += static_cast<char>(byte);
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
      // What is no control character is a byte outside UTF-8: 0x80 to 0xff as \udc80 to \udcff.
      appendUnicodeEscape(out, byte < 0x20 ? byte : 0xdc00U + byte);
  }
}

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

bool isPlain(char c) { return isAscii(c) && c >= ' ' && c != '"' && c != '\\'; }

/// The length of what `text` begins with and that may stand in JSON as it is.
std::size_t plainLength(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    if (isPlain(text[at])) {
      ++at;
      continue;
    }
    const std::size_t sequence = isAscii(text[at]) ? 0 : utf8SequenceLength(text.substr(at));
    if (sequence == 0) {
      break;
    }
    at += sequence;
  }
  return at;
}

}  // namespace

void JsonText::name(std::string_view name) {
  separate();
  appendQuoted(name);
  m_out += ':';
  m_needsComma = false;
}

void JsonText::text(std::string_view text) {
  separate();
  appendQuoted(text);
}

void JsonText::integer(std::int64_t value) {
  separate();
  pwr::appendInt(m_out, value);
}

void JsonText::unsignedInteger(std::uint64_t value) {
  separate();
  pwr::appendUInt(m_out, value);
}

void JsonText::real(double value) {
  if (std::isnan(value)) {
    text("nan");
  } else if (std::isinf(value)) {
    text(value < 0 ? "-inf" : "inf");
  } else {
    separate();
    pwr::appendShortest(m_out, value);
  }
}

void JsonText::narrowReal(float value) {
  std::array<char, 32> digits{};
  const auto last = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  double read = 0;
  std::from_chars(digits.data(), last, read);
  // The reader rounds twice, to 64 bits and then to 32, which may end beside the number.
  if (!std::isfinite(value) || static_cast<float>(read) != value) {
    real(value);
    return;
  }
  raw({digits.data(), static_cast<std::size_t>(last - digits.data())});
}

void JsonText::boolean(bool value) { raw(value ? "true" : "false"); }

void JsonText::null() { raw("null"); }

void JsonText::raw(std::string_view json) {
  separate();
  m_out += json;
}

void JsonText::textMember(std::string_view member, std::string_view value) {
  if (!value.empty()) {
    name(member);
    text(value);
  }
}

void JsonText::numberMember(std::string_view member, std::uint64_t value) {
  if (value != 0) {
    name(member);
    unsignedInteger(value);
  }
}

void JsonText::flagMember(std::string_view member, bool value) {
  if (value) {
    name(member);
    boolean(value);
  }
}

void JsonText::rawMember(std::string_view member, std::string_view json) {
  if (!json.empty()) {
    name(member);
    raw(json);
  }
}

void JsonText::separate() {
  if (m_needsComma) {
    m_out += ',';
  }
  m_needsComma = true;
}

void JsonText::begin(char bracket) {
  separate();
  m_out += bracket;
  m_needsComma = false;
}

void JsonText::end(char bracket) {
  m_out += bracket;
  m_needsComma = true;
}

void JsonText::appendQuoted(std::string_view text) {
  m_out += '"';
  while (!text.empty()) {
    const std::size_t plain = plainLength(text);
    m_out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (!text.empty()) {
      appendEscape(m_out, static_cast<unsigned char>(text[0]));
      text.remove_prefix(1);
    }
  }
  m_out += '"';
}

}  // namespace qumetra
