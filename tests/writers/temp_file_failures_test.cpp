// Spilled tables when the system says no: what is logged, what is returned, what the report keeps.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "host/handles.h"
#include "tests/writers/spill_test_support.h"

namespace {

namespace fs = std::filesystem;
using qumetra::test::flushed;
using qumetra::test::LogCapture;
using qumetra::test::pushAll;
using qumetra::test::recordsOf;
using qumetra::test::SpillDir;
using Texts = qumetra::test::RecordingSink::Texts;

// The number that the failing calls below report.
int s_error = 0;
std::size_t s_largestBlock = 0;

bool failToOpen(std::FILE*& file, const std::string&, const char*) {
  file = nullptr;
  errno = s_error;
  return false;
}

bool failToReopen(std::FILE*& file, const std::string& path, const char* mode) {
  return mode[0] == 'w' ? SpillSystem::real().open(file, path, mode) : failToOpen(file, path, mode);
}

void* reallocateUpTo(void* block, std::size_t size) {
  return size > s_largestBlock ? nullptr : std::realloc(block, size);
}

SpillSystem systemWithFailingOpen(int error) {
  s_error = error;
  SpillSystem system = SpillSystem::real();
  system.open = &failToOpen;
  return system;
}

SpillSystem systemWithMemory(std::size_t largestBlock) {
  s_largestBlock = largestBlock;
  SpillSystem system = SpillSystem::real();
  system.reallocate = &reallocateUpTo;
  return system;
}

class TempFileFailure : public ::testing::Test {
 protected:
  /// Makes two managers that find no file, for `error`.
  void failTwice(int error) {
    const SpillSystem system = systemWithFailingOpen(error);
    TempFileManager::s_nextTempFileId = 1;
    const TempFileManager first(1, system);
    const TempFileManager second(1, system);
    EXPECT_FALSE(first.hasOpenFile());
    EXPECT_FALSE(second.hasOpenFile());
  }

  static pwr::EntityHandle entity(std::uint64_t id) { return {id, {"e", "e", ""}, nullptr}; }

  LogCapture m_log;
  SpillDir m_dir;
};

TEST_F(TempFileFailure, TooManyOpenFilesAreToldOnce) {
  failTwice(EMFILE);
  EXPECT_EQ(m_log.errors(),
            Texts({{1,
                    "Warning: Could not post process metric data: Too many open file handles. "
                    "Results may be incomplete for some metrics. Try post processing results with "
                    "only one -r option at a time. If the problem persists; try collecting fewer "
                    "metrics.\n"}}));
}

TEST_F(TempFileFailure, FullDiskIsToldOnce) {
  failTwice(ENOSPC);
  EXPECT_EQ(
      m_log.errors(),
      Texts({{1, "Warning: Could not generate result files. No space is left on the disk.\n"}}));
}

TEST_F(TempFileFailure, ReadOnlyDiskIsToldOnce) {
  failTwice(EROFS);
  EXPECT_EQ(
      m_log.errors(),
      Texts(
          {{1, "Warning: Could not generate result files. The file system is not writeable.\n"}}));
}

TEST_F(TempFileFailure, AnyOtherReasonIsToldEachTime) {
  failTwice(EACCES);
  const std::string start = "ERROR: Cannot create temp output file: " + m_dir.path() + "_qmet_";
  const std::string end = ".tmp. error: errnum=13: Permission denied\n";
  EXPECT_EQ(m_log.errors(), Texts({{1, start + "1" + end}, {1, start + "2" + end}}));
}

TEST_F(TempFileFailure, QuietHostHearsNothing) {
  m_log.environment().verbosity = 0;
  failTwice(EACCES);
  EXPECT_TRUE(m_log.errors().empty());
}

TEST_F(TempFileFailure, CounterAdvancesWithoutAFile) {
  failTwice(EACCES);
  EXPECT_EQ(TempFileManager::s_nextTempFileId, 3U);
}

TEST_F(TempFileFailure, ManagerWithoutFileTakesNoCell) {
  const SpillSystem system = systemWithFailingOpen(EACCES);
  TempFileManager manager(1, system);
  EXPECT_EQ(manager.pushString(nullptr, "abc", 0), 1);
  EXPECT_EQ(manager.m_columnWidths, std::vector<std::int32_t>({0}));
}

TEST_F(TempFileFailure, ManagerWithoutFileReportsTitleAndEmptyLineWithAWarning) {
  const SpillSystem system = systemWithFailingOpen(EACCES);
  TempFileManager manager(1, system);
  manager.m_title = "Lost";
  EXPECT_EQ(flushed(manager), std::make_pair(0, std::string("Lost\n\n")));
  EXPECT_EQ(m_log.warnings(),
            Texts({{2, "WARNING: Unable to open temp file: " + manager.m_path + "\n"}}));
}

TEST_F(TempFileFailure, ManagerWithoutFileLeavesAStrangersFileAlone) {
  TempFileManager::s_nextTempFileId = 1;
  const std::string path = m_dir.path() + "_qmet_1.tmp";
  qumetra::test::writeFile(path, recordsOf({"stale"}));
  {
    SpillSystem system = systemWithFailingOpen(EACCES);
    TempFileManager manager(1, system);
    system.open = SpillSystem::real().open;
    EXPECT_EQ(flushed(manager).second, "\n\n");
  }
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(TempFileFailure, EntityFileThatCannotBeOpenedIsAnErrorEachTime) {
  TempFileManager manager(1);
  const std::string path = manager.m_basePath + "___7.tmp";
  fs::create_directory(path);
  const pwr::EntityHandle core = entity(7);
  EXPECT_EQ(manager.pushString(&core, "x", 0), 1);
  EXPECT_EQ(manager.pushString(&core, "x", 0), 1);
  const std::string text =
      "ERROR: Cannot open temp output file: " + path + ", error: errnum=21: Is a directory\n";
  EXPECT_EQ(m_log.errors(), Texts({{1, text}, {1, text}}));
  EXPECT_TRUE(manager.m_entityFiles.empty());
}

TEST_F(TempFileFailure, EntityWhoseFileWasLostTakesNoCell) {
  SpillSystem system = SpillSystem::real();
  TempFileManager manager(1, system);
  const pwr::EntityHandle core = entity(7);
  EXPECT_EQ(manager.pushString(&core, "x", 0), 0);
  s_error = EMFILE;
  system.open = &failToReopen;
  flushed(manager);
  EXPECT_EQ(manager.pushString(&core, "y", 0), 1);
  EXPECT_EQ(manager.m_entityFiles.size(), 1U);
  EXPECT_TRUE(m_log.errors().empty());
}

TEST_F(TempFileFailure, FileThatCannotBeReopenedIsSkippedWithAWarning) {
  SpillSystem system = SpillSystem::real();
  s_error = EIO;
  system.open = &failToReopen;
  TempFileManager manager(1, system);
  pushAll(manager, {"abc"}, 1);
  EXPECT_EQ(flushed(manager), std::make_pair(0, std::string("\n\n")));
  EXPECT_EQ(m_log.warnings(),
            Texts({{2, "WARNING: Unable to open temp file: " + manager.m_path + "\n"}}));
}

TEST_F(TempFileFailure, FileThatCannotBeReopenedIsUnlinkedInTheEnd) {
  {
    SpillSystem system = SpillSystem::real();
    system.open = &failToReopen;
    TempFileManager manager(1, system);
    flushed(manager);
  }
  EXPECT_TRUE(fs::is_empty(m_dir.path()));
}

TEST_F(TempFileFailure, TextBeyondTheLengthFieldIsRefusedAndEndsTheTable) {
  TempFileManager manager(1);
  // Nothing is read of it, so it need not be there.
  EXPECT_EQ(manager.pushString(nullptr, std::string_view("x", std::size_t{1} << 31), 0), 1);
  EXPECT_EQ(manager.pushString(nullptr, "small", 0), 1);
  EXPECT_EQ(m_log.errors(), Texts({{1, "ERROR: Cannot create temp output file: " + manager.m_path +
                                           ". error: errnum=27: File too large\n"}}));
  EXPECT_EQ(flushed(manager).second, "\n\n");
}

TEST_F(TempFileFailure, NoReportToWriteToIsAFailure) {
  TempFileManager manager(1);
  EXPECT_EQ(manager.flush(nullptr, ", "), 1);
  EXPECT_TRUE(m_log.warnings().empty());
}

TEST_F(TempFileFailure, FailingWriteToTheReportIsNoticed) {
  TempFileManager manager(1);
  const std::string large(200000, 'x');
  pushAll(manager, {large}, 1);
  std::FILE* full = std::fopen("/dev/full", "w");
  ASSERT_NE(full, nullptr);
  EXPECT_EQ(manager.flush(full, ", "), 1);
  std::fclose(full);
}

TEST_F(TempFileFailure, NoMemoryForTheReadBufferWritesNothing) {
  const SpillSystem system = systemWithMemory(0);
  TempFileManager manager(1, system);
  pushAll(manager, {"abc"}, 1);
  EXPECT_EQ(flushed(manager), std::make_pair(1, std::string()));
  EXPECT_EQ(m_log.warnings(), Texts({{2, "WARNING: Failed to allocate buffer of size 256\n"}}));
}

TEST_F(TempFileFailure, NoMemoryForALargeRecordKeepsTheCellsBeforeIt) {
  const SpillSystem system = systemWithMemory(512);
  TempFileManager manager(1, system);
  manager.pushString(nullptr, "abc", 0);
  // Not a column of the table, so that "abc" is not padded to it.
  manager.pushString(nullptr, std::string(600, 'x'), 1);
  EXPECT_EQ(flushed(manager), std::make_pair(1, std::string("\nabc\n\n")));
  EXPECT_EQ(m_log.warnings(), Texts({{2, "WARNING: Failed to re-allocate buffer of size 1024\n"}}));
}

TEST_F(TempFileFailure, WarningsOfReadingShowByTheirTagToo) {
  m_log.environment().verbosity = 0;
  m_log.environment().enabledTags.add("text-writer-plugin");
  const SpillSystem system = systemWithMemory(0);
  TempFileManager manager(1, system);
  flushed(manager);
  EXPECT_EQ(m_log.warnings().size(), 1U);
}

TEST_F(TempFileFailure, ReadErrorIsAWarningAndTheNextFileIsStillRead) {
  TempFileManager manager(1);
  const pwr::EntityHandle core = entity(7);
  manager.pushString(nullptr, "main", 0);
  manager.pushString(&core, "core", 0);
  // A directory can be opened, but not read.
  fs::remove(manager.m_path);
  fs::create_directory(manager.m_path);
  EXPECT_EQ(flushed(manager), std::make_pair(1, std::string("\ncore\n\n")));
  EXPECT_EQ(m_log.warnings(),
            Texts({{2, "WARNING: Error reading file " + manager.m_path + ": 1\n"}}));
  fs::remove(manager.m_path);
}

TEST_F(TempFileFailure, FailedSeekIsAWarningAndEndsTheFile) {
  TempFileManager manager(1);
  manager.pushString(nullptr, "abc", 0);
  manager.pushString(nullptr, std::string(600, 'x'), 1);
  // A pipe in the place of the file can be read, but not be sought in.
  fs::remove(manager.m_path);
  ASSERT_EQ(::mkfifo(manager.m_path.c_str(), 0600), 0);
  const int pipe = ::open(manager.m_path.c_str(), O_RDWR);
  ASSERT_GE(pipe, 0);
  const std::string bytes = recordsOf({"abc", std::string(600, 'x')});
  ASSERT_EQ(::write(pipe, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  EXPECT_EQ(flushed(manager), std::make_pair(1, std::string("\nabc\n\n")));
  EXPECT_EQ(m_log.warnings(), Texts({{2, "WARNING: fseek failed\n"}}));
  ::close(pipe);
}

TEST_F(TempFileFailure, RecordCutOffAtTheFilesEndIsNotReadForever) {
  for (const std::uintmax_t size : {7U, 8U, 9U, 11U, 13U}) {
    TempFileManager manager(1);
    pushAll(manager, {"abc", "wxyz"}, 1);
    flushed(manager);
    fs::resize_file(manager.m_path, size);
    EXPECT_EQ(flushed(manager), std::make_pair(1, std::string("\nabc \n\n"))) << size;
  }
}

TEST_F(TempFileFailure, WildLengthInTheFileIsNotBelieved) {
  TempFileManager manager(1);
  pushAll(manager, {"abc", "wxyz"}, 1);
  flushed(manager);
  qumetra::test::writeFile(manager.m_path, recordsOf({"abc"}) + std::string(8, '\xff'));
  EXPECT_EQ(flushed(manager), std::make_pair(1, std::string("\nabc \n\n")));
}

}  // namespace
