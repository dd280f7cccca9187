// The reader of records over a store that fails on demand.
#include "writers/textwriter_plugin/backing_store_reader.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/sanitizers.h"
#include "tests/support/standard_error.h"

namespace {

using qumetra::test::LogCapture;
using qumetra::test::standardErrorOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Pair;

std::string recordOf(const std::string& text) {
  const auto length = static_cast<std::uint32_t>(text.size());
  std::string bytes(sizeof length, '\0');
  std::memcpy(bytes.data(), &length, sizeof length);
  return bytes + text;
}

/// A store that holds bytes to read and can refuse to go back.
class FaultyStore : public pwr::QMBufferProvider {
 public:
  explicit FaultyStore(std::string bytes) : m_bytes(std::move(bytes)) {}

  std::int64_t read(void* destination, std::uint64_t count) override {
    const std::size_t got = m_bytes.copy(static_cast<char*>(destination), count, m_head);
    m_head += got;
    return static_cast<std::int64_t>(got);
  }
  std::int64_t readBack(void* /*destination*/, std::uint64_t count) override {
    if (refusesToGoBack) {
      return -1;
    }
    if (goesBackShort) {
      return static_cast<std::int64_t>(count) - 1;
    }
    m_head -= count;
    return static_cast<std::int64_t>(count);
  }
  std::uint64_t size() const override { return m_bytes.size(); }
  void resetForRead() override { m_head = 0; }

  std::int64_t write(const void*, std::uint64_t) override { return -1; }
  std::int64_t peek(void*, std::uint64_t) override { return -1; }
  void resetForReadBack() override {}
  void writeToReadHead() override {}
  pwr::QMBufferProvider* clone(std::uint64_t) const override { return nullptr; }
  std::int32_t insert(std::uint64_t, const void*, std::uint64_t) override { return -1; }

  bool refusesToGoBack = false;
  bool goesBackShort = false;

 private:
  std::string m_bytes;
  std::size_t m_head = 0;
};

/// Leaves this process about `spare` bytes of address space, and no free block of 1 MiB beside
/// them, as long as it lives.
class ScarceMemory {
 public:
  explicit ScarceMemory(std::uint64_t spare) {
    ::getrlimit(RLIMIT_AS, &m_former);
    limitTo(usedBytes());
    while (void* block = std::malloc(0x100000)) {
      m_hoard.push_back(block);
    }
    limitTo(usedBytes() + spare);
  }
  ScarceMemory(const ScarceMemory&) = delete;
  ScarceMemory& operator=(const ScarceMemory&) = delete;
  ~ScarceMemory() {
    ::setrlimit(RLIMIT_AS, &m_former);
    for (void* block : m_hoard) {
      std::free(block);
    }
  }

 private:
  static std::uint64_t usedBytes() {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  }

  void limitTo(std::uint64_t bytes) const {
    const rlimit limit{bytes, m_former.rlim_max};
    ::setrlimit(RLIMIT_AS, &limit);
  }

  rlimit m_former{};
  std::vector<void*> m_hoard;
};

std::vector<std::string> readAll(BackingStoreReader& reader) {
  std::vector<std::string> texts;
  for (std::string_view text; reader.next(text);) {
    texts.emplace_back(text);
  }
  return texts;
}

TEST(BackingStoreReader, GivesTheRecordsInTheirOrder) {
  FaultyStore store(recordOf("one") + recordOf("") + recordOf("three"));
  BackingStoreReader reader(store);
  EXPECT_THAT(readAll(reader), ElementsAre("one", "", "three"));
  EXPECT_FALSE(reader.failed());
}

TEST(BackingStoreReader, EmptyStoreHasNoRecords) {
  FaultyStore store("");
  BackingStoreReader reader(store);
  EXPECT_THAT(readAll(reader), IsEmpty());
  EXPECT_FALSE(reader.failed());
}

TEST(BackingStoreReader, RecordThatTheEndCutsOffIsTheEnd) {
  for (const std::size_t cut : {1U, 3U, 5U, 8U}) {
    std::string bytes = recordOf("one") + recordOf("three");
    bytes.resize(bytes.size() - cut);
    FaultyStore store(bytes);
    BackingStoreReader reader(store);
    EXPECT_THAT(readAll(reader), ElementsAre("one")) << cut;
    EXPECT_FALSE(reader.failed()) << cut;
  }
}

TEST(BackingStoreReader, RecordsAcrossBlocksAreWhole) {
  const std::string wide(1500, 'w');
  std::string bytes;
  for (int i = 0; i < 4000; ++i) {
    bytes += recordOf(wide);
  }
  FaultyStore store(bytes);
  BackingStoreReader reader(store);
  EXPECT_EQ(readAll(reader), std::vector<std::string>(4000, wide));
}

TEST(BackingStoreReader, StoreThatCannotGoBackEndsTheReading) {
  FaultyStore store(recordOf("one") + recordOf("three").substr(0, 7));
  store.refusesToGoBack = true;
  BackingStoreReader reader(store);
  std::vector<std::string> texts;
  EXPECT_EQ(standardErrorOf([&] { texts = readAll(reader); }), "ERROR: couldn't rewind 7 bytes\n");
  EXPECT_THAT(texts, ElementsAre("one"));
  EXPECT_TRUE(reader.failed());
}

TEST(BackingStoreReader, StoreThatEndsWhileGoingBackEndsTheReading) {
  FaultyStore store(recordOf("one") + recordOf("three").substr(0, 7));
  store.goesBackShort = true;
  BackingStoreReader reader(store);
  EXPECT_EQ(standardErrorOf([&] { readAll(reader); }),
            "ERROR: trying to rewind past the start of the buffer?!\n");
  EXPECT_TRUE(reader.failed());
}

TEST(BackingStoreReader, SaysWhenThereIsNoMemoryForItsBlock) {
  if (qumetra::test::kAddressSanitizer) {
    GTEST_SKIP() << "the address sanitizer needs its address space";
  }
  const LogCapture log;
  FaultyStore store(std::string(0x200000, 'x'));
  const ScarceMemory scarce(0);
  BackingStoreReader reader(store);
  EXPECT_TRUE(reader.failed());
  EXPECT_THAT(log.warnings(),
              ElementsAre(Pair(2, "WARNING: Failed to allocate buffer of size 1048576\n")));
}

TEST(BackingStoreReader, SaysWhenThereIsNoMemoryForALongRecord) {
  if (qumetra::test::kAddressSanitizer) {
    GTEST_SKIP() << "the address sanitizer needs its address space";
  }
  const LogCapture log;
  FaultyStore store(recordOf("one") + recordOf(std::string(0x8000000, 'x')));
  const ScarceMemory scarce(0x1000000);
  BackingStoreReader reader(store);
  EXPECT_THAT(readAll(reader), ElementsAre("one"));
  EXPECT_TRUE(reader.failed());
  EXPECT_THAT(log.warnings(),
              ElementsAre(Pair(
                  2, MatchesRegex("WARNING: Failed to allocate buffer of size [0-9]+ bytes\n"))));
}

}  // namespace
