#include "host/formatter.h"

#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "host/data.h"

namespace {

using pwr::Data;

std::string format(int width, int precision, const Data& data) {
  std::string text = "what was there";
  pwr::RealFormatter(width, precision).format(text, data);
  return text;
}

TEST(RealFormatter, NumbersGetExactlyThatManyDecimals) {
  EXPECT_EQ(format(0, 2, Data::fromInt(-3)), "-3.00");
  EXPECT_EQ(format(0, 2, Data(3UL)), "3.00");
  EXPECT_EQ(format(0, 2, Data(1.5)), "1.50");
}

TEST(RealFormatter, PrecisionZeroHasNoPoint) {
  EXPECT_EQ(format(0, 0, Data::fromInt(-3)), "-3");
  EXPECT_EQ(format(0, 0, Data(2.5)), "2");
}

TEST(RealFormatter, ExactBinaryValueIsRoundedWithTiesToEven) {
  EXPECT_EQ(format(0, 2, Data(0.125)), "0.12");
  EXPECT_EQ(format(0, 2, Data(0.375)), "0.38");
  // The closest double to 1.005 is below it.
  EXPECT_EQ(format(0, 2, Data(1.005)), "1.00");
}

TEST(RealFormatter, LargeIntegersKeepAllTheirDigits) {
  EXPECT_EQ(format(0, 1, Data(std::numeric_limits<unsigned long>::max())),
            "18446744073709551615.0");
  EXPECT_EQ(format(0, 1, Data::fromInt(std::numeric_limits<long>::min())),
            "-9223372036854775808.0");
}

TEST(RealFormatter, SignOfAZeroIsKept) {
  EXPECT_EQ(format(0, 1, Data(-0.0)), "-0.0");
  EXPECT_EQ(format(0, 1, Data(-0.01)), "-0.0");
}

TEST(RealFormatter, WhatIsNoNumberIsTold) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(format(0, 2, Data(nan)), "nan");
  EXPECT_EQ(format(0, 2, Data(std::copysign(nan, -1.0))), "nan");
  EXPECT_EQ(format(0, 2, Data(infinity)), "inf");
  EXPECT_EQ(format(0, 2, Data(-infinity)), "-inf");
}

TEST(RealFormatter, RangeIsLowAndHigh) {
  EXPECT_EQ(format(0, 1, Data::fromIntRange({-1, 4})), "-1.0 - 4.0");
  EXPECT_EQ(format(0, 1, Data::fromUIntRange({1, 4})), "1.0 - 4.0");
  EXPECT_EQ(format(0, 1, Data::fromRealRange({0.25, 1.5})), "0.2 - 1.5");
}

TEST(RealFormatter, OtherKindsGiveTheEmptyText) {
  EXPECT_EQ(format(0, 2, Data()), "");
  EXPECT_EQ(format(0, 2, Data::fromHandle(nullptr)), "");
  EXPECT_EQ(format(0, 2, Data(std::string("7"))), "");
  EXPECT_EQ(format(0, 2, Data::fromTag(9)), "");
}

TEST(RealFormatter, ShortTextsArePaddedOnTheLeft) {
  EXPECT_EQ(format(6, 1, Data(1.5)), "   1.5");
  EXPECT_EQ(format(2, 1, Data(1.5)), "1.5");
}

TEST(RealFormatter, NegativeWidthAndPrecisionCountAsZero) {
  EXPECT_EQ(format(-4, -1, Data(1.75)), "2");
}

}  // namespace
