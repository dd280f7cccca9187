#include "client/src/common/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>

namespace pwr {
namespace {

constexpr int kStreamPrecision = 6;
/// Longer than any integer, any real in shortest form, and any real with six significant digits.
constexpr std::size_t kShortTextBytes = 32;
/// Sign, the digits before the point of the largest real, and the point.
constexpr std::size_t kFixedBytesBesideDecimals =
    1 + std::numeric_limits<double>::max_exponent10 + 1 + 1;
/// Up to this many decimals no text passes through the heap on its way.
constexpr int kCommonDecimals = 32;

template <typename... Arguments>
void appendShortText(std::string& out, Arguments... arguments) {
  std::array<char, kShortTextBytes> buffer;
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), arguments...);
  out.append(buffer.data(), result.ptr);
}

void appendFixedByHeap(std::string& out, double value, int precision) {
  std::string text(kFixedBytesBesideDecimals + static_cast<std::size_t>(precision), '\0');
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value,
                                    std::chars_format::fixed, precision);
  out.append(text.data(), result.ptr);
}

template <typename Integer>
std::string integerText(Integer value) {
  std::string text;
  appendShortText(text, value);
  return text;
}

std::string realText(double value) {
  std::string text;
  appendGeneral(text, value);
  return text;
}

}  // namespace

void appendInt(std::string& out, long value) { appendShortText(out, value); }

void appendUInt(std::string& out, unsigned long value) { appendShortText(out, value); }

std::string hexText(unsigned long value) {
  constexpr int kHexadecimal = 16;
  std::string text = "0x";
  appendShortText(text, value, kHexadecimal);
  return text;
}

void appendGeneral(std::string& out, double value) {
  appendShortText(out, value, std::chars_format::general, kStreamPrecision);
}

void appendFixed(std::string& out, double value, int precision) {
  if (std::isnan(value)) {
    out += "nan";
    return;
  }
  const int decimals = std::max(precision, 0);
  if (decimals > kCommonDecimals) {
    appendFixedByHeap(out, value, decimals);
    return;
  }
  std::array<char, kFixedBytesBesideDecimals + kCommonDecimals> buffer;
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                    std::chars_format::fixed, decimals);
  out.append(buffer.data(), result.ptr);
}

void appendShortest(std::string& out, double value) { appendShortText(out, value); }

std::string toString(int value) { return integerText(value); }
std::string toString(unsigned int value) { return integerText(value); }
std::string toString(unsigned long value) { return integerText(value); }
std::string toString(unsigned short value) { return integerText(value); }
std::string toString(float value) { return realText(static_cast<double>(value)); }
std::string toString(double value) { return realText(value); }
std::string to_string(long value) { return integerText(value); }
std::string to_string(unsigned long value) { return integerText(value); }
std::string to_string(double value) { return realText(value); }

}  // namespace pwr
