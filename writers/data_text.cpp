#include "writers/data_text.h"

#include <utility>

#include "client/src/common/number_text.h"

namespace {

std::string text(long value) { return pwr::to_string(value); }
std::string text(unsigned long value) { return pwr::to_string(value); }
std::string text(double value) { return pwr::to_string(value); }

template <typename Number>
std::string text(const std::pair<Number, Number>& range) {
  return text(range.first) + " - " + text(range.second);
}

/// Sets `out` to what `convert` takes from the value.
template <typename Value>
int convertedText(const pwr::Data& data, int (pwr::Data::*convert)(Value&) const,
                  std::string& out) {
  Value value{};
  if ((data.*convert)(value) != 0) {
    return 1;
  }
  out = text(value);
  return 0;
}

// Out of line, so that the way of a plain text stays short.
[[gnu::noinline]] int numberText(const pwr::Data& data, std::string& out) {
  switch (data.m_tag) {
    case pwr::Data::kInt:
      return convertedText(data, &pwr::Data::toInt, out);
    case pwr::Data::kUInt:
      return convertedText(data, &pwr::Data::toUInt, out);
    case pwr::Data::kReal:
      return convertedText(data, &pwr::Data::toReal, out);
    case pwr::Data::kIntRange:
      return convertedText(data, &pwr::Data::toIntRange, out);
    case pwr::Data::kUIntRange:
      return convertedText(data, &pwr::Data::toUIntRange, out);
    case pwr::Data::kRealRange:
      return convertedText(data, &pwr::Data::toRealRange, out);
    default:
      return 1;
  }
}

}  // namespace

int getStringFromData_i(const pwr::Data* data, std::string* out) {
  if (data == nullptr) {
    return 1;
  }
  // What is asked for per sample is a state's text.
  return data->m_tag == pwr::Data::kString ? data->toString(*out) : numberText(*data, *out);
}
