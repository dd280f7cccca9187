#include "client/src/common/backing_store.h"

#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/common/store_test_support.h"
#include "tests/support/disk_faults.h"
#include "tests/support/log_capture.h"
#include "tests/support/sanitizers.h"

namespace {

using pwr::QMExtensibleBackingStore;
using qumetra::test::bytesOnDisk;
using qumetra::test::contents;
using qumetra::test::peek;
using qumetra::test::read;
using qumetra::test::write;

class BackingStore : public ::testing::Test {
 protected:
  void TearDown() override {
    EXPECT_TRUE(m_log.errors().empty());
    EXPECT_TRUE(m_log.warnings().empty());
    EXPECT_EQ(m_log.streamedWarnings(), "");
  }

  qumetra::test::TempArea m_area;
  qumetra::test::LogCapture m_log;
};

TEST_F(BackingStore, StartsEmpty) {
  QMExtensibleBackingStore store(16);
  EXPECT_EQ(store.size(), 0U);
  EXPECT_EQ(read(store, 8), "");
  EXPECT_EQ(peek(store, 8), "");
}

TEST_F(BackingStore, TempFileLivesAsLongAsTheStore) {
  std::string path;
  {
    const QMExtensibleBackingStore store(16);
    path = store.path();
    EXPECT_TRUE(std::filesystem::exists(path));
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(BackingStore, TempFileIsNamedByMarkerProcessAndNumber) {
  const QMExtensibleBackingStore store(16);
  EXPECT_THAT(store.path(), testing::MatchesRegex(m_area.spillPath() + "_qmet_" +
                                                  std::to_string(::getpid()) + "_[0-9]+"));
}

TEST_F(BackingStore, TwoStoresHaveTwoFiles) {
  const QMExtensibleBackingStore first(16);
  const QMExtensibleBackingStore second(16);
  EXPECT_NE(first.path(), second.path());
}

TEST_F(BackingStore, GivesBackWhatWasWritten) {
  QMExtensibleBackingStore store(16);
  EXPECT_EQ(write(store, "some bytes"), 10);
  EXPECT_EQ(store.size(), 10U);
  EXPECT_EQ(read(store, 10), "some bytes");
}

TEST_F(BackingStore, LimitOfZeroWorksLikeOne) {
  QMExtensibleBackingStore store(0);
  EXPECT_EQ(write(store, "some bytes"), 10);
  EXPECT_EQ(contents(store), "some bytes");
}

TEST_F(BackingStore, WritingNothingStoresNothing) {
  QMExtensibleBackingStore store(16);
  EXPECT_EQ(store.write(nullptr, 0), 0);
  EXPECT_EQ(store.size(), 0U);
}

TEST_F(BackingStore, ReadingNothingMovesNothing) {
  QMExtensibleBackingStore store(16);
  write(store, "bytes");
  EXPECT_EQ(store.read(nullptr, 0), 0);
  EXPECT_EQ(store.readBack(nullptr, 0), 0);
  EXPECT_EQ(read(store, 5), "bytes");
}

TEST_F(BackingStore, ShortSequenceLeavesTheFileEmptyUntilTheFirstMove) {
  QMExtensibleBackingStore store(16);
  write(store, "0123456789");
  EXPECT_EQ(bytesOnDisk(store), 0U);
  store.resetForRead();
  EXPECT_EQ(bytesOnDisk(store), 10U);
  EXPECT_EQ(read(store, 10), "0123456789");
}

TEST_F(BackingStore, FullBufferGoesToDiskWithTheNextByte) {
  QMExtensibleBackingStore store(8);
  write(store, "01234567");
  EXPECT_EQ(bytesOnDisk(store), 0U);
  write(store, "8");
  EXPECT_EQ(bytesOnDisk(store), 8U);
  EXPECT_EQ(contents(store), "012345678");
}

TEST_F(BackingStore, ReadBeyondTheEndReturnsWhatIsThereAndThenNothing) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  store.resetForRead();
  EXPECT_EQ(read(store, 99), "0123456789");
  EXPECT_EQ(read(store, 99), "");
}

TEST_F(BackingStore, ReadAcrossBufferEndsContinuesInOneCall) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789abcdef");
  store.resetForRead();
  EXPECT_EQ(read(store, 3), "012");
  EXPECT_EQ(read(store, 10), "3456789abc");
}

TEST_F(BackingStore, ReadHeadAtTheBufferEndReloads) {
  QMExtensibleBackingStore store(4);
  write(store, "01234567");
  store.resetForRead();
  EXPECT_EQ(read(store, 4), "0123");
  EXPECT_EQ(read(store, 1), "4");
}

TEST_F(BackingStore, WriteAfterResetForReadAppends) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  store.resetForRead();
  EXPECT_EQ(read(store, 2), "01");
  EXPECT_EQ(write(store, "abc"), 3);
  EXPECT_EQ(read(store, 11), "23456789abc");
}

TEST_F(BackingStore, WriteHeadMovesToTheReadHeadOnDemand) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  store.resetForRead();
  EXPECT_EQ(read(store, 2), "01");
  store.writeToReadHead();
  EXPECT_EQ(write(store, "abcdef"), 6);
  EXPECT_EQ(store.size(), 10U);
  EXPECT_EQ(contents(store), "01abcdef89");
}

TEST_F(BackingStore, WritePastTheEndFromTheMiddleExtends) {
  QMExtensibleBackingStore store(4);
  write(store, "012345");
  store.resetForRead();
  EXPECT_EQ(read(store, 4), "0123");
  store.writeToReadHead();
  EXPECT_EQ(write(store, "abcdefg"), 7);
  EXPECT_EQ(contents(store), "0123abcdefg");
}

TEST_F(BackingStore, AppendsBehindAFullWindowThatTheFileHoldsAlready) {
  QMExtensibleBackingStore store(4);
  write(store, "01234567");
  store.resetForReadBack();
  EXPECT_EQ(write(store, "abcdef"), 6);
  EXPECT_EQ(contents(store), "01234567abcdef");
}

TEST_F(BackingStore, PeekLeavesTheReadHead) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  store.resetForRead();
  EXPECT_EQ(read(store, 3), "012");
  EXPECT_EQ(peek(store, 6), "345678");
  EXPECT_EQ(peek(store, 99), "3456789");
  EXPECT_EQ(read(store, 99), "3456789");
}

TEST_F(BackingStore, PeekReachesAHeadInFrontOfTheBuffer) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  EXPECT_EQ(peek(store, 5), "01234");
}

TEST_F(BackingStore, PeekReachesAHeadBehindTheBufferEnd) {
  QMExtensibleBackingStore store(2);
  write(store, "0123456789");
  store.resetForRead();
  store.writeToReadHead();
  EXPECT_EQ(read(store, 6), "012345");
  EXPECT_EQ(write(store, "a"), 1);
  EXPECT_EQ(peek(store, 3), "678");
  EXPECT_EQ(contents(store), "a123456789");
}

TEST_F(BackingStore, PeekKeepsUnwrittenBytes) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  EXPECT_EQ(peek(store, 10), "0123456789");
  write(store, "ab");
  EXPECT_EQ(contents(store), "0123456789ab");
}

TEST_F(BackingStore, ReadBackGivesTheBytesBeforeTheHeadInTheirOrder) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  store.resetForReadBack();
  std::string bytes(6, '.');
  EXPECT_EQ(store.readBack(bytes.data(), 6), 6);
  EXPECT_EQ(bytes, "456789");
  EXPECT_EQ(store.readBack(bytes.data(), 2), 2);
  EXPECT_EQ(bytes, "236789");
}

TEST_F(BackingStore, ReadBackOfTooMuchIsRightAlignedAndLeavesTheLowEnd) {
  QMExtensibleBackingStore store(4);
  write(store, "01234567");
  store.resetForRead();
  EXPECT_EQ(read(store, 6), "012345");
  std::string bytes(9, '.');
  EXPECT_EQ(store.readBack(bytes.data(), 9), 6);
  EXPECT_EQ(bytes, "...012345");
  EXPECT_EQ(store.readBack(bytes.data(), 9), 0);
}

TEST_F(BackingStore, ReadGoesOnWhereReadBackStopped) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  store.resetForReadBack();
  std::string bytes(7, '.');
  store.readBack(bytes.data(), 7);
  EXPECT_EQ(read(store, 99), "3456789");
}

TEST_F(BackingStore, ReadBackReachesAHeadOutsideTheBuffer) {
  QMExtensibleBackingStore store(2);
  write(store, "0123456789");
  store.resetForRead();
  store.writeToReadHead();
  EXPECT_EQ(read(store, 6), "012345");
  EXPECT_EQ(write(store, "a"), 1);
  std::string bytes(3, '.');
  EXPECT_EQ(store.readBack(bytes.data(), 3), 3);
  EXPECT_EQ(bytes, "345");
}

TEST_F(BackingStore, InsertMovesTheTailUp) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  EXPECT_EQ(store.insert(3, "abc", 3), 0);
  EXPECT_EQ(contents(store), "012abc3456789");
}

TEST_F(BackingStore, InsertOfMoreThanTheTailMovesItToo) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  EXPECT_EQ(store.insert(8, "abcdefgh", 8), 0);
  EXPECT_EQ(contents(store), "01234567abcdefgh89");
}

TEST_F(BackingStore, InsertAtTheEndAppends) {
  QMExtensibleBackingStore store(4);
  write(store, "01234");
  EXPECT_EQ(store.insert(5, "abc", 3), 0);
  EXPECT_EQ(contents(store), "01234abc");
}

TEST_F(BackingStore, InsertBeyondTheEndFailsAndLeavesTheStoreAlone) {
  QMExtensibleBackingStore store(4);
  write(store, "01234");
  EXPECT_EQ(static_cast<std::uint32_t>(store.insert(6, "abc", 3)), 0xFFFFFFFFU);
  EXPECT_EQ(contents(store), "01234");
}

TEST_F(BackingStore, InsertWithoutMemoryFailsAndLeavesTheStoreAlone) {
  if (qumetra::test::kAddressSanitizer) {
    GTEST_SKIP() << "the address sanitizer ends a program that asks for so much";
  }
  QMExtensibleBackingStore store(4);
  write(store, "01234");
  EXPECT_EQ(store.insert(0, "abc", std::uint64_t{1} << 62), -1);
  EXPECT_EQ(contents(store), "01234");
}

TEST_F(BackingStore, InsertKeepsTheReadHeadAndLeavesTheWriteHeadAtTheEnd) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  store.resetForRead();
  EXPECT_EQ(read(store, 6), "012345");
  EXPECT_EQ(store.insert(2, "ab", 2), 0);
  EXPECT_EQ(read(store, 2), "45");
  write(store, "!");
  EXPECT_EQ(contents(store), "01ab23456789!");
}

TEST_F(BackingStore, InsertOfNothingMovesTheWriteHeadOnly) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  EXPECT_EQ(store.insert(2, nullptr, 3), 0);
  write(store, "a");
  EXPECT_EQ(store.insert(5, "unused", 0), 0);
  write(store, "b");
  EXPECT_EQ(contents(store), "01a34b6789");
}

TEST_F(BackingStore, CloneIsEmptyAndHasTheCommonLimit) {
  QMExtensibleBackingStore store(4);
  write(store, "0123456789");
  const std::unique_ptr<pwr::QMBufferProvider> clone(store.clone(42));
  ASSERT_EQ(clone->size(), 0U);
  const auto& concrete = dynamic_cast<const QMExtensibleBackingStore&>(*clone);
  write(*clone, std::string(0x100000, 'x'));
  EXPECT_EQ(bytesOnDisk(concrete), 0U);
  write(*clone, "x");
  EXPECT_EQ(bytesOnDisk(concrete), 0x100000U);
}

TEST_F(BackingStore, LongSequenceComesBackWhole) {
  QMExtensibleBackingStore store(QMExtensibleBackingStore::kDefaultMaxBufferSize);
  std::string all;
  for (int i = 0; i < 300'000; ++i) {
    const std::string record = "record " + std::to_string(i) + '\n';
    ASSERT_EQ(write(store, record), static_cast<std::int64_t>(record.size()));
    all += record;
  }
  EXPECT_TRUE(contents(store) == all);
}

}  // namespace
