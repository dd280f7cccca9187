#include "host/formatter.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "client/src/common/number_text.h"
#include "host/data.h"

namespace pwr {
namespace {

/// Appends integers and reals with a fixed number of decimals. Integers keep all their digits, also
/// those that a real could not hold.
class FixedText {
 public:
  FixedText(std::string& out, int precision) : m_out(out), m_precision(precision) {}

  void append(double value) const { appendFixed(m_out, value, m_precision); }

  void append(long value) const {
    appendInt(m_out, value);
    appendZeroDecimals();
  }

  void append(unsigned long value) const {
    appendUInt(m_out, value);
    appendZeroDecimals();
  }

  template <typename Number>
  void append(const std::pair<Number, Number>& range) const {
    append(range.first);
    m_out += " - ";
    append(range.second);
  }

 private:
  void appendZeroDecimals() const {
    if (m_precision > 0) {
      m_out += '.';
      m_out.append(static_cast<std::size_t>(m_precision), '0');
    }
  }

  std::string& m_out;
  int m_precision;
};

/// Appends what `conversion` gives; nothing when `value` is of another kind.
template <typename Value>
void appendConverted(const FixedText& text, const Data& data,
                     int (Data::*conversion)(Value&) const) {
  Value value{};
  if ((data.*conversion)(value) == 0) {
    text.append(value);
  }
}

void appendByTag(const FixedText& text, const Data& data) {
  switch (data.m_tag) {
    case Data::kInt:
      return appendConverted(text, data, &Data::toInt);
    case Data::kUInt:
      return appendConverted(text, data, &Data::toUInt);
    case Data::kReal:
      return appendConverted(text, data, &Data::toReal);
    case Data::kIntRange:
      return appendConverted(text, data, &Data::toIntRange);
    case Data::kUIntRange:
      return appendConverted(text, data, &Data::toUIntRange);
    case Data::kRealRange:
      return appendConverted(text, data, &Data::toRealRange);
    default:
      return;
  }
}

}  // namespace

Formatter::~Formatter() = default;

RealFormatter::RealFormatter(int width, int precision)
    : m_width(std::max(width, 0)), m_precision(std::max(precision, 0)) {}
RealFormatter::~RealFormatter() = default;

void RealFormatter::format(std::string& out, const Data& value) const {
  out.clear();
  appendByTag(FixedText(out, m_precision), value);
  const auto width = static_cast<std::size_t>(m_width);
  if (out.size() < width) {
    out.insert(0, width - out.size(), ' ');
  }
}

}  // namespace pwr
