#include "client/src/common/line_reader.h"

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace pwr {
namespace {

using qumetra::test::LogCapture;
using qumetra::test::TempDir;
using qumetra::test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Pair;

struct Close {
  void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, Close>;

constexpr const char* kTooLong = "WARNING: line too long?!\n";
constexpr const char* kNullFile =
    "WARNING: NULL fp in client/src/common/line_reader.*:[1-9][0-9]*!\n";

class LineReaderTest : public testing::Test {
 protected:
  /// An open file that holds `text`.
  File fileOf(const std::string& text) {
    writeFile(m_dir.file("text"), text);
    return File(std::fopen(m_dir.file("text").c_str(), "r"));
  }

  LogCapture m_log;
  TempDir m_dir;
  LineReader m_reader;
  std::vector<std::string> m_lines;
};

TEST_F(LineReaderTest, LinesOfANamedFileAreNotTrimmedAndEmptyOnesAreDropped) {
  writeFile(m_dir.file("text"), " a \n\n\tb\r\n \nlast");
  EXPECT_EQ(m_reader.get_all_lines(m_dir.file("text"), m_lines, true), 0);
  EXPECT_THAT(m_lines, ElementsAre(" a ", "\tb\r", " ", "last"));
}

TEST_F(LineReaderTest, LinesGoToADequeAsWell) {
  writeFile(m_dir.file("text"), "a\nb\n");
  std::deque<std::string> lines{"old"};
  EXPECT_EQ(m_reader.get_all_lines(m_dir.file("text"), lines, true), 0);
  EXPECT_THAT(lines, ElementsAre("old", "a", "b"));
  EXPECT_EQ(m_reader.get_all_lines(fileOf("c").get(), lines), 0);
  EXPECT_THAT(lines, ElementsAre("old", "a", "b", "c"));
}

TEST_F(LineReaderTest, ANamedFileThatDoesNotOpenIsReported) {
  EXPECT_EQ(m_reader.get_all_lines("/no/file", m_lines, true), -1);
  EXPECT_EQ(m_log.streamedErrors(), "1ERROR: could NOT open file /no/file!\n");
  EXPECT_THAT(m_lines, IsEmpty());
}

TEST_F(LineReaderTest, AtVerbosityZeroTheReportGoesToTheQuietLog) {
  m_log.environment().verbosity = PluginEnvironment::kQuiet;
  EXPECT_EQ(m_reader.get_all_lines("/no/file", m_lines, true), -1);
  EXPECT_EQ(m_log.quiet(), "could NOT open file /no/file!\n");
}

TEST_F(LineReaderTest, WithoutReportANamedFileThatDoesNotOpenIsSilent) {
  EXPECT_EQ(m_reader.get_all_lines("/no/file", m_lines, false), -1);
  EXPECT_EQ(m_log.streamedErrors() + m_log.quiet(), "");
}

TEST_F(LineReaderTest, ADirectoryGivesNoLines) {
  EXPECT_EQ(m_reader.get_all_lines(m_dir.path().string(), m_lines, true), -1);
  EXPECT_THAT(m_lines, IsEmpty());
}

TEST_F(LineReaderTest, LinesOfAnOpenFileAreTrimmedAndEmptyOnesKept) {
  EXPECT_EQ(m_reader.get_all_lines(fileOf(" a \r\n\n \t\nlast ").get(), m_lines), 0);
  EXPECT_THAT(m_lines, ElementsAre("a", "", "", "last"));
}

TEST_F(LineReaderTest, LongLinesOfAnOpenFileAreJoinedFromTheirPieces) {
  std::string text;
  for (const std::size_t length : {1021U, 1022U, 1023U, 1024U, 1025U, 5000U}) {
    text += std::string(length, 'x') + "\n";
  }
  EXPECT_EQ(m_reader.get_all_lines(fileOf(text).get(), m_lines), 0);
  std::vector<std::size_t> lengths;
  for (const std::string& line : m_lines) {
    lengths.push_back(line.size());
  }
  EXPECT_THAT(lengths, ElementsAre(1021, 1022, 1023, 1024, 1025, 5000));
}

TEST_F(LineReaderTest, AllLinesOfANullFileAreAWarning) {
  EXPECT_EQ(m_reader.get_all_lines(nullptr, m_lines), -1);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, MatchesRegex(kNullFile))));
}

TEST_F(LineReaderTest, AFileThatCannotBeReadIsAFailure) {
  const File file(std::fopen(m_dir.file("text").c_str(), "w"));
  std::string line = "old";
  EXPECT_EQ(m_reader.get_all_lines(file.get(), m_lines), -1);
  EXPECT_EQ(m_reader.getline(file.get(), line, true), -1);
  EXPECT_EQ(line, "old");
}

TEST_F(LineReaderTest, GetlineGivesTheLengthOfALine) {
  const File file = fileOf(" ab \n\nc");
  std::string line;
  EXPECT_EQ(m_reader.getline(file.get(), line, true), 2);
  EXPECT_EQ(line, "ab");
  EXPECT_EQ(m_reader.getline(file.get(), line, true), 0);
  EXPECT_EQ(line, "");
  EXPECT_EQ(m_reader.getline(file.get(), line, true), 1);
  EXPECT_EQ(m_reader.getline(file.get(), line, true), -1);
  EXPECT_EQ(line, "c");
}

TEST_F(LineReaderTest, GetlineKeepsTheLineEndUntilItIsTrimmed) {
  const File file = fileOf(" ab \r\nc");
  std::string line;
  EXPECT_EQ(m_reader.getline(file.get(), line, false), 6);
  EXPECT_EQ(line, " ab \r\n");
}

TEST_F(LineReaderTest, GetlineOfANullFileIsAWarning) {
  std::string line = "old";
  EXPECT_EQ(m_reader.getline(nullptr, line, true), -1);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, MatchesRegex(kNullFile))));
  EXPECT_EQ(line, "old");
}

TEST_F(LineReaderTest, GetlineTakesAPieceOf1023Characters) {
  const File file = fileOf(std::string(1022, 'x') + "\n");
  std::string line;
  EXPECT_EQ(m_reader.getline(file.get(), line, true), 1022);
  EXPECT_THAT(m_log.warnings(), IsEmpty());
}

TEST_F(LineReaderTest, GetlineWarnsOfAPieceOf1024Characters) {
  const File file = fileOf(std::string(1023, 'x') + "\nnext\n");
  std::string line = "old";
  EXPECT_EQ(m_reader.getline(file.get(), line, true), -1);
  EXPECT_EQ(line, "old");
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, kTooLong)));
  EXPECT_EQ(m_reader.getline(file.get(), line, true), 4);
  EXPECT_EQ(line, "next");
}

TEST_F(LineReaderTest, GetlineGoesOnInsideALineThatWasTooLong) {
  const File file = fileOf(std::string(1024, 'x') + "rest\nnext\n");
  std::string line;
  EXPECT_EQ(m_reader.getline(file.get(), line, true), -1);
  EXPECT_EQ(m_reader.getline(file.get(), line, true), 4);
  EXPECT_EQ(line, "rest");
  EXPECT_EQ(m_reader.getline(file.get(), line, true), 4);
  EXPECT_EQ(line, "next");
}

TEST_F(LineReaderTest, GetlineWarnsOfEveryFullPieceOfALine) {
  const File file = fileOf(std::string(3000, 'x') + "\n");
  std::string line;
  EXPECT_EQ(m_reader.getline(file.get(), line, true), -1);
  EXPECT_EQ(m_reader.getline(file.get(), line, true), -1);
  EXPECT_EQ(m_reader.getline(file.get(), line, true), 3000 - 2 * 1024);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, kTooLong), Pair(2, kTooLong)));
}

TEST_F(LineReaderTest, ZeroBytesInAFileDoNoHarm) {
  const File file = fileOf(std::string("a\0b\n\0\n", 6) + std::string(2000, '\0'));
  EXPECT_EQ(m_reader.get_all_lines(file.get(), m_lines), 0);
  std::rewind(file.get());
  std::string line;
  while (m_reader.getline(file.get(), line, true) >= 0) {
    EXPECT_LE(line.size(), 1U);
  }
}

TEST_F(LineReaderTest, TrimRemovesBlanksTabsReturnsAndNewlinesFromBothEnds) {
  std::string line = "\r\n\t a b \t\n";
  m_reader.trim(line);
  EXPECT_EQ(line, "a b");
  const std::string constant = " \va\f ";
  EXPECT_EQ(m_reader.trim(constant), "\va\f");
  EXPECT_EQ(constant, " \va\f ");
}

TEST_F(LineReaderTest, ALineOfBlanksOnlyBecomesEmpty) {
  std::string line = " \t\r\n";
  m_reader.trim(line);
  EXPECT_EQ(line, "");
  m_reader.trim(line);
  EXPECT_EQ(line, "");
}

TEST_F(LineReaderTest, StripRemovesEveryOccurrence) {
  std::string line = "\"a\"b\"";
  m_reader.strip(line, '"');
  EXPECT_EQ(line, "ab");
}

}  // namespace
}  // namespace pwr
