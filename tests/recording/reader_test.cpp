// How a recording is read: its lines, texts and values.
#include <cmath>
#include <deque>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/configuration.h"
#include "tests/recording/reader_fixture.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST_F(Reader, DeliversEveryKindOfMessageInOrder) {
  EXPECT_EQ(reading.readPath(QUMETRA_RECORDINGS "/all_kinds.qmrec"), "");

  std::vector<std::string> kinds;
  for (const std::string& message : reading.messages()) {
    kinds.push_back(message.substr(0, message.find(' ')));
  }
  EXPECT_THAT(kinds,
              ElementsAre("system", "text", "text", "id", "sample", "sample", "sample", "table",
                          "table", "table", "container", "container", "attributes", "attributes",
                          "attributes", "ended", "ended", "metadata", "flush", "flush", "text"));
  EXPECT_EQ(reading.samplesRead(), 3U);
  EXPECT_THAT(reading.warnings(), IsEmpty());
}

TEST_F(Reader, EveryRecordingForOthersCanBeRead) {
  EXPECT_EQ(reading.readPath(QUMETRA_RECORDINGS "/residency.qmrec"), "");
  Reading table;
  EXPECT_EQ(table.readPath(QUMETRA_RECORDINGS "/summary_table.qmrec"), "");
}

TEST_F(Reader, SkipsEmptyLinesCarriageReturnsAndNotes) {
  EXPECT_EQ(reading.readBytes("\n\r\n{\"note\":{}}\r\n" + kFirstRecord +
                              "\r\n\n{\"note\":{\"text\":\"n\"}}\n{\"text\":{\"message\":\"a\"}}\r"
                              "\n"),
            "");
  EXPECT_THAT(reading.messages(), ElementsAre("text 2 0 a"));
}

TEST_F(Reader, LastWholeLineNeedsNoLineEnd) {
  EXPECT_EQ(reading.readBytes(kFirstRecord + "\n{\"text\":{\"message\":\"a\"}}"), "");
  EXPECT_THAT(reading.messages(), ElementsAre("text 2 0 a"));
  EXPECT_THAT(reading.warnings(), IsEmpty());
}

TEST_F(Reader, InterruptedLastLineIsAWarningAndAllBeforeItCounts) {
  EXPECT_EQ(reading.readBytes(kFirstRecord + "\n{\"text\":{\"message\":\"a\"}}\n{\"text\":{\"me"),
            "");
  EXPECT_THAT(reading.messages(), ElementsAre("text 2 0 a"));
  EXPECT_THAT(reading.warnings(),
              ElementsAre("r:3: the recording was interrupted here; all before it counts"));
}

TEST_F(Reader, LineInterruptedWithinACharacterIsAWarning) {
  EXPECT_EQ(reading.readBytes(kFirstRecord + "\n{\"text\":{\"message\":\"\xc3"), "");
  EXPECT_EQ(reading.warnings().size(), 1U);
}

TEST_F(Reader, LastLineThatIsNoObjectIsAWarning) {
  EXPECT_EQ(reading.readBytes(kFirstRecord + "\n12"), "");
  EXPECT_EQ(reading.warnings().size(), 1U);
}

TEST_F(Reader, FaultInAWholeLastLineIsAnErrorThoughItHasNoLineEnd) {
  EXPECT_THAT(reading.readBytes(kFirstRecord + "\n{\"unheard\":{}}"), HasSubstr("r:2: unheard: "));
  EXPECT_THAT(reading.warnings(), IsEmpty());
}

TEST_F(Reader, MessagesBeforeAFaultAreDelivered) {
  EXPECT_THAT(reading.readLines({R"({"text":{"message":"a"}})", "{}", R"({"text":{}})"}),
              HasSubstr("r:3: "));
  EXPECT_THAT(reading.messages(), ElementsAre("text 2 0 a"));
}

TEST_F(Reader, ReadingEndsForGoodAfterAFault) {
  const TempDir directory;
  writeFile(directory.file("r"), kFirstRecord + "\n{}\n{\"text\":{}}\n");
  RecordingReader reader(directory.file("r"), reading.model(), kept);
  EXPECT_TRUE(reader.readLine());
  EXPECT_THROW(reader.readLine(), RecordingError);
  EXPECT_FALSE(reader.readLine());
  EXPECT_THAT(kept.texts, IsEmpty());
}

TEST_F(Reader, TellsHowFarItIs) {
  const TempDir directory;
  writeFile(directory.file("r"), kFirstRecord + "\r\n\n{\"text\":{}}");
  RecordingReader reader(directory.file("r"), reading.model(), kept);
  EXPECT_EQ(reader.sizeBytes(), kFirstRecord.size() + 3 + 11);
  EXPECT_EQ(reader.bytesRead(), 0U);
  EXPECT_TRUE(reader.readLine());
  EXPECT_EQ(reader.bytesRead(), kFirstRecord.size() + 2);
  reader.readAll();
  EXPECT_EQ(reader.bytesRead(), reader.sizeBytes());
}

TEST_F(Reader, FileThatIsNotThereIsAnError) {
  EXPECT_EQ(reading.readPath("/nowhere/r"), "/nowhere/r: No such file or directory");
}

TEST_F(Reader, DirectoryIsAnError) { EXPECT_EQ(reading.readPath("/"), "/: Is a directory"); }

TEST_F(Reader, LinesMayBeLongerThanAnyBuffer) {
  const std::string longText(3'000'000, 'x');
  EXPECT_EQ(textOf(longText), longText);
}

// Texts

TEST_F(Reader, EscapedZeroIsAZeroByte) { EXPECT_EQ(textOf(R"(a\u0000b)"), std::string("a\0b", 3)); }

TEST_F(Reader, LoneLowSurrogateStandsForItsByte) {
  EXPECT_EQ(textOf(R"(\udc80-\uDCfF-\udc80)"), "\x80-\xff-\x80");
}

TEST_F(Reader, SurrogatePairIsOneCharacterThoughItsSecondHalfCouldStandForAByte) {
  EXPECT_EQ(textOf(R"(\ud83d\ude00\ud83d\udc80)"), "\xf0\x9f\x98\x80\xf0\x9f\x92\x80");
}

TEST_F(Reader, SurrogateBehindAPairStandsForItsByte) {
  EXPECT_EQ(textOf(R"(\ud83d\ude00\udc80)"), "\xf0\x9f\x98\x80\x80");
}

TEST_F(Reader, EscapedBackslashBeforeUMakesNoSurrogate) {
  EXPECT_EQ(textOf(R"(\\udc80\\\udc80)"), "\\udc80\\\x80");
}

TEST_F(Reader, MemberNamesMayHoldBytesToo) {
  EXPECT_EQ(reading.readLines({R"({"config":{"metricOrder":{"\udcfe":["m"]}}})"}), "");
  std::deque<std::string> metrics;
  EXPECT_TRUE(
      pwr::WriterInterfaceConfigFileParser::instance()->getMetricOrderForFeature(metrics, "\xfe"));
}

// Numbers and values

TEST_F(Reader, NanIsAText) { EXPECT_TRUE(std::isnan(realOf(R"("nan")"))); }

TEST_F(Reader, InfinityIsAText) { EXPECT_EQ(realOf(R"("inf")"), HUGE_VAL); }

TEST_F(Reader, NegativeInfinityIsAText) { EXPECT_EQ(realOf(R"("-inf")"), -HUGE_VAL); }

TEST_F(Reader, RealKeepsTheSignOfAZeroWithoutAPoint) { EXPECT_TRUE(std::signbit(realOf("-0"))); }

TEST_F(Reader, RealMayBeAnIntegerLargerThan64Bits) {
  EXPECT_EQ(realOf("36893488147419103232"), 36893488147419103232.0);
}

TEST_F(Reader, RealIsTheNearestDouble) {
  EXPECT_EQ(realOf("2.2250738585072011e-308"), 0x0.fffffffffffffp-1022);
}

TEST_F(Reader, RealTooSmallForADoubleIsZero) {
  EXPECT_EQ(realOf("0." + std::string(400, '0') + "1"), 0.0);
}

TEST_F(Reader, RealTooSmallForADoubleKeepsItsSign) { EXPECT_TRUE(std::signbit(realOf("-1e-400"))); }

TEST_F(Reader, AbsentValueHasTagZero) {
  EXPECT_EQ(
      reading.readLines({R"({"metric":{"ref":"m","metricId":1}})", R"({"entity":{"ref":"e"}})",
                         R"({"sample":{"metric":"m","elements":[{"entity":"e"}]}})"}),
      "");
  EXPECT_EQ(kept.values.at(0).m_tag, 0);
}

TEST_F(Reader, EachValueHasTheTagOfItsMember) {
  EXPECT_EQ(reading.readPath(QUMETRA_RECORDINGS "/all_kinds.qmrec"), "");
  std::vector<std::string> texts;
  for (const pwr::Data& value : kept.values) {
    texts.push_back(describe(value));
  }
  EXPECT_THAT(texts, ElementsAre("3 0x1.999999999999ap-4", "1 -9223372036854775808",
                                 "2 18446744073709551615", "0 ", "4 -1..4", "5 1..4",
                                 "6 0x1p-1..-inf", "3 nan", "7 #33 main", "255 "));
}

TEST_F(Reader, NullHandleIsAValueOfTag7) {
  EXPECT_EQ(describe(valueOf(R"({"handle":null})")), "7 null");
}

TEST_F(Reader, NoneIsAValueOfTag0) { EXPECT_EQ(describe(valueOf(R"({"none":null})")), "0 "); }

TEST_F(Reader, DeepNestingIsAFaultAndNoOverflow) {
  const std::string deep(2'000'000, '[');
  const std::string fault = reading.readLines({R"({"text":{"message":)" + deep});
  EXPECT_THAT(fault, HasSubstr("r:2: no JSON at text.message[0][0]"));
  EXPECT_LT(fault.size(), 300U) << "the place is cut";
}

TEST_F(Reader, DeepValueIsOfAWrongTypeAndNoOverflow) {
  const std::string deep = std::string(2'000'000, '[') + std::string(2'000'000, ']');
  EXPECT_EQ(reading.readLines({R"({"text":{"message":)" + deep + "}}"}),
            "r:2: text.message: a list; expected a string");
}

}  // namespace
}  // namespace qumetra::test
