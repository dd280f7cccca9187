// The byte store when the disk refuses: what is told, what is returned, what is kept.
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/src/common/backing_store.h"
#include "tests/common/store_test_support.h"
#include "tests/support/disk_faults.h"
#include "tests/support/log_capture.h"
#include "tests/support/standard_error.h"

namespace {

using pwr::QMExtensibleBackingStore;
using qumetra::test::contents;
using qumetra::test::FullDisk;
using qumetra::test::LogCapture;
using qumetra::test::peek;
using qumetra::test::read;
using qumetra::test::standardErrorOf;
using qumetra::test::write;
using testing::ElementsAre;
using testing::MatchesRegex;
using testing::Pair;

// The line break inside and the digits in front belong to the texts.
constexpr const char* kWriteError =
    "2WARNING: write error while flushing to disk!\n: errnum=27: File too large\n";
constexpr const char* kReadError = "2WARNING: read error: errnum=5: Input/output error\n";
constexpr const char* kSeekError = "2WARNING: seekg error: errnum=9: Bad file descriptor\n";
constexpr const char* kFlushFailed = "ERROR flushing dirty buffer while rewinding!\n";
constexpr const char* kResetFailed = "WARNING: WARNING: couldn't reset buffer for reading!\n";

/// Closes the store's file behind its back.
void closeFileOf(const QMExtensibleBackingStore& store) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry.path(), gone) == store.path()) {
      ::close(std::stoi(entry.path().filename()));
      return;
    }
  }
  FAIL() << "no descriptor for " << store.path();
}

class BackingStoreFailures : public ::testing::Test {
 protected:
  /// All bytes are on disk and the buffer holds the first four.
  void storeTwelveBytes() {
    write(m_store, "0123456789ab");
    m_store.resetForRead();
  }
  /// What stands behind the first four bytes is lost.
  void cutFile() { std::filesystem::resize_file(m_store.path(), 4); }

  qumetra::test::TempArea m_area;
  LogCapture m_log;
  QMExtensibleBackingStore m_store{4};
};

TEST_F(BackingStoreFailures, WriteToAFullDiskFailsAndSaysWhy) {
  const FullDisk full(4);
  EXPECT_EQ(write(m_store, "0123456789"), -1);
  EXPECT_EQ(m_log.streamedWarnings(), kWriteError);
}

TEST_F(BackingStoreFailures, WriteGoesOnWhenTheDiskHasRoomAgain) {
  {
    const FullDisk full(4);
    EXPECT_EQ(write(m_store, "0123456789"), -1);
  }
  // Eight bytes were taken before the disk was full.
  EXPECT_EQ(m_store.size(), 8U);
  EXPECT_EQ(write(m_store, "89"), 2);
  EXPECT_EQ(contents(m_store), "0123456789");
}

TEST_F(BackingStoreFailures, QuietLevelGetsTheBareText) {
  const LogCapture quiet(PluginEnvironment::kErrors);
  const FullDisk full(0);
  EXPECT_EQ(write(m_store, "01234"), -1);
  EXPECT_EQ(quiet.streamedWarnings(), "");
  EXPECT_EQ(quiet.quiet(), "write error while flushing to disk!\n: errnum=27: File too large\n");
}

TEST_F(BackingStoreFailures, ResetForReadThatCannotFlushWarnsWithADoubledWord) {
  write(m_store, "0123");
  const FullDisk full(0);
  EXPECT_EQ(standardErrorOf([&] { m_store.resetForRead(); }), kFlushFailed);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, kResetFailed)));
}

TEST_F(BackingStoreFailures, ResetForReadBackThatCannotFlushWarnsWithADoubledWord) {
  write(m_store, "0123");
  const FullDisk full(0);
  EXPECT_EQ(standardErrorOf([&] { m_store.resetForReadBack(); }), kFlushFailed);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, kResetFailed)));
}

TEST_F(BackingStoreFailures, ResetStaysSilentBelowTheLevelOfWarnings) {
  const LogCapture quiet(PluginEnvironment::kErrors);
  write(m_store, "0123");
  const FullDisk full(0);
  standardErrorOf([&] { m_store.resetForRead(); });
  EXPECT_TRUE(quiet.warnings().empty());
}

TEST_F(BackingStoreFailures, ReadThatCannotFlushFails) {
  write(m_store, "01234567");
  const FullDisk full(0);
  std::string bytes;
  EXPECT_EQ(standardErrorOf([&] { bytes = read(m_store, 4); }), kFlushFailed);
  EXPECT_EQ(bytes, "<failed>");
}

TEST_F(BackingStoreFailures, UnwrittenBytesOutliveAFailedMove) {
  write(m_store, "01234567");
  standardErrorOf([&] {
    const FullDisk full(0);
    EXPECT_EQ(read(m_store, 4), "<failed>");
  });
  EXPECT_EQ(contents(m_store), "01234567");
}

TEST_F(BackingStoreFailures, ReadOfLostBytesFailsBehindThoseThatAreThere) {
  storeTwelveBytes();
  cutFile();
  EXPECT_EQ(read(m_store, 8), "<failed>");
  EXPECT_EQ(m_log.streamedWarnings(), kReadError);
}

TEST_F(BackingStoreFailures, FailedReadLeavesTheHeadWhereItHappened) {
  storeTwelveBytes();
  cutFile();
  EXPECT_EQ(read(m_store, 8), "<failed>");
  qumetra::test::writeFile(m_store.path(), "0123456789ab");
  EXPECT_EQ(read(m_store, 8), "456789ab");
}

TEST_F(BackingStoreFailures, PeekReturnsWhatItHasWhenItCannotGoOn) {
  storeTwelveBytes();
  cutFile();
  EXPECT_EQ(peek(m_store, 8), "0123");
  EXPECT_EQ(read(m_store, 4), "0123");
}

TEST_F(BackingStoreFailures, PeekThatCannotBeginFails) {
  storeTwelveBytes();
  m_store.write(nullptr, 0);  // Moves the buffer to the end.
  std::filesystem::resize_file(m_store.path(), 0);
  EXPECT_EQ(peek(m_store, 4), "<failed>");
  EXPECT_EQ(m_log.streamedWarnings(), kReadError);
}

TEST_F(BackingStoreFailures, ReadBackOfLostBytesFails) {
  storeTwelveBytes();
  m_store.resetForReadBack();
  std::filesystem::resize_file(m_store.path(), 6);
  std::string bytes(8, '.');
  EXPECT_EQ(m_store.readBack(bytes.data(), 8), -1);
  EXPECT_EQ(bytes, "....89ab");
}

TEST_F(BackingStoreFailures, BytesOfAFailedLoadAreNeverGivenOut) {
  storeTwelveBytes();
  m_store.resetForReadBack();
  cutFile();
  std::string bytes(8, '.');
  EXPECT_EQ(m_store.readBack(bytes.data(), 8), -1);
  EXPECT_EQ(m_store.readBack(bytes.data(), 8), -1);
}

TEST_F(BackingStoreFailures, LostFileIsASeekError) {
  storeTwelveBytes();
  closeFileOf(m_store);
  EXPECT_EQ(read(m_store, 8), "<failed>");
  EXPECT_EQ(m_log.streamedWarnings(), kSeekError);
}

TEST_F(BackingStoreFailures, LostFileIsASeekErrorForAFlushToo) {
  write(m_store, "0123");
  closeFileOf(m_store);
  EXPECT_EQ(write(m_store, "4"), -1);
  EXPECT_EQ(m_log.streamedWarnings(), kSeekError);
}

TEST_F(BackingStoreFailures, OverwriteThatCannotLoadTheNextBytesEnds) {
  storeTwelveBytes();
  m_store.writeToReadHead();
  cutFile();
  EXPECT_EQ(write(m_store, "abcdef"), -1);
}

TEST_F(BackingStoreFailures, OverwriteThatCannotFlushEnds) {
  storeTwelveBytes();
  m_store.writeToReadHead();
  const FullDisk full(0);
  std::int64_t result = 0;
  EXPECT_EQ(standardErrorOf([&] { result = write(m_store, "abcdef"); }), kFlushFailed);
  EXPECT_EQ(result, -1);
}

TEST_F(BackingStoreFailures, InsertThatCannotReadFails) {
  storeTwelveBytes();
  cutFile();
  EXPECT_EQ(m_store.insert(2, "abc", 3), -1);
}

TEST_F(BackingStoreFailures, InsertThatCannotWriteFails) {
  storeTwelveBytes();
  const FullDisk full(12);
  standardErrorOf([&] { EXPECT_EQ(m_store.insert(2, "abcdefgh", 8), -1); });
}

TEST_F(BackingStoreFailures, InsertThatFailsKeepsTheReadHead) {
  storeTwelveBytes();
  EXPECT_EQ(read(m_store, 1), "0");
  standardErrorOf([&] {
    const FullDisk full(12);
    EXPECT_EQ(m_store.insert(4, "abcdefgh", 8), -1);
  });
  EXPECT_EQ(read(m_store, 3), "123");
}

/// What the constructor throws.
std::string thrownByConstructor() {
  try {
    const QMExtensibleBackingStore store(4);
  } catch (const char* text) {
    return text;
  }
  return "nothing";
}

TEST(BackingStoreInit, WithoutAPlaceForItsFileLogsAnErrorAndThrowsAText) {
  const qumetra::test::NoPlaceForTempFiles nowhere;
  const LogCapture log;
  EXPECT_EQ(thrownByConstructor(), "Couldn't initialize buffer\n");
  EXPECT_EQ(log.streamedWarnings(), "2WARNING: open error: errnum=2: No such file or directory\n");
  EXPECT_THAT(log.errors(),
              ElementsAre(Pair(1, MatchesRegex("ERROR: Failed to initialize temporary file "
                                               "\\./_qmet_[0-9]+_[0-9]+: errnum=2: No such file "
                                               "or directory\n"))));
}

TEST(BackingStoreInit, SaysNothingOfAFailureAtTheQuietLevel) {
  const qumetra::test::NoPlaceForTempFiles nowhere;
  const LogCapture log(PluginEnvironment::kQuiet);
  EXPECT_EQ(thrownByConstructor(), "Couldn't initialize buffer\n");
  EXPECT_TRUE(log.errors().empty());
}

TEST(BackingStoreInit, CloneThrowsAsTheConstructorDoes) {
  const qumetra::test::TempArea area;
  const QMExtensibleBackingStore store(4);
  const qumetra::test::NoPlaceForTempFiles nowhere;
  const LogCapture log;
  EXPECT_THROW(std::unique_ptr<pwr::QMBufferProvider>(store.clone(4)), const char*);
}

}  // namespace
