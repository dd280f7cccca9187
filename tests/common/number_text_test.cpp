#include "client/src/common/number_text.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace pwr {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();
constexpr int kRandomValues = 1'000'000;

std::string fixed(double value, int precision) {
  std::string text;
  appendFixed(text, value, precision);
  return text;
}

std::string general(double value) {
  std::string text;
  appendGeneral(text, value);
  return text;
}

std::string shortest(double value) {
  std::string text;
  appendShortest(text, value);
  return text;
}

/// printf's own text; the buffer holds the largest real with 100 decimals.
std::string printed(const char* format, int precision, double value) {
  std::array<char, 512> buffer{};
  const int length = std::snprintf(buffer.data(), buffer.size(), format, precision, value);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string streamed(double value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

TEST(HexText, HasAPrefixAndNoLeadingZeros) {
  EXPECT_EQ(hexText(0), "0x0");
  EXPECT_EQ(hexText(0x1f), "0x1f");
  EXPECT_EQ(hexText(std::numeric_limits<unsigned long>::max()), "0xffffffffffffffff");
}

TEST(AppendFixed, RandomBitPatternsReadAsPrintfWritesThem) {
  std::mt19937_64 random(20240607);
  for (int i = 0; i < kRandomValues; ++i) {
    const double value = std::bit_cast<double>(random());
    const int precision = i % 10;
    if (std::isnan(value)) {
      continue;
    }
    ASSERT_EQ(fixed(value, precision), printed("%.*f", precision, value));
  }
}

TEST(AppendFixed, RandomEverydayValuesReadAsPrintfWritesThem) {
  std::mt19937_64 random(77);
  std::uniform_real_distribution<double> distribution(-1e6, 1e6);
  for (int i = 0; i < kRandomValues; ++i) {
    const double value = distribution(random);
    ASSERT_EQ(fixed(value, i % 4), printed("%.*f", i % 4, value));
  }
}

TEST(AppendFixed, TiesOfTheExactBinaryValueGoToTheEvenDigit) {
  EXPECT_EQ(fixed(0.125, 2), "0.12");
  EXPECT_EQ(fixed(0.375, 2), "0.38");
  EXPECT_EQ(fixed(0.5, 0), "0");
  EXPECT_EQ(fixed(1.5, 0), "2");
  EXPECT_EQ(fixed(2.5, 0), "2");
  EXPECT_EQ(fixed(-2.5, 0), "-2");
}

TEST(AppendFixed, ValuesThatOnlyLookLikeTiesRoundByTheirBinaryValue) {
  EXPECT_EQ(fixed(1.005, 2), "1.00");
  EXPECT_EQ(fixed(2.675, 2), "2.67");
}

TEST(AppendFixed, PrecisionZeroHasNoPoint) { EXPECT_EQ(fixed(1234.4, 0), "1234"); }

TEST(AppendFixed, TheSignOfAZeroIsKept) {
  EXPECT_EQ(fixed(-0.0, 2), "-0.00");
  EXPECT_EQ(fixed(0.0, 2), "0.00");
  EXPECT_EQ(fixed(-0.001, 2), "-0.00");
}

TEST(AppendFixed, EveryNanIsUnsigned) {
  EXPECT_EQ(fixed(kNan, 2), "nan");
  EXPECT_EQ(fixed(std::copysign(kNan, -1.0), 2), "nan");
}

TEST(AppendFixed, InfinitiesCarryTheirSign) {
  EXPECT_EQ(fixed(kInfinity, 3), "inf");
  EXPECT_EQ(fixed(-kInfinity, 3), "-inf");
}

TEST(AppendFixed, TheLargestRealHasAllItsDigits) {
  for (const int precision : {0, 1, 9, 32, 33, 100}) {
    EXPECT_EQ(fixed(kLargest, precision), printed("%.*f", precision, kLargest));
    EXPECT_EQ(fixed(-kLargest, precision), printed("%.*f", precision, -kLargest));
  }
  EXPECT_EQ(fixed(kLargest, 0).size(), 309U);
}

TEST(AppendFixed, TheSmallestRealHasAllItsDecimals) {
  const std::string text = fixed(kSmallest, 1074);
  EXPECT_EQ(text.size(), 2U + 1074U);
  EXPECT_EQ(text.substr(0, 10), "0.00000000");
  // The smallest is 2 to the -1074, so its decimals are those of 5 to the 1074.
  EXPECT_EQ(text.substr(text.size() - 4), "5625");
}

TEST(AppendFixed, DecimalsBeyondTheExactValueAreZeros) {
  EXPECT_EQ(fixed(0.5, 40), "0.5" + std::string(39, '0'));
}

TEST(AppendFixed, WritesBehindWhatIsThere) {
  std::string text = "a=";
  appendFixed(text, 1.25, 1);
  EXPECT_EQ(text, "a=1.2");
}

TEST(AppendGeneral, RandomBitPatternsReadAsAStreamWritesThem) {
  std::mt19937_64 random(4711);
  std::ostringstream out;
  for (int i = 0; i < kRandomValues; ++i) {
    const double value = std::bit_cast<double>(random());
    out.str("");
    out << value;
    ASSERT_EQ(general(value), out.str());
  }
}

TEST(AppendGeneral, HasSixSignificantDigits) {
  EXPECT_EQ(general(0.1), "0.1");
  EXPECT_EQ(general(1234567.0), "1.23457e+06");
  EXPECT_EQ(general(123456.0), "123456");
  EXPECT_EQ(general(0.00001), "1e-05");
  EXPECT_EQ(general(100.0), "100");
}

TEST(AppendGeneral, SpecialValuesReadAsAStreamWritesThem) {
  EXPECT_EQ(general(kNan), "nan");
  EXPECT_EQ(general(std::copysign(kNan, -1.0)), "-nan");
  EXPECT_EQ(general(kInfinity), "inf");
  EXPECT_EQ(general(-kInfinity), "-inf");
  EXPECT_EQ(general(-0.0), "-0");
  EXPECT_EQ(streamed(std::copysign(kNan, -1.0)), "-nan");
}

TEST(AppendShortest, RandomBitPatternsReadBackTheSame) {
  std::mt19937_64 random(99);
  for (int i = 0; i < kRandomValues / 10; ++i) {
    const double value = std::bit_cast<double>(random());
    if (!std::isfinite(value)) {
      continue;
    }
    const double readBack = std::strtod(shortest(value).c_str(), nullptr);
    ASSERT_EQ(std::bit_cast<std::uint64_t>(readBack), std::bit_cast<std::uint64_t>(value));
  }
}

TEST(AppendShortest, HasNoDigitTooMany) {
  EXPECT_EQ(shortest(0.1), "0.1");
  EXPECT_EQ(shortest(1.0), "1");
  EXPECT_EQ(shortest(-2.5), "-2.5");
}

TEST(AppendInt, TheLimitsAreWhole) {
  std::string text;
  appendInt(text, std::numeric_limits<long>::min());
  text += ' ';
  appendInt(text, std::numeric_limits<long>::max());
  EXPECT_EQ(text, "-9223372036854775808 9223372036854775807");
}

TEST(AppendUInt, TheLargestIsWhole) {
  std::string text;
  appendUInt(text, std::numeric_limits<unsigned long>::max());
  EXPECT_EQ(text, "18446744073709551615");
}

TEST(ToString, IntegersAreDecimal) {
  EXPECT_EQ(toString(-5), "-5");
  EXPECT_EQ(toString(4294967295U), "4294967295");
  EXPECT_EQ(toString(18446744073709551615UL), "18446744073709551615");
  EXPECT_EQ(toString(static_cast<unsigned short>(65535)), "65535");
  EXPECT_EQ(to_string(-7L), "-7");
  EXPECT_EQ(to_string(7UL), "7");
}

TEST(ToString, RealsHaveSixSignificantDigits) {
  EXPECT_EQ(toString(3.14159265), "3.14159");
  EXPECT_EQ(toString(0.1F), "0.1");
  EXPECT_EQ(toString(16777216.0F), "1.67772e+07");
  EXPECT_EQ(to_string(1e100), "1e+100");
}

}  // namespace
}  // namespace pwr
