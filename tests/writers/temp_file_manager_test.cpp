// Spilled tables: what stands in the temp files, and how they are joined into rows.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/handles.h"
#include "tests/writers/spill_test_support.h"
#include "writers/textwriter_plugin/row_sink.h"

namespace {

namespace fs = std::filesystem;
using qumetra::test::flushed;
using qumetra::test::LogCapture;
using qumetra::test::pushAll;
using qumetra::test::readFile;
using qumetra::test::recordOf;
using qumetra::test::recordsOf;
using qumetra::test::SpillDir;

class TempFileManagerTest : public ::testing::Test {
 protected:
  static pwr::EntityHandle entity(std::uint64_t id) { return {id, {"e", "e", ""}, nullptr}; }

  LogCapture m_log;
  SpillDir m_dir;
};

TEST_F(TempFileManagerTest, FilesAreNamedByACounterThatStartsAtOne) {
  TempFileManager::s_nextTempFileId = 1;
  const TempFileManager first(1);
  const TempFileManager second(1);
  EXPECT_EQ(first.m_path, m_dir.path() + "_qmet_1.tmp");
  EXPECT_EQ(first.m_basePath, m_dir.path() + "_qmet_1");
  EXPECT_EQ(second.m_path, m_dir.path() + "_qmet_2.tmp");
  EXPECT_EQ(TempFileManager::s_nextTempFileId, 3U);
  EXPECT_TRUE(fs::exists(first.m_path));
}

TEST_F(TempFileManagerTest, FreshManagerHasColumnsOfNoWidth) {
  const TempFileManager manager(3);
  EXPECT_EQ(manager.m_columnWidths, std::vector<std::int32_t>({0, 0, 0}));
  EXPECT_EQ(manager.m_title, "");
  EXPECT_EQ(manager.m_pageCount, 1U);
  EXPECT_EQ(manager.m_rowCounter, 0U);
  EXPECT_EQ(manager.m_cellCounter, 0U);
  EXPECT_FALSE(manager.m_echo);
  EXPECT_TRUE(manager.hasOpenFile());
}

TEST_F(TempFileManagerTest, CountBelowOneGivesNoColumns) {
  EXPECT_TRUE(TempFileManager(0).m_columnWidths.empty());
  EXPECT_TRUE(TempFileManager(-5).m_columnWidths.empty());
}

TEST_F(TempFileManagerTest, DestructorUnlinksMainAndEntityFiles) {
  const pwr::EntityHandle core = entity(7);
  {
    TempFileManager manager(1);
    manager.pushString(nullptr, "a", 0);
    manager.pushString(&core, "b", 0);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_dir.path()), {}), 2);
  }
  EXPECT_TRUE(fs::is_empty(m_dir.path()));
}

TEST_F(TempFileManagerTest, DestructorUnlinksFilesOpenForReading) {
  {
    TempFileManager manager(1);
    flushed(manager);
  }
  EXPECT_TRUE(fs::is_empty(m_dir.path()));
}

TEST_F(TempFileManagerTest, RecordStandsInTheFileBeforePushReturns) {
  TempFileManager manager(1);
  EXPECT_EQ(manager.pushString(nullptr, "abc", 0), 0);
  EXPECT_EQ(readFile(manager.m_path).substr(0, 7), recordOf("abc"));
}

TEST_F(TempFileManagerTest, EmptyTextIsFourZeroBytes) {
  TempFileManager manager(1);
  EXPECT_EQ(manager.pushString(nullptr, "", 0), 0);
  flushed(manager);
  EXPECT_EQ(readFile(manager.m_path), std::string(4, '\0'));
}

TEST_F(TempFileManagerTest, FileIsCutToItsRecordsWhenItIsRead) {
  TempFileManager manager(1);
  pushAll(manager, {"one", "", "three"}, 1);
  EXPECT_GT(fs::file_size(manager.m_path), 20U);
  flushed(manager);
  EXPECT_EQ(readFile(manager.m_path), recordsOf({"one", "", "three"}));
}

TEST_F(TempFileManagerTest, KilledProcessLosesNoRecordItHasTaken) {
  TempFileManager::s_nextTempFileId = 1;
  // More than fits the first windows.
  std::vector<std::string> texts(40000, "cell ");
  for (std::size_t i = 0; i < texts.size(); ++i) {
    texts[i] += std::to_string(i);
  }
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    TempFileManager manager(1);
    pushAll(manager, texts, 1);
    ::kill(::getpid(), SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  const std::string expected = recordsOf(texts);
  const std::string bytes = readFile(m_dir.path() + "_qmet_1.tmp");
  ASSERT_GE(bytes.size(), expected.size());
  EXPECT_TRUE(bytes.compare(0, expected.size(), expected) == 0);
  // An unclean end leaves the rest of the reserved space behind, as zero bytes.
  EXPECT_EQ(bytes.find_first_not_of('\0', expected.size()), std::string::npos);
}

TEST_F(TempFileManagerTest, EntityFileIsNamedByTheEntitysId) {
  const pwr::EntityHandle core = entity(18446744073709551615U);
  TempFileManager manager(1);
  EXPECT_EQ(manager.pushString(&core, "x", 0), 0);
  const std::string path = manager.m_basePath + "___18446744073709551615.tmp";
  EXPECT_EQ(readFile(path).substr(0, 5), recordOf("x"));
}

TEST_F(TempFileManagerTest, EntityFilesFollowTheMainFileInTheOrderOfIds) {
  const pwr::EntityHandle late = entity(9);
  const pwr::EntityHandle early = entity(3);
  TempFileManager manager(1);
  manager.pushString(&late, "nine", 0);
  manager.pushString(&early, "three", 0);
  manager.pushString(nullptr, "main", 0);
  EXPECT_EQ(flushed(manager).second, "\nmain \nthree\nnine \n\n");
}

TEST_F(TempFileManagerTest, RowGoesOnFromTheMainFileIntoAnEntityFile) {
  const pwr::EntityHandle core = entity(9);
  TempFileManager manager(2);
  manager.pushString(nullptr, "a", 0);
  manager.pushString(&core, "b", 1);
  EXPECT_EQ(flushed(manager).second, "\na, b\n\n");
}

TEST_F(TempFileManagerTest, CellsArePaddedAndTheLastOfARowToo) {
  TempFileManager manager(2);
  manager.m_title = "Title";
  pushAll(manager, {"name", "value", "--", "-", "core 10", "1"}, 2);
  EXPECT_EQ(flushed(manager), std::make_pair(0, std::string("Title\n"
                                                            "name   , value\n"
                                                            "--     , -    \n"
                                                            "core 10, 1    \n"
                                                            "\n")));
}

TEST_F(TempFileManagerTest, WidthFollowsTheLongestTextOfAColumn) {
  TempFileManager manager(2);
  pushAll(manager, {"header", "h", "-", "----------", "x", "y"}, 2);
  EXPECT_EQ(manager.m_columnWidths, std::vector<std::int32_t>({6, 10}));
}

TEST_F(TempFileManagerTest, EmptyRecordIsPaddedToTheColumn) {
  TempFileManager manager(1);
  pushAll(manager, {"abc", ""}, 1);
  EXPECT_EQ(flushed(manager).second, "\nabc\n   \n\n");
}

TEST_F(TempFileManagerTest, NothingIsQuotedOrEscaped) {
  TempFileManager manager(2);
  pushAll(manager, {"a, \"b\"\nc", "d"}, 2);
  EXPECT_EQ(flushed(manager).second, "\na, \"b\"\nc, d\n\n");
}

TEST_F(TempFileManagerTest, TableWithoutCellsIsItsTitleAndAnEmptyLine) {
  TempFileManager manager(2);
  manager.m_title = "Empty";
  EXPECT_EQ(flushed(manager), std::make_pair(0, std::string("Empty\n\n")));
}

TEST_F(TempFileManagerTest, DelimiterIsTheCallers) {
  TempFileManager manager(3);
  pushAll(manager, {"a", "b", "c"}, 3);
  EXPECT_EQ(flushed(manager, "|").second, "\na|b|c\n\n");
}

TEST_F(TempFileManagerTest, UnfinishedRowStaysOpen) {
  TempFileManager manager(2);
  pushAll(manager, {"a", "b", "c"}, 2);
  EXPECT_EQ(flushed(manager).second, "\na, b\nc, \n");
}

TEST_F(TempFileManagerTest, RecordsAroundTheReadBuffersSizeComeWhole) {
  for (const std::size_t size : {251U, 252U, 253U, 255U, 256U, 257U, 508U, 509U, 5000U}) {
    TempFileManager manager(1);
    const std::string text(size, 'x');
    pushAll(manager, {"before", text, "after"}, 1);
    const std::string pad(size - 6, ' ');
    const std::string pad2(size - 5, ' ');
    EXPECT_EQ(flushed(manager),
              std::make_pair(0, "\nbefore" + pad + "\n" + text + "\nafter" + pad2 + "\n\n"))
        << size;
  }
}

TEST_F(TempFileManagerTest, RecordsSplitAcrossReadsComeWholeAndInOrder) {
  // Sizes without a common factor with the buffer's: splits fall into lengths and texts alike.
  std::vector<std::string> texts;
  std::string expected = "\n";
  for (std::size_t i = 0; i < 2000; ++i) {
    texts.push_back(std::to_string(i) + std::string(i % 37, 'x'));
    texts.back().resize(40, '.');
    texts.push_back(std::string(i % 3, 'y'));
    expected += texts[2 * i] + "|" + texts[2 * i + 1] + std::string(2 - i % 3, ' ') + "\n";
  }
  TempFileManager manager(2);
  pushAll(manager, texts, 2);
  EXPECT_EQ(flushed(manager, "|"), std::make_pair(0, expected + "\n"));
}

TEST_F(TempFileManagerTest, CellLargerThanABlockOfTheReportComesWhole) {
  TempFileManager manager(2);
  const std::string text(3 * RowSink::kBlockSize + 5, 'x');
  pushAll(manager, {"a", "b", text, "c"}, 2);
  EXPECT_EQ(flushed(manager).second,
            "\na" + std::string(text.size() - 1, ' ') + ", b\n" + text + ", c\n\n");
}

TEST_F(TempFileManagerTest, SecondFlushWritesTheTableAgain) {
  TempFileManager manager(1);
  pushAll(manager, {"abc"}, 1);
  const auto first = flushed(manager);
  EXPECT_EQ(flushed(manager), first);
  EXPECT_EQ(first.second, "\nabc\n\n");
}

TEST_F(TempFileManagerTest, CellAfterAFlushIsNotTaken) {
  TempFileManager manager(1);
  pushAll(manager, {"abc"}, 1);
  flushed(manager);
  EXPECT_EQ(manager.pushString(nullptr, "longer", 0), 1);
  EXPECT_EQ(flushed(manager).second, "\nabc\n\n");
}

TEST_F(TempFileManagerTest, CellOfAColumnThatIsNotThereIsStoredWithoutWidth) {
  TempFileManager manager(2);
  EXPECT_EQ(manager.pushString(nullptr, "a", 0), 0);
  EXPECT_EQ(manager.pushString(nullptr, "b", 1), 0);
  EXPECT_EQ(manager.pushString(nullptr, "more", 2), 0);
  EXPECT_EQ(manager.m_columnWidths, std::vector<std::int32_t>({1, 1}));
  EXPECT_EQ(flushed(manager).second, "\na, b\nmore, \n");
}

TEST_F(TempFileManagerTest, CellsOfATableWithoutColumnsStandInOneRow) {
  TempFileManager manager(0);
  EXPECT_EQ(manager.pushString(nullptr, "a", 0), 0);
  EXPECT_EQ(manager.pushString(nullptr, "b", 1), 0);
  EXPECT_EQ(flushed(manager), std::make_pair(0, std::string("\na, b, \n")));
}

TEST_F(TempFileManagerTest, EchoGivesTheSameBytesToTheStandardOutput) {
  TempFileManager manager(2);
  manager.m_title = "Title";
  manager.m_echo = true;
  pushAll(manager, {"a", "b", "ccc", "d"}, 2);
  ::testing::internal::CaptureStdout();
  const std::string report = flushed(manager).second;
  const std::string echoed = ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(report, "Title\na  , b\nccc, d\n\n");
  EXPECT_EQ(echoed, report);
}

TEST_F(TempFileManagerTest, WithoutEchoTheStandardOutputStaysEmpty) {
  TempFileManager manager(1);
  pushAll(manager, {"a"}, 1);
  ::testing::internal::CaptureStdout();
  flushed(manager);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST_F(TempFileManagerTest, WorkingWellSaysNothing) {
  TempFileManager manager(1);
  pushAll(manager, {"a"}, 1);
  flushed(manager);
  EXPECT_TRUE(m_log.errors().empty());
  EXPECT_TRUE(m_log.warnings().empty());
}

}  // namespace
