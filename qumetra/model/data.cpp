#include "host/data.h"

#include <cstddef>

#include "client/src/common/number_text.h"
#include "host/handles.h"

namespace pwr {
namespace {

constexpr int kFormattedDecimals = 6;
constexpr const char* kRangeSeparator = " - ";

/// Copies the held value out when both the tag and what is held are of the kind `kTag`. The
/// alternatives stand at the places of their tags.
template <Data::Tag kTag, typename Value, typename Out>
int convert(std::uint8_t tag, const Value& value, Out& out) {
  const auto* const held = std::get_if<std::size_t{kTag}>(&value);
  if (tag != kTag || held == nullptr) {
    return 1;
  }
  out = *held;
  return 0;
}

void appendNumber(std::string& out, long value) { appendInt(out, value); }
void appendNumber(std::string& out, unsigned long value) { appendUInt(out, value); }

void appendNumber(std::string& out, double value) {
  const std::size_t start = out.size();
  appendFixed(out, value, kFormattedDecimals);
  if (out.find('.', start) == std::string::npos) {
    return;
  }
  out.erase(out.find_last_not_of('0') + 1);
  if (out.back() == '.') {
    out.pop_back();
  }
}

/// Sets its text to the display form of what a `Data` holds.
class FormattedText {
 public:
  explicit FormattedText(std::string& out) : m_out(out) {}

  void operator()(std::monostate) const {}
  void operator()(long value) const { appendNumber(m_out, value); }
  void operator()(unsigned long value) const { appendNumber(m_out, value); }
  void operator()(double value) const { appendNumber(m_out, value); }
  void operator()(const std::string& text) const { m_out = text; }

  template <typename Number>
  void operator()(const std::pair<Number, Number>& range) const {
    appendNumber(m_out, range.first);
    m_out += kRangeSeparator;
    appendNumber(m_out, range.second);
  }

  void operator()(const DataHandle* handle) const {
    if (handle != nullptr) {
      m_out = handle->getName();
    }
  }

 private:
  std::string& m_out;
};

/// Makes the real form of what a `Data` holds.
struct RealForm {
  Data operator()(long value) const { return Data(static_cast<double>(value)); }
  Data operator()(unsigned long value) const { return Data(static_cast<double>(value)); }
  Data operator()(double value) const { return Data(value); }

  template <typename Number>
  Data operator()(const std::pair<Number, Number>& range) const {
    return Data::fromRealRange(
        {static_cast<double>(range.first), static_cast<double>(range.second)});
  }

  template <typename Other>
  Data operator()(const Other&) const {
    return Data(0.0);
  }
};

}  // namespace

Data::Data() = default;
Data::Data(double value) : m_tag(kReal), m_value(value) {}
Data::Data(unsigned long value) : m_tag(kUInt), m_value(value) {}
Data::Data(std::string value) : m_tag(kString), m_value(std::move(value)) {}
Data::Data(const Data& other) = default;
Data::Data(Data&& other) noexcept = default;
Data& Data::operator=(const Data& other) = default;
Data& Data::operator=(Data&& other) noexcept = default;
Data::~Data() = default;

Data::Data(std::uint8_t tag, Value value) : m_tag(tag), m_value(std::move(value)) {}

Data Data::fromInt(long value) { return {kInt, Value(value)}; }
Data Data::fromIntRange(IntRange value) { return {kIntRange, Value(value)}; }
Data Data::fromUIntRange(UIntRange value) { return {kUIntRange, Value(value)}; }
Data Data::fromRealRange(RealRange value) { return {kRealRange, Value(value)}; }
Data Data::fromHandle(const DataHandle* handle) { return {kHandle, Value(handle)}; }
Data Data::fromTag(std::uint8_t tag) { return {tag, Value()}; }

int Data::toInt(long& out) const { return convert<kInt>(m_tag, m_value, out); }
int Data::toUInt(unsigned long& out) const { return convert<kUInt>(m_tag, m_value, out); }
int Data::toReal(double& out) const { return convert<kReal>(m_tag, m_value, out); }
int Data::toString(std::string& out) const { return convert<kString>(m_tag, m_value, out); }
int Data::toIntRange(IntRange& out) const { return convert<kIntRange>(m_tag, m_value, out); }
int Data::toUIntRange(UIntRange& out) const { return convert<kUIntRange>(m_tag, m_value, out); }
int Data::toRealRange(RealRange& out) const { return convert<kRealRange>(m_tag, m_value, out); }

int Data::toHandle(const DataHandle*& out) const {
  const int status = convert<kHandle>(m_tag, m_value, out);
  if (status != 0) {
    out = nullptr;
  }
  return status;
}

void Data::toFormattedString(std::string& out) const {
  out.clear();
  if (m_tag == m_value.index()) {
    std::visit(FormattedText(out), m_value);
  }
}

bool Data::isNumeric() const { return m_tag >= kInt && m_tag <= kReal; }

void Data::multiplyValue(double factor) {
  if (auto* const real = std::get_if<double>(&m_value)) {
    *real *= factor;
  } else if (auto* const range = std::get_if<RealRange>(&m_value)) {
    range->first *= factor;
    range->second *= factor;
  }
}

Data Data::convertToReal(const Data* source) {
  if (source->m_tag != source->m_value.index()) {
    return Data(0.0);
  }
  return std::visit(RealForm{}, source->m_value);
}

}  // namespace pwr
