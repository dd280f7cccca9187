#include "client/src/common/serializer.h"

#include <cstring>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using Bytes = std::vector<std::uint8_t>;
using qumetra::test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr std::size_t kTooMany = std::numeric_limits<std::size_t>::max();

Bytes packed(const std::string& text) {
  Serializer serializer(0);
  EXPECT_EQ(serializer.write_to(text), 0);
  return serializer.get_buffer();
}

TEST(Serializer, NumbersAreTheirNativeBytes) {
  Serializer serializer(0);
  const std::uint32_t number = 0x11223344;
  const std::uint16_t next = 0x5566;
  EXPECT_EQ(serializer.write_to(&number, sizeof number), 0);
  EXPECT_EQ(serializer.write_to(&next, sizeof next), 0);
  EXPECT_THAT(serializer.get_buffer(), ElementsAre(0x44, 0x33, 0x22, 0x11, 0x66, 0x55));
}

TEST(Serializer, ATextIsItsLengthAndItsBytes) {
  EXPECT_THAT(packed("ab"), ElementsAre(2, 0, 'a', 'b'));
  EXPECT_THAT(packed(""), ElementsAre(0, 0));
}

TEST(Serializer, MadeFromASizeHoldsNothingYet) {
  Serializer serializer(100);
  char byte = 'x';
  EXPECT_EQ(serializer.size(), 0U);
  EXPECT_TRUE(serializer.empty());
  EXPECT_EQ(serializer.read_from(&byte, 1), 0U);
  EXPECT_EQ(byte, 'x');
  EXPECT_THAT(serializer.get_buffer(), IsEmpty());
}

TEST(Serializer, MadeFromBytesReadsThemThoughNoneWereWritten) {
  Serializer serializer(Bytes{1, 2, 3});
  Bytes read(3);
  EXPECT_EQ(serializer.size(), 0U);
  EXPECT_TRUE(serializer.empty());
  EXPECT_EQ(serializer.read_from(read.data(), 3), 3U);
  EXPECT_THAT(read, ElementsAre(1, 2, 3));
  EXPECT_EQ(serializer.read_from(read.data(), 1), 0U);
}

TEST(Serializer, TheBufferOfOneMadeFromBytesIsEmptyAndEmptiesIt) {
  Serializer serializer(Bytes{1, 2, 3});
  std::uint8_t byte = 0;
  EXPECT_EQ(serializer.read_from(&byte, 1), 1U);
  EXPECT_THAT(serializer.get_buffer(), IsEmpty());
  EXPECT_EQ(serializer.read_from(&byte, 1), 0U);
}

TEST(Serializer, WritingIntoOneMadeFromBytesBeginsAtTheStart) {
  Serializer serializer(Bytes{1, 2, 3});
  const std::uint8_t nine = 9;
  EXPECT_EQ(serializer.write_to(&nine, 1), 0);
  EXPECT_EQ(serializer.size(), 1U);
  Bytes read(3);
  EXPECT_EQ(serializer.read_from(read.data(), 3), 3U);
  EXPECT_THAT(read, ElementsAre(9, 2, 3));
  EXPECT_THAT(serializer.get_buffer(), ElementsAre(9));
}

TEST(Serializer, AReadThatFallsShortTakesNothing) {
  for (const bool isGiven : {true, false}) {
    Serializer serializer(isGiven ? Bytes{1, 2, 3} : Bytes{});
    if (!isGiven) {
      serializer.write_to("\1\2\3", 3);
    }
    std::uint32_t four = 7;
    Bytes three(3);
    EXPECT_EQ(serializer.read_from(&four, 4), 0U);
    EXPECT_EQ(four, 7U);
    EXPECT_EQ(serializer.read_from(three.data(), 3), 3U);
    EXPECT_THAT(three, ElementsAre(1, 2, 3));
  }
}

TEST(Serializer, HugeReadsFallShort) {
  Serializer serializer(Bytes{1, 2, 3});
  std::uint8_t byte = 0;
  EXPECT_EQ(serializer.read_from(&byte, 1), 1U);
  EXPECT_EQ(serializer.read_from(&byte, kTooMany), 0U);
  EXPECT_EQ(serializer.read_from(nullptr, 1), 0U);
  EXPECT_EQ(serializer.read_from(&byte, 0), 0U);
}

TEST(Serializer, NothingToWriteTellsWhetherTheSourceWasNull) {
  Serializer serializer(0);
  EXPECT_EQ(serializer.write_to(nullptr, 0), 1);
  EXPECT_EQ(serializer.write_to(nullptr, 5), 1);
  EXPECT_EQ(serializer.write_to("x", 0), 0);
  EXPECT_TRUE(serializer.empty());
}

TEST(Serializer, ACountAboveTheDoubledSizeDoublesMoreThanOnce) {
  Serializer serializer(3);
  const std::string large(1000, 'x');
  EXPECT_EQ(serializer.write_to("ab", 2), 0);
  EXPECT_EQ(serializer.write_to(large.data(), large.size()), 0);
  const Bytes bytes = serializer.get_buffer();
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "ab" + large);
}

TEST(Serializer, MoreThanAVectorHoldsIsRefused) {
  Serializer serializer(0);
  EXPECT_EQ(serializer.write_to("ab", 2), 0);
  EXPECT_EQ(serializer.write_to("x", kTooMany), 1);
  EXPECT_EQ(serializer.write_to("x", kTooMany / 2 + 1), 1);
  EXPECT_THAT(serializer.get_buffer(), ElementsAre('a', 'b'));
}

TEST(Serializer, ATextOf65535BytesComesBackWhole) {
  const std::string text(65535, 't');
  Serializer serializer(packed(text));
  std::string read;
  EXPECT_EQ(serializer.read_from(read), 65535U);
  EXPECT_EQ(read, text);
}

TEST(Serializer, TheLengthOfALongerTextIsCutTo16BitsWhileAllItsBytesAreWritten) {
  const Bytes bytes = packed(std::string(65536 + 2, 't'));
  EXPECT_EQ(bytes.size(), 2U + 65536U + 2U);
  Serializer serializer(bytes);
  std::string read;
  EXPECT_EQ(serializer.read_from(read), 2U);
  EXPECT_EQ(read, "tt");
}

TEST(Serializer, ATextIsAppendedToWhatIsThere) {
  Serializer serializer(packed("cd"));
  std::string text = "ab";
  EXPECT_EQ(serializer.read_from(text), 2U);
  EXPECT_EQ(text, "abcd");
}

TEST(Serializer, AnEmptyTextReadsAsZeroAndIsPassed) {
  Serializer serializer(Bytes{0, 0, 7});
  std::string text;
  std::uint8_t next = 0;
  EXPECT_EQ(serializer.read_from(text), 0U);
  EXPECT_EQ(serializer.read_from(&next, 1), 1U);
  EXPECT_EQ(next, 7);
}

TEST(Serializer, ATextWithoutAWholeLengthTakesNothing) {
  Serializer serializer(Bytes{5});
  std::string text;
  std::uint8_t next = 0;
  EXPECT_EQ(serializer.read_from(text), 0U);
  EXPECT_EQ(serializer.read_from(&next, 1), 1U);
}

TEST(Serializer, ATextThatFallsShortLeavesTheReadBehindItsLength) {
  Serializer serializer(Bytes{3, 0, 'a', 'b'});
  std::string text = "old";
  EXPECT_EQ(serializer.read_from(text), 0U);
  EXPECT_EQ(text, "old");
  char next = 'x';
  EXPECT_EQ(serializer.read_from(&next, 1), 1U);
  EXPECT_EQ(next, 'a');
}

TEST(Serializer, ReadStringEndsATextAtItsLength) {
  Serializer serializer(0);
  char text[] = "abcd";
  EXPECT_EQ(serializer.read_string(text, 2), text);
  EXPECT_STREQ(text, "ab");
  EXPECT_EQ(serializer.read_string(nullptr, 2), nullptr);
}

TEST(Serializer, RewoundBytesAreReadAgain) {
  Serializer serializer(Bytes{1, 2, 3});
  Bytes read(3);
  serializer.read_from(read.data(), 3);
  serializer.rewind_read(2);
  std::uint8_t byte = 0;
  EXPECT_EQ(serializer.read_from(&byte, 1), 1U);
  EXPECT_EQ(byte, 2);
}

TEST(Serializer, RewindingBeyondTheStartIsAWarningAndDoesNothing) {
  const LogCapture log;
  Serializer serializer(Bytes{1, 2, 3});
  Bytes read(2);
  serializer.read_from(read.data(), 2);
  serializer.rewind_read(3);
  EXPECT_THAT(
      log.warnings(),
      ElementsAre(Pair(2, "WARNING: trying to rewind 3 bytes, but only 2 bytes actually read!\n")));
  std::uint8_t byte = 0;
  serializer.read_from(&byte, 1);
  EXPECT_EQ(byte, 3);
}

TEST(Serializer, ItsBufferIsACopyOfExactSizeAndWritingGoesOn) {
  Serializer serializer(0);
  serializer.write_to("ab", 2);
  const Bytes first = serializer.get_buffer();
  EXPECT_EQ(first.capacity(), 2U);
  serializer.write_to("c", 1);
  EXPECT_EQ(serializer.size(), 3U);
  EXPECT_THAT(first, ElementsAre('a', 'b'));
  EXPECT_THAT(serializer.get_buffer(), ElementsAre('a', 'b', 'c'));
}

RC_GTEST_PROP(SerializerProperty, TextsComeBackInTheirOrder,
              (const std::vector<std::string>& texts)) {
  Serializer out(0);
  for (const std::string& text : texts) {
    out.write_to(text);
  }
  Serializer in(out.get_buffer());
  for (const std::string& text : texts) {
    std::string read;
    RC_ASSERT(in.read_from(read) == text.size());
    RC_ASSERT(read == text);
  }
  char none = 0;
  RC_ASSERT(in.read_from(&none, 1) == 0U);
}

RC_GTEST_PROP(SerializerProperty, PiecesOfAnySizeLieEndToEnd,
              (const std::vector<Bytes>& pieces, std::uint16_t firstRoom)) {
  Serializer out(firstRoom);
  Bytes expected;
  for (const Bytes& piece : pieces) {
    out.write_to(piece.data(), piece.size());
    expected.insert(expected.end(), piece.begin(), piece.end());
  }
  RC_ASSERT(out.size() == expected.size());
  RC_ASSERT(out.get_buffer() == expected);
}

RC_GTEST_PROP(SerializerProperty, AnyBytesCanBeReadAsTexts, (const Bytes& bytes)) {
  Serializer in(bytes);
  std::size_t taken = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::string text;
    taken += in.read_from(text);
  }
  RC_ASSERT(taken <= bytes.size());
}

}  // namespace
}  // namespace pwr
