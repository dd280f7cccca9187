// The parts below the records: lines, UTF-8, surrogates, JSON in one list.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qumetra/recording/json_line.h"
#include "qumetra/recording/json_text.h"
#include "qumetra/recording/line_reader.h"
#include "qumetra/recording/surrogates.h"
#include "qumetra/recording/utf8.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> linesOf(LineReader& reader) {
  std::vector<std::string> lines;
  TextLine line;
  while (reader.next(line)) {
    EXPECT_EQ(line.text[line.size], '\0');
    lines.push_back(std::to_string(line.number) + (line.hasLineEnd ? ":" : "!") +
                    std::string(line.text, line.size));
  }
  return lines;
}

std::vector<std::string> linesOf(const std::string& bytes) {
  const TempDir directory;
  writeFile(directory.file("f"), bytes);
  LineReader reader(directory.file("f"));
  return linesOf(reader);
}

TEST(Lines, EndWithALineFeedAndMaybeACarriageReturnBefore) {
  EXPECT_THAT(linesOf("a\n\r\n\nb\rc\r\r\n"), ElementsAre("1:a", "2:", "3:", "4:b\rc\r"));
}

TEST(Lines, LastOneMayHaveNoEnd) { EXPECT_THAT(linesOf("a\nb\r"), ElementsAre("1:a", "2!b\r")); }

TEST(Lines, EmptyFileHasNone) { EXPECT_THAT(linesOf(""), ElementsAre()); }

TEST(Lines, OfEveryLengthAroundTheBufferComeWhole) {
  for (const std::size_t length : {131071U, 131072U, 262142U, 262143U, 262144U, 262145U, 600000U}) {
    const std::string line(length, 'x');
    EXPECT_THAT(linesOf("a\n" + line + "\n" + line), ElementsAre("1:a", "2:" + line, "3!" + line))
        << length;
  }
}

TEST(Lines, OfAPipeComeAsTheyAreWritten) {
  const TempDir directory;
  ASSERT_EQ(mkfifo(directory.file("f").c_str(), 0600), 0);
  std::thread writing([&] {
    const int pipe = open(directory.file("f").c_str(), O_WRONLY | O_CLOEXEC);
    for (const char* piece : {"ab", "c\nd", "e\n"}) {
      EXPECT_GT(write(pipe, piece, std::char_traits<char>::length(piece)), 0);
    }
    close(pipe);
  });
  LineReader reader(directory.file("f"));
  EXPECT_EQ(reader.sizeBytes(), 0U);
  EXPECT_THAT(linesOf(reader), ElementsAre("1:abc", "2:de"));
  writing.join();
}

TEST(Utf8, ValidSequencesOfEveryLength) {
  for (const char* text :
       {"a", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xee\x80\x80", "\xef\xbf\xbf",
        "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"}) {
    EXPECT_EQ(utf8SequenceLength(text), std::string(text).size());
    EXPECT_EQ(findInvalidUtf8(text), std::string::npos);
  }
}

TEST(Utf8, InvalidSequencesHaveNoLength) {
  for (const char* text : {"\x80", "\xbf", "\xc0\x80", "\xc1\xbf", "\xc2", "\xc2z", "\xe0\x9f\xbf",
                           "\xed\xa0\x80", "\xe1\x80", "\xe1\x80z", "\xf0\x8f\xbf\xbf",
                           "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xf0\x90\x80", "\xff"}) {
    EXPECT_EQ(utf8SequenceLength(text), 0U);
    EXPECT_EQ(findInvalidUtf8(text), 0U);
  }
}

TEST(Utf8, FirstInvalidByteIsFoundAtEveryPlaceOfAWord) {
  for (std::size_t before = 0; before < 20; ++before) {
    const std::string text = std::string(before, 'a') + "\xfe" + std::string(20, 'b');
    EXPECT_EQ(findInvalidUtf8(text), before);
  }
}

std::string replaced(std::string text) {
  const SurrogateResult result = replaceLoneSurrogates(text.data(), text.size());
  text.resize(result.size);
  return result.isFaulty ? text + " at " + std::to_string(result.faultAt) : text;
}

TEST(Surrogates, EscapesThatAreCutStayForTheParser) {
  for (const char* text : {"\\", "\\u", "\\udc8", "a\\\\", "\\ud83d"}) {
    const std::string given(text);
    EXPECT_EQ(replaced(given), given == "\\ud83d" ? "       at 0" : given);
  }
}

TEST(Surrogates, FaultIsToldWhereItStoodInTheLine) {
  EXPECT_EQ(replaced(R"(\udc80\ud800x)"), "\x80      x at 6");
}

TEST(Surrogates, WrongDigitsStayForTheParser) {
  EXPECT_EQ(replaced(R"(\udc8g \u+c80)"), R"(\udc8g \u+c80)");
}

TEST(JsonLine, HoldsEachValueBeforeWhatItHolds) {
  std::string text = R"({"a":[1,{"b":null}],"c":"x"})";
  JsonLine line;
  const JsonFaults faults = line.parse(text.data(), text.size());
  EXPECT_EQ(faults.syntax + faults.encoding, "");
  EXPECT_EQ(line.node(0).count, 2U);
  EXPECT_EQ(line.node(1).name, "a");
  EXPECT_EQ(line.node(1).end, 5U);
  EXPECT_EQ(line.node(2).text, "1");
  EXPECT_EQ(line.node(4).kind, JsonLine::Kind::Null);
  EXPECT_EQ(line.path(4), "a[1].b");
  EXPECT_EQ(line.node(5).text, "x");
  EXPECT_EQ(line.path(5), "c");
}

TEST(JsonLine, NumbersKeepTheirDigits) {
  for (const char* digits : {"-0", "1.50", "1E+5", "123456789012345678901234567890", "0.1e-7"}) {
    std::string text = std::string("{\"n\":") + digits + ",\"m\":1}";
    JsonLine line;
    EXPECT_EQ(line.parse(text.data(), text.size()).syntax, "");
    EXPECT_EQ(line.node(1).text, digits);
    EXPECT_EQ(line.node(2).name, "m");
  }
}

TEST(JsonText, SetsCommasBetweenValuesAndMembersOnly) {
  std::string out;
  JsonText json(out);
  json.beginObject();
  json.name("a");
  json.beginList();
  json.integer(-1);
  json.beginList();
  json.endList();
  json.null();
  json.endList();
  json.numberMember("absent", 0);
  json.textMember("absent", "");
  json.flagMember("absent", false);
  json.rawMember("absent", "");
  json.numberMember("b", 2);
  json.textMember("c", "t");
  json.flagMember("d", true);
  json.rawMember("e", "{}");
  json.endObject();
  EXPECT_EQ(out, R"({"a":[-1,[],null],"b":2,"c":"t","d":true,"e":{}})");
}

}  // namespace
}  // namespace qumetra::test
