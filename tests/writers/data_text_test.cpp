// Values as the texts that the continuous, JSON and binary results hold.
#include "writers/data_text.h"

#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "host/handles.h"

namespace {

using pwr::Data;

std::string textOf(const Data& data) {
  std::string text = "untouched";
  EXPECT_EQ(getStringFromData_i(&data, &text), 0);
  return text;
}

void expectNoText(const Data* data) {
  std::string text = "untouched";
  EXPECT_EQ(getStringFromData_i(data, &text), 1);
  EXPECT_EQ(text, "untouched");
}

TEST(DataText, SignedIntegerIsDecimal) {
  EXPECT_EQ(textOf(Data::fromInt(-7)), "-7");
  EXPECT_EQ(textOf(Data::fromInt(std::numeric_limits<long>::min())), "-9223372036854775808");
}

TEST(DataText, UnsignedIntegerIsDecimal) {
  EXPECT_EQ(textOf(Data(18446744073709551615UL)), "18446744073709551615");
}

TEST(DataText, RealHasSixSignificantDigits) {
  EXPECT_EQ(textOf(Data(1234567.0)), "1.23457e+06");
  EXPECT_EQ(textOf(Data(0.1)), "0.1");
}

TEST(DataText, SignedRangeIsLowBlankDashBlankHigh) {
  EXPECT_EQ(textOf(Data::fromIntRange({-2, 4})), "-2 - 4");
}

TEST(DataText, UnsignedRangeIsLowBlankDashBlankHigh) {
  EXPECT_EQ(textOf(Data::fromUIntRange({800, 1200})), "800 - 1200");
}

TEST(DataText, RealRangeHasSixSignificantDigitsAtBothEnds) {
  EXPECT_EQ(textOf(Data::fromRealRange({0.12345678, 2.0})), "0.123457 - 2");
}

TEST(DataText, StringStaysAsItIs) {
  EXPECT_EQ(textOf(Data(std::string("a\0 \"b\"", 7))), std::string("a\0 \"b\"", 7));
}

TEST(DataText, HandleHasNone) {
  const pwr::DataDescriptor descriptor(1, {"C0", "", ""});
  const Data handle = Data::fromHandle(&descriptor);
  expectNoText(&handle);
  const Data null = Data::fromHandle(nullptr);
  expectNoText(&null);
}

TEST(DataText, ValueOfNoKindHasNone) {
  const Data none;
  expectNoText(&none);
}

TEST(DataText, UnknownTagHasNone) {
  for (const int tag : {9, 100, 255}) {
    const Data unknown = Data::fromTag(static_cast<std::uint8_t>(tag));
    expectNoText(&unknown);
  }
}

TEST(DataText, NoValueHasNone) { expectNoText(nullptr); }

}  // namespace
