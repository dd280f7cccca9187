#include "qumetra/recording/record_object.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace qumetra {
namespace {

static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<float>::is_iec559);

const char* typeName(JsonLine::Kind kind) {
  switch (kind) {
    case JsonLine::Kind::Null:
      return "null";
    case JsonLine::Kind::False:
    case JsonLine::Kind::True:
      return "a boolean";
    case JsonLine::Kind::Number:
      return "a number";
    case JsonLine::Kind::String:
      return "a string";
    case JsonLine::Kind::List:
      return "a list";
    case JsonLine::Kind::Object:
      return "an object";
  }
  return "nothing";
}

/// Texts that go into messages are cut, since a line may hold anything.
std::string shortened(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  return text.size() <= kLongest ? std::string(text)
                                 : std::string(text.substr(0, kLongest)) + "...";
}

/// The number is 0.0...01 or ...e-1000: too small to be told from zero, not too large.
bool isTiny(std::string_view digits) {
  long exponent = 0;
  const std::size_t e = digits.find_first_of("eE");
  if (e != std::string_view::npos) {
    const std::string_view text = digits.substr(e + (digits[e + 1] == '+' ? 2 : 1));
    const auto result = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (result.ec != std::errc()) {
      return text[0] == '-';
    }
  }
  const std::string_view mantissa = digits.substr(0, e);
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const std::size_t leading = mantissa.find_first_of("123456789");
  if (leading == std::string_view::npos) {
    return true;
  }
  return static_cast<long>(point) - static_cast<long>(leading) + exponent < 0;
}

}  // namespace

template <std::integral Integer>
Integer RecordValue::integer() const {
  const std::string_view text = node().text;
  Integer value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (!isNumber() || error != std::errc() || end != text.data() + text.size()) {
    failInteger(std::to_string(std::numeric_limits<Integer>::min()) + " to " +
                std::to_string(std::numeric_limits<Integer>::max()));
  }
  return value;
}

template std::int64_t RecordValue::integer() const;
template std::uint64_t RecordValue::integer() const;
template std::uint32_t RecordValue::integer() const;
template std::uint16_t RecordValue::integer() const;
template std::uint8_t RecordValue::integer() const;

double RecordValue::real() const {
  const std::string_view text = node().text;
  if (isString()) {
    using Limits = std::numeric_limits<double>;
    if (text == "nan") {
      return Limits::quiet_NaN();
    }
    if (text == "inf" || text == "-inf") {
      return text[0] == '-' ? -Limits::infinity() : Limits::infinity();
    }
  }
  if (!isNumber()) {
    failType("a number, \"nan\", \"inf\" or \"-inf\"");
  }
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc()) {
    return value;
  }
  if (!isTiny(text.substr(text[0] == '-' ? 1 : 0))) {
    fail(shortened(text) + " is out of range", "a number that a 64-bit real holds");
  }
  return text[0] == '-' ? -0.0 : 0.0;
}

float RecordValue::narrowReal() const { return static_cast<float>(real()); }

bool RecordValue::boolean() const {
  if (node().kind != JsonLine::Kind::True && node().kind != JsonLine::Kind::False) {
    failType("true or false");
  }
  return node().kind == JsonLine::Kind::True;
}

std::string_view RecordValue::string() const {
  if (!isString()) {
    failType("a string");
  }
  return node().text;
}

RecordList RecordValue::list() const {
  if (node().kind != JsonLine::Kind::List) {
    failType("a list");
  }
  return {*m_line, m_index};
}

RecordList RecordValue::list(std::uint32_t size) const {
  if (node().kind != JsonLine::Kind::List) {
    failType("a list of " + std::to_string(size));
  }
  if (node().count != size) {
    fail("a list of " + std::to_string(node().count), "a list of " + std::to_string(size));
  }
  return {*m_line, m_index};
}

void RecordValue::fail(const std::string& there, const std::string& expected) const {
  throw RecordFault(m_line->path(m_index) + ": " + there + "; expected " + expected);
}

void RecordValue::failInteger(const std::string& range) const {
  const std::string expected = "an integer from " + range;
  if (!isNumber()) {
    failType(expected);
  }
  const bool isWhole = node().text.find_first_of(".eE") == std::string_view::npos;
  fail(shortened(node().text) + (isWhole ? " is out of range" : " is no integer"), expected);
}

void RecordValue::failType(const std::string& expected) const {
  fail(isString() ? '"' + shortened(node().text) + '"' : typeName(node().kind), expected);
}

RecordValue RecordList::operator[](std::uint32_t position) const {
  Iterator at = begin();
  while (position-- > 0) {
    ++at;
  }
  return *at;
}

RecordObject::RecordObject(RecordValue value)
    : m_line(&value.line()), m_index(value.index()), m_next(value.index() + 1) {
  if (m_line->node(m_index).kind != JsonLine::Kind::Object) {
    value.failType("an object");
  }
}

std::optional<RecordValue> RecordObject::find(std::string_view name) {
  const std::uint32_t end = m_line->node(m_index).end;
  std::uint32_t at = m_next;
  for (std::uint32_t left = size(); left > 0; --left) {
    at = at == end ? m_index + 1 : at;
    JsonLine::Node& member = m_line->node(at);
    if (!member.taken && member.name == name) {
      member.taken = true;
      m_next = member.end;
      return RecordValue(*m_line, at);
    }
    at = member.end;
  }
  return std::nullopt;
}

std::optional<RecordValue> RecordObject::findNotNull(std::string_view name) {
  const auto member = find(name);
  return member && !member->isNull() ? member : std::nullopt;
}

RecordValue RecordObject::require(std::string_view name) {
  const auto member = find(name);
  if (!member) {
    value().fail("no member \"" + std::string(name) + '"', "one");
  }
  return *member;
}

bool RecordObject::boolean(std::string_view name) {
  const auto member = find(name);
  return member && member->boolean();
}

std::string RecordObject::string(std::string_view name) {
  const auto member = find(name);
  return member ? std::string(member->string()) : std::string();
}

void RecordObject::finish() const {
  const std::uint32_t end = m_line->node(m_index).end;
  for (std::uint32_t at = m_index + 1; at != end; at = m_line->node(at).end) {
    if (!m_line->node(at).taken) {
      refuse(at);
    }
  }
}

void RecordObject::refuse(std::uint32_t member) const {
  const RecordValue value(*m_line, member);
  const std::uint32_t end = m_line->node(m_index).end;
  for (std::uint32_t at = m_index + 1; at != end; at = m_line->node(at).end) {
    if (at != member && m_line->node(at).taken &&
        m_line->node(at).name == m_line->node(member).name) {
      value.fail("a member given twice", "it once");
    }
  }
  value.fail("an unknown member", "none of this name");
}

}  // namespace qumetra
