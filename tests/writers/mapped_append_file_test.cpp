// The file behind a spilled table: windows, cutting, and what happens when the system says no.
#include "writers/textwriter_plugin/mapped_append_file.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "tests/writers/spill_test_support.h"

namespace {

namespace fs = std::filesystem;
using qumetra::test::flushed;
using qumetra::test::LogCapture;
using qumetra::test::readFile;
using qumetra::test::recordsOf;
using qumetra::test::SpillDir;
using qumetra::test::TempDir;
using Texts = qumetra::test::RecordingSink::Texts;

// What the calls below are told, and what they saw.
int s_error = 0;
int s_reservations = 0;
int s_writes = 0;
std::size_t s_room = 0;
std::vector<std::size_t> s_windows;

int countReservation(int descriptor, off_t offset, off_t length) {
  ++s_reservations;
  s_windows.push_back(static_cast<std::size_t>(length));
  return SpillSystem::real().reserve(descriptor, offset, length);
}

int failToReserve(int, off_t, off_t) { return s_error; }

int reserveAtSecondTry(int descriptor, off_t offset, off_t length) {
  return ++s_reservations == 1 ? EINTR : SpillSystem::real().reserve(descriptor, offset, length);
}

void* failToMap(int, off_t, std::size_t) { return nullptr; }

ssize_t countWrite(int descriptor, const void* bytes, std::size_t size, off_t offset) {
  ++s_writes;
  return SpillSystem::real().write(descriptor, bytes, size, offset);
}

// A disk with room for `s_room` bytes, that takes three bytes at a time and is interrupted often.
ssize_t writeToSmallDisk(int descriptor, const void* bytes, std::size_t size, off_t offset) {
  if (++s_writes % 2 == 1) {
    errno = EINTR;
    return -1;
  }
  if (s_room == 0) {
    errno = s_error;
    return -1;
  }
  const std::size_t some = std::min({size, s_room, std::size_t{3}});
  s_room -= some;
  return SpillSystem::real().write(descriptor, bytes, some, offset);
}

SpillSystem systemWithSmallDisk(std::size_t room, int error) {
  s_room = room;
  s_error = error;
  SpillSystem system = SpillSystem::real();
  system.reserve = &failToReserve;
  system.write = &writeToSmallDisk;
  return system;
}

/// A file to append to, and what stands in it.
class MappedAppendFileTest : public ::testing::Test {
 protected:
  MappedAppendFileTest() : m_file(std::fopen(path().c_str(), "w+")) {
    s_error = s_reservations = s_writes = 0;
    s_windows.clear();
  }
  ~MappedAppendFileTest() override { std::fclose(m_file); }

  std::string path() const { return m_dir.file("data"); }
  int descriptor() const { return ::fileno(m_file); }

  TempDir m_dir;
  std::FILE* m_file;
};

TEST_F(MappedAppendFileTest, HeadAndBodyStandBehindOneAnother) {
  MappedAppendFile file(descriptor(), SpillSystem::real());
  EXPECT_EQ(file.append("head", "body"), 0);
  EXPECT_EQ(file.append("", "more"), 0);
  EXPECT_EQ(file.append("", ""), 0);
  EXPECT_EQ(file.length(), 12U);
  EXPECT_EQ(file.finish(), 0);
  EXPECT_EQ(readFile(path()), "headbodymore");
}

TEST_F(MappedAppendFileTest, FileThatNothingWasAppendedToStaysEmpty) {
  MappedAppendFile file(descriptor(), SpillSystem::real());
  EXPECT_EQ(file.finish(), 0);
  EXPECT_EQ(fs::file_size(path()), 0U);
}

TEST_F(MappedAppendFileTest, EndOfTheObjectCutsTheFile) {
  { MappedAppendFile(descriptor(), SpillSystem::real()).append("a", "b"); }
  EXPECT_EQ(readFile(path()), "ab");
}

TEST_F(MappedAppendFileTest, FinishingTwiceIsHarmless) {
  MappedAppendFile file(descriptor(), SpillSystem::real());
  file.append("a", "b");
  EXPECT_EQ(file.finish(), 0);
  EXPECT_EQ(file.finish(), 0);
  EXPECT_EQ(file.length(), 2U);
}

TEST_F(MappedAppendFileTest, WindowsDoubleFrom64KiBToOneMiB) {
  SpillSystem system = SpillSystem::real();
  system.reserve = &countReservation;
  MappedAppendFile file(descriptor(), system);
  const std::string piece(1000, 'x');
  for (int i = 0; i < 5000; ++i) {
    ASSERT_EQ(file.append(piece, ""), 0);
  }
  ASSERT_GE(s_windows.size(), 7U);
  s_windows.resize(7);
  constexpr std::size_t kKiB = 1024;
  EXPECT_EQ(s_windows, std::vector<std::size_t>({64 * kKiB, 128 * kKiB, 256 * kKiB, 512 * kKiB,
                                                 1024 * kKiB, 1024 * kKiB, 1024 * kKiB}));
}

TEST_F(MappedAppendFileTest, MillionPiecesTakeAFewSystemCalls) {
  SpillSystem system = SpillSystem::real();
  system.reserve = &countReservation;
  system.write = &countWrite;
  MappedAppendFile file(descriptor(), system);
  for (int i = 0; i < 1000000; ++i) {
    ASSERT_EQ(file.append("1234", "a cell"), 0);
  }
  EXPECT_LT(s_reservations, 20);
  EXPECT_EQ(s_writes, 0);
  EXPECT_EQ(file.length(), 10000000U);
}

TEST_F(MappedAppendFileTest, PieceLargerThanTheLargestWindowIsTaken) {
  const std::string large(3 * MappedAppendFile::kLargestWindow + 17, 'x');
  MappedAppendFile file(descriptor(), SpillSystem::real());
  file.append("a", "b");
  EXPECT_EQ(file.append("c", large), 0);
  file.append("d", "e");
  file.finish();
  EXPECT_EQ(readFile(path()), "abc" + large + "de");
}

TEST_F(MappedAppendFileTest, AnySequenceOfPiecesGivesTheirBytes) {
  rc::check("the file holds what was appended", [this] {
    ASSERT_EQ(::ftruncate(descriptor(), 0), 0);
    const auto sizes = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 20000));
    std::string expected;
    MappedAppendFile file(descriptor(), SpillSystem::real());
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      const std::string piece(static_cast<std::size_t>(sizes[i]), static_cast<char>('a' + i % 26));
      RC_ASSERT(file.append("head", piece) == 0);
      expected += "head" + piece;
      RC_ASSERT(file.length() == expected.size());
    }
    RC_ASSERT(file.finish() == 0);
    RC_ASSERT(readFile(path()) == expected);
  });
}

TEST_F(MappedAppendFileTest, InterruptedReservationIsTriedAgain) {
  SpillSystem system = SpillSystem::real();
  system.reserve = &reserveAtSecondTry;
  system.write = &countWrite;
  MappedAppendFile file(descriptor(), system);
  EXPECT_EQ(file.append("a", "b"), 0);
  EXPECT_EQ(s_reservations, 2);
  EXPECT_EQ(s_writes, 0);
}

TEST_F(MappedAppendFileTest, FileThatCannotBeMappedIsWrittenPieceByPiece) {
  SpillSystem system = SpillSystem::real();
  system.map = &failToMap;
  system.write = &countWrite;
  MappedAppendFile file(descriptor(), system);
  EXPECT_EQ(file.append("a", "b"), 0);
  EXPECT_EQ(file.append("c", "d"), 0);
  EXPECT_EQ(s_writes, 2);
  EXPECT_EQ(file.finish(), 0);
  EXPECT_EQ(readFile(path()), "abcd");
}

TEST_F(MappedAppendFileTest, DiskWithoutRoomForAWindowTakesWhatStillFits) {
  const SpillSystem system = systemWithSmallDisk(8, ENOSPC);
  MappedAppendFile file(descriptor(), system);
  EXPECT_EQ(file.append("abcd", "efgh"), 0);
  EXPECT_EQ(file.append("i", "j"), ENOSPC);
  EXPECT_EQ(file.length(), 8U);
  file.finish();
  EXPECT_EQ(readFile(path()), "abcdefgh");
}

TEST_F(MappedAppendFileTest, PieceThatFitsInPartIsNotTaken) {
  const SpillSystem system = systemWithSmallDisk(10, ENOSPC);
  MappedAppendFile file(descriptor(), system);
  EXPECT_EQ(file.append("abcd", "efgh"), 0);
  EXPECT_EQ(file.append("ijkl", ""), ENOSPC);
  file.finish();
  EXPECT_EQ(readFile(path()), "abcdefgh");
}

TEST_F(MappedAppendFileTest, NothingIsAppendedAfterAnError) {
  const SpillSystem system = systemWithSmallDisk(0, ENOSPC);
  MappedAppendFile file(descriptor(), system);
  EXPECT_EQ(file.append("a", ""), ENOSPC);
  s_room = 100;
  EXPECT_EQ(file.append("b", ""), ENOSPC);
  EXPECT_EQ(file.length(), 0U);
}

TEST_F(MappedAppendFileTest, FileSizeLimitIsAnErrorNotASignal) {
  ::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit = {100000, RLIM_INFINITY};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  MappedAppendFile file(descriptor(), SpillSystem::real());
  const std::string piece(1000, 'x');
  int error = 0;
  int taken = 0;
  while ((error = file.append(piece, "")) == 0) {
    ++taken;
  }
  EXPECT_EQ(error, EFBIG);
  EXPECT_EQ(taken, 100);
  file.finish();
  EXPECT_EQ(fs::file_size(path()), 100000U);
  const rlimit none = {RLIM_INFINITY, RLIM_INFINITY};
  ::setrlimit(RLIMIT_FSIZE, &none);
}

// How a table takes such errors.

class SpillWriteFailure : public ::testing::Test {
 protected:
  LogCapture m_log;
  SpillDir m_dir;
};

TEST_F(SpillWriteFailure, DiskThatFillsUpIsToldOnceAndKeepsWhatItHas) {
  const SpillSystem system = systemWithSmallDisk(7 + 5, ENOSPC);
  TempFileManager manager(1, system);
  EXPECT_EQ(manager.pushString(nullptr, "abc", 0), 0);
  EXPECT_EQ(manager.pushString(nullptr, "too long", 0), 1);
  EXPECT_EQ(manager.pushString(nullptr, "d", 0), 1);
  TempFileManager other(1, system);
  EXPECT_EQ(other.pushString(nullptr, "too long", 0), 1);
  EXPECT_EQ(
      m_log.errors(),
      Texts({{1, "Warning: Could not generate result files. No space is left on the disk.\n"}}));
  EXPECT_EQ(flushed(manager).second, "\nabc\n\n");
}

TEST_F(SpillWriteFailure, OtherWriteErrorIsToldOncePerTable) {
  const SpillSystem system = systemWithSmallDisk(0, EIO);
  TempFileManager manager(1, system);
  EXPECT_EQ(manager.pushString(nullptr, "abc", 0), 1);
  EXPECT_EQ(manager.pushString(nullptr, "abc", 0), 1);
  EXPECT_EQ(m_log.errors(), Texts({{1, "ERROR: Cannot create temp output file: " + manager.m_path +
                                           ". error: errnum=5: Input/output error\n"}}));
  EXPECT_EQ(manager.m_columnWidths, std::vector<std::int32_t>({0}));
}

TEST_F(SpillWriteFailure, TableOnAFileThatCannotBeMappedIsWhole) {
  SpillSystem system = SpillSystem::real();
  system.map = &failToMap;
  TempFileManager manager(2, system);
  qumetra::test::pushAll(manager, {"a", "b", "c", "d"}, 2);
  EXPECT_EQ(readFile(manager.m_path).substr(0, 20), recordsOf({"a", "b", "c", "d"}));
  EXPECT_EQ(flushed(manager).second, "\na, b\nc, d\n\n");
}

}  // namespace
