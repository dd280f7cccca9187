// Reals as integers: the values that fit, and those that do not.
#include "client/src/common/real_to_integer.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::uint64_t kHighestBit = 0x8000000000000000;
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

TEST(RealToInteger, ValuesAreCutTowardsZero) {
  EXPECT_EQ(pwr::realToInt64(2.9), 2);
  EXPECT_EQ(pwr::realToInt64(-2.9), -2);
  EXPECT_EQ(pwr::realToUInt64(2.9), 2U);
  EXPECT_EQ(pwr::realToUInt32(2.9), 2U);
}

TEST(RealToInteger, SignedValuesThatDoNotFitAreTheSmallest) {
  for (const double value : {9223372036854775808.0, -1e300, 1e300, kInfinity, -kInfinity, kNaN}) {
    EXPECT_EQ(pwr::realToInt64(value), kSmallest) << value;
  }
  EXPECT_EQ(pwr::realToInt64(-9223372036854775808.0), kSmallest);
}

TEST(RealToInteger, UnsignedValuesUseAll64Bits) {
  EXPECT_EQ(pwr::realToUInt64(9223372036854775808.0), kHighestBit);
  EXPECT_EQ(pwr::realToUInt64(18446744073709549568.0), 0xFFFFFFFFFFFFF800U);
}

TEST(RealToInteger, NegativeUnsignedValuesAreTheBitsOfSignedOnes) {
  EXPECT_EQ(pwr::realToUInt64(-1.5), ~std::uint64_t{0});
  EXPECT_EQ(pwr::realToUInt64(-1e300), kHighestBit);
}

TEST(RealToInteger, UnsignedValuesThatDoNotFitAreZero) {
  EXPECT_EQ(pwr::realToUInt64(18446744073709551616.0), 0U);
  EXPECT_EQ(pwr::realToUInt64(kInfinity), 0U);
}

TEST(RealToInteger, NotANumberIsTheHighestBit) {
  EXPECT_EQ(pwr::realToUInt64(kNaN), kHighestBit);
  EXPECT_EQ(pwr::realToUInt32(kNaN), 0U);
}

TEST(RealToInteger, NarrowValuesKeepTheirLowBits) {
  EXPECT_EQ(pwr::realToUInt32(5e9), 705032704U);
  EXPECT_EQ(pwr::realToUInt32(-1.0), 0xFFFFFFFFU);
  EXPECT_EQ(pwr::realToUInt32(1e300), 0U);
}

}  // namespace
