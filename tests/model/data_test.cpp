#include "host/data.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/handles.h"

namespace {

using pwr::Data;

const pwr::DataHandle& someHandle() {
  static const pwr::DataHandle s_handle(1, {"C6", "field", ""}, pwr::DataHandle::kOtherType);
  return s_handle;
}

/// One value of every tag from 0 to 9, at the place of its tag, and one of the last tag.
std::vector<Data> oneOfEachTag() {
  return {Data(),
          Data::fromInt(-3),
          Data(3UL),
          Data(1.5),
          Data::fromIntRange({-1, 4}),
          Data::fromUIntRange({1, 4}),
          Data::fromRealRange({0.5, 1.5}),
          Data::fromHandle(&someHandle()),
          Data(std::string("text")),
          Data::fromTag(9),
          Data::fromTag(255)};
}

std::string formatted(const Data& data) {
  std::string text = "what was there";
  data.toFormattedString(text);
  return text;
}

/// Checks that `conversion` gives `expected` for the value of `tag`, and for every other value
/// returns 1 and leaves its result at `former`.
template <typename Value>
void expectOnlyTagConverts(int (Data::*conversion)(Value&) const, std::uint8_t tag,
                           const Value& expected, const Value& former) {
  for (const Data& data : oneOfEachTag()) {
    Value value = former;
    const int status = (data.*conversion)(value);
    EXPECT_EQ(status, data.m_tag == tag ? 0 : 1) << "tag " << int{data.m_tag};
    EXPECT_EQ(value, data.m_tag == tag ? expected : former) << "tag " << int{data.m_tag};
  }
}

TEST(Data, TagsHaveTheirNumbers) {
  std::vector<int> tags;
  for (const Data& data : oneOfEachTag()) {
    tags.push_back(data.m_tag);
  }
  EXPECT_EQ(tags, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 255}));
}

TEST(Data, ToIntSucceedsOnASignedIntegerOnly) {
  expectOnlyTagConverts<long>(&Data::toInt, Data::kInt, -3, 77);
}

TEST(Data, ToUIntSucceedsOnAnUnsignedIntegerOnly) {
  expectOnlyTagConverts<unsigned long>(&Data::toUInt, Data::kUInt, 3, 77);
}

TEST(Data, ToRealSucceedsOnARealOnly) {
  expectOnlyTagConverts<double>(&Data::toReal, Data::kReal, 1.5, 77.0);
}

TEST(Data, ToIntRangeSucceedsOnASignedRangeOnly) {
  expectOnlyTagConverts<Data::IntRange>(&Data::toIntRange, Data::kIntRange, {-1, 4}, {7, 7});
}

TEST(Data, ToUIntRangeSucceedsOnAnUnsignedRangeOnly) {
  expectOnlyTagConverts<Data::UIntRange>(&Data::toUIntRange, Data::kUIntRange, {1, 4}, {7, 7});
}

TEST(Data, ToRealRangeSucceedsOnARealRangeOnly) {
  expectOnlyTagConverts<Data::RealRange>(&Data::toRealRange, Data::kRealRange, {0.5, 1.5},
                                         {7.0, 7.0});
}

TEST(Data, ToStringSucceedsOnAStringOnly) {
  expectOnlyTagConverts<std::string>(&Data::toString, Data::kString, "text", "former");
}

TEST(Data, ToHandleSucceedsOnAHandleOnlyAndSetsNullOtherwise) {
  expectOnlyTagConverts<const pwr::DataHandle*>(&Data::toHandle, Data::kHandle, &someHandle(),
                                                nullptr);
  const pwr::DataHandle* handle = &someHandle();
  EXPECT_EQ(Data(1.5).toHandle(handle), 1);
  EXPECT_EQ(handle, nullptr);
}

TEST(Data, NullHandleConvertsAndGivesNull) {
  const pwr::DataHandle* handle = &someHandle();
  EXPECT_EQ(Data::fromHandle(nullptr).toHandle(handle), 0);
  EXPECT_EQ(handle, nullptr);
}

TEST(Data, CopyAndMoveKeepTagAndValue) {
  const Data original(std::string("a text that is too long for the object itself"));
  Data copy(original);
  Data moved(std::move(copy));
  Data assigned;
  assigned = moved;
  EXPECT_EQ(assigned.m_tag, Data::kString);
  EXPECT_EQ(formatted(assigned), formatted(original));
}

TEST(Data, FormattedIntegersAreDecimal) {
  EXPECT_EQ(formatted(Data::fromInt(std::numeric_limits<long>::min())), "-9223372036854775808");
  EXPECT_EQ(formatted(Data(std::numeric_limits<unsigned long>::max())), "18446744073709551615");
}

TEST(Data, FormattedRealHasAtMostSixDecimalsAndNoTrailingZeros) {
  EXPECT_EQ(formatted(Data(1.5)), "1.5");
  EXPECT_EQ(formatted(Data(0.1234567)), "0.123457");
  EXPECT_EQ(formatted(Data(0.25)), "0.25");
}

TEST(Data, FormattedWholeRealLosesItsPointButNotItsZeros) {
  EXPECT_EQ(formatted(Data(100.0)), "100");
  EXPECT_EQ(formatted(Data(0.0)), "0");
  EXPECT_EQ(formatted(Data(1e22)), "10000000000000000000000");
}

TEST(Data, FormattedRealRoundsTheExactBinaryValue) {
  // 2 to the power of -7 ends in ...8125: the seventh decimal is a tie, and 2 is even.
  EXPECT_EQ(formatted(Data(0.0078125)), "0.007812");
  EXPECT_EQ(formatted(Data(0.0234375)), "0.023438");
}

TEST(Data, FormattedRealKeepsTheSignOfAZero) {
  EXPECT_EQ(formatted(Data(-0.0)), "-0");
  EXPECT_EQ(formatted(Data(-0.0000001)), "-0");
}

TEST(Data, FormattedRealTellsWhatIsNoNumber) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(formatted(Data(nan)), "nan");
  EXPECT_EQ(formatted(Data(std::copysign(nan, -1.0))), "nan");
  EXPECT_EQ(formatted(Data(infinity)), "inf");
  EXPECT_EQ(formatted(Data(-infinity)), "-inf");
}

TEST(Data, FormattedRangeIsLowAndHigh) {
  EXPECT_EQ(formatted(Data::fromIntRange({-1, 4})), "-1 - 4");
  EXPECT_EQ(formatted(Data::fromUIntRange({1, 4})), "1 - 4");
  EXPECT_EQ(formatted(Data::fromRealRange({10.0, 1.5})), "10 - 1.5");
}

TEST(Data, FormattedHandleIsItsName) {
  EXPECT_EQ(formatted(Data::fromHandle(&someHandle())), "C6");
}

TEST(Data, FormattedNullHandleIsEmpty) { EXPECT_EQ(formatted(Data::fromHandle(nullptr)), ""); }

TEST(Data, FormattedStringIsTheStringWithItsZeroBytes) {
  const std::string text("a\0b", 3);
  EXPECT_EQ(formatted(Data(text)), text);
}

TEST(Data, FormattedOtherTagsAreEmpty) {
  EXPECT_EQ(formatted(Data()), "");
  EXPECT_EQ(formatted(Data::fromTag(9)), "");
  EXPECT_EQ(formatted(Data::fromTag(255)), "");
}

TEST(Data, IntegersAndRealsOnlyAreNumeric) {
  for (const Data& data : oneOfEachTag()) {
    EXPECT_EQ(data.isNumeric(), data.m_tag >= 1 && data.m_tag <= 3) << "tag " << int{data.m_tag};
  }
}

TEST(Data, MultiplyScalesARealAndBothEndsOfARealRange) {
  Data real(1.5);
  real.multiplyValue(2.0);
  Data range = Data::fromRealRange({0.5, 1.5});
  range.multiplyValue(-2.0);
  EXPECT_EQ(formatted(real), "3");
  EXPECT_EQ(formatted(range), "-1 - -3");
}

TEST(Data, MultiplyLeavesEveryOtherKindAlone) {
  for (Data& data : oneOfEachTag()) {
    if (data.m_tag == Data::kReal || data.m_tag == Data::kRealRange) {
      continue;
    }
    const Data former = data;
    data.multiplyValue(2.0);
    EXPECT_EQ(data.m_tag, former.m_tag);
    EXPECT_EQ(formatted(data), formatted(former)) << "tag " << int{data.m_tag};
  }
}

TEST(Data, RealFormOfANumberIsAReal) {
  const std::vector<Data> values = oneOfEachTag();
  const std::vector<double> expected = {-3.0, 3.0, 1.5};
  for (std::size_t tag = 1; tag <= 3; ++tag) {
    double real = 0;
    EXPECT_EQ(Data::convertToReal(&values[tag]).toReal(real), 0);
    EXPECT_EQ(real, expected[tag - 1]);
  }
}

TEST(Data, RealFormOfARangeIsARealRange) {
  const std::vector<Data> values = oneOfEachTag();
  const std::vector<Data::RealRange> expected = {{-1.0, 4.0}, {1.0, 4.0}, {0.5, 1.5}};
  for (std::size_t tag = 4; tag <= 6; ++tag) {
    Data::RealRange range;
    EXPECT_EQ(Data::convertToReal(&values[tag]).toRealRange(range), 0);
    EXPECT_EQ(range, expected[tag - 4]);
  }
}

TEST(Data, RealFormOfAllElseIsTheRealZero) {
  for (const Data& data : oneOfEachTag()) {
    if (data.m_tag >= 1 && data.m_tag <= 6) {
      continue;
    }
    double real = 77.0;
    EXPECT_EQ(Data::convertToReal(&data).toReal(real), 0) << "tag " << int{data.m_tag};
    EXPECT_EQ(real, 0.0) << "tag " << int{data.m_tag};
  }
}

TEST(Data, TagThatBelongsToNoValueIsOfNoKind) {
  // The tag is open to all: a value whose tag was changed must do no harm.
  Data data(1.5);
  data.m_tag = Data::kString;
  std::string text = "former";
  EXPECT_EQ(data.toString(text), 1);
  EXPECT_EQ(text, "former");
  EXPECT_EQ(formatted(data), "");
}

}  // namespace
