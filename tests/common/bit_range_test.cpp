#include "client/src/common/bit_range.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "client/src/common/fixed_point.h"
#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using qumetra::test::LogCapture;
using qumetra::test::RecordingSink;

constexpr unsigned long kBits = 0xFEDCBA9876543210UL;

TEST(Mask, IsTwoNumbers) {
  EXPECT_TRUE(isMaskValid("7:3", ":"));
  EXPECT_TRUE(isMaskValid("0x1F-3", "-"));
  for (const char* const text : {"", "7", "7:3:1", "7:x", "7-3", ":3"}) {
    EXPECT_FALSE(isMaskValid(text, ":")) << text;
  }
}

TEST(Mask, GivesItsTwoNumbersAsBytes) {
  EXPECT_EQ(retrieveMsbFromMask("63:5"), 63);
  EXPECT_EQ(retrieveLsbFromMask("63:5"), 5);
  EXPECT_EQ(retrieveMsbFromMask("257:0x10"), 1);
  EXPECT_EQ(retrieveLsbFromMask("257:0x10"), 16);
}

TEST(Mask, WithoutExactlyTwoNumbersGivesZero) {
  EXPECT_EQ(retrieveMsbFromMask("63"), 0);
  EXPECT_EQ(retrieveLsbFromMask("63:5:1"), 0);
}

TEST(BitRange, WholeWordIsTheValue) { EXPECT_EQ(extractBitRangeValue(kBits, 63, 0), kBits); }

TEST(BitRange, BitsAreRightAligned) {
  EXPECT_EQ(extractBitRangeValue(kBits, 7, 4), 1U);
  EXPECT_EQ(extractBitRangeValue(kBits, 15, 0), 0x3210U);
  EXPECT_EQ(extractBitRangeValue(kBits, 4, 4), 1U);
}

TEST(BitRange, UpToBitSixtyThreeAllBitsAboveAreKept) {
  EXPECT_EQ(extractBitRangeValue(kBits, 63, 60), 0xFU);
  EXPECT_EQ(extractBitRangeValue(kBits, 63, 32), 0xFEDCBA98U);
}

TEST(BitRange, ShiftCountsModuloSixtyFour) {
  EXPECT_EQ(extractBitRangeValue(kBits, 63, 64), kBits);
  EXPECT_EQ(extractBitRangeValue(kBits, 71, 68), 1U);
}

TEST(BitRange, WidthThatIsAMultipleOfTheWordKeepsNothing) {
  EXPECT_EQ(extractBitRangeValue(~0UL, 3, 4), 0U);
  EXPECT_EQ(extractBitRangeValue(~0UL, 64, 1), 0U);
}

TEST(BitRange, WrongWayAroundWidthWrapsAsAByte) {
  // 3 - 7 + 1 is 253 as a byte, 61 modulo 64.
  EXPECT_EQ(extractBitRangeValue(~0UL, 3, 7), (~0UL >> 7) & ((1UL << 61) - 1));
}

TEST(BitRangeChoice, IsTheFirstThatIsNotEmpty) {
  std::string out;
  EXPECT_EQ(resolveBitRange("a", "b", out), 0);
  EXPECT_EQ(out, "a");
  EXPECT_EQ(resolveBitRange("", "b", out), 0);
  EXPECT_EQ(out, "b");
}

TEST(BitRangeChoice, WithoutEitherFails) {
  std::string out = "old";
  EXPECT_EQ(resolveBitRange("", "", out), 1);
  EXPECT_EQ(out, "old");
}

double valueOf(unsigned long raw, const std::string& format) {
  return convertToFloatPoint(raw, retrieveQFormat(format));
}

TEST(FixedPoint, FormatHasSignAndTwoNumbers) {
  const qm_qformat format = retrieveQFormat("S12.0x4");
  EXPECT_EQ(format.sign, 'S');
  EXPECT_EQ(format.integerBits, 12);
  EXPECT_EQ(format.fractionBits, 4);
}

TEST(FixedPoint, UnsignedIsScaledByItsFraction) {
  EXPECT_EQ(valueOf(384, "U8.8"), 1.5);
  EXPECT_EQ(valueOf(384, "U16.0"), 384.0);
  EXPECT_EQ(valueOf(~0UL, "U64.0"), 18446744073709551616.0);
}

TEST(FixedPoint, SignStandsOneBitAboveAPlainReadingOfTheFormat) {
  EXPECT_EQ(valueOf(0x8000, "S7.8"), 128.0);
  const double zero = valueOf(0x10000, "S7.8");
  EXPECT_EQ(zero, 0.0);
  EXPECT_TRUE(std::signbit(zero));
  EXPECT_EQ(valueOf(0x1FF00, "S7.8"), -1.0);
}

TEST(FixedPoint, WithoutItsSignBitAllOfRawCounts) { EXPECT_EQ(valueOf(0x20100, "S7.8"), 513.0); }

TEST(FixedPoint, ShiftOfTheSignCountsModuloSixtyFour) {
  // 64 bits are none: the sign is bit 1.
  EXPECT_EQ(convertToFloatPoint(3, {'S', 64, 0}), -1.0);
  // 63 bits leave no place for a sign.
  EXPECT_EQ(convertToFloatPoint(~0UL, {'S', 63, 0}), 18446744073709551616.0);
}

class BadFormat : public ::testing::TestWithParam<const char*> {};

TEST_P(BadFormat, IsAnErrorWithoutLineEndAndLeavesTheValueUnscaled) {
  const LogCapture log(PluginEnvironment::kErrors);
  EXPECT_EQ(valueOf(384, GetParam()), 384.0);
  EXPECT_EQ(
      log.errors(),
      (RecordingSink::Texts{{1, "ERROR: Invalid DATA-FORMAT entry. " + std::string(GetParam()) +
                                    " is invalid. Format expected as UX.Y or SX.Y"}}));
}

INSTANTIATE_TEST_SUITE_P(Texts, BadFormat,
                         ::testing::Values("Q8.8", "U8", "", ".", "u8.8", "U8.8.8", "8.8"));

TEST(FixedPoint, BadNumbersInAFormatAreZero) {
  const LogCapture log;
  const qm_qformat format = retrieveQFormat("U.x");
  EXPECT_EQ(format.sign, 'U');
  EXPECT_EQ(format.integerBits, 0);
  EXPECT_EQ(format.fractionBits, 0);
}

TEST(FixedPoint, AnotherSignIsAnErrorAndLeavesTheValueUnscaled) {
  const LogCapture log(PluginEnvironment::kErrors);
  EXPECT_EQ(convertToFloatPoint(384, {'Q', 8, 9}), 384.0);
  EXPECT_EQ(log.errors(),
            (RecordingSink::Texts{{1,
                                   "ERROR: Invalid DATA-FORMAT entry. Q8.9 is invalid. Format "
                                   "expected as UX.Y or SX.Y"}}));
}

}  // namespace
}  // namespace pwr
