// Samples that are too many for memory, and what becomes of them when the disk fails.
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "host/logger.h"
#include "tests/support/disk_faults.h"
#include "tests/support/sanitizers.h"
#include "tests/writers/binary_fixture.h"
#include "writers/binarywriter_plugin/sample_block.h"

namespace qumetra::test {
namespace {

namespace fs = std::filesystem;
using pwr::Data;
using pwr::Metric;
using pwr::bin::SampleBlock;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::size_t kRecordSize = 27;
/// Of one message.
constexpr std::size_t kBlockRecords = (SampleBlock::kSize - SampleBlock::kHeadSize -
                                       SampleBlock::kRunHeadSize - SampleBlock::kRowHeadSize) /
                                      (SampleBlock::kNumbersSize + SampleBlock::kNamesSize);

/// Samples are numbered: their values are 0, 1, 2 …
class BinarySpill : public BinaryResult {
 protected:
  void addSamples(std::size_t count) {
    BinaryMetric metric(7, Metric::SAMPLED_VALUE);
    for (std::size_t i = 0; i < count; ++i) {
      metric.value(m_cpu0, Data(static_cast<double>(m_next++)));
    }
    EXPECT_EQ(add(metric), 0);
  }

  /// The values of all samples of a file.
  std::vector<float> valuesIn(const std::string& name) const {
    const std::string file = bytes(name);
    std::vector<float> values;
    for (std::size_t start = 0; start + 3 <= file.size();) {
      const std::size_t end = start + 3 + static_cast<unsigned char>(file[start]) +
                              256U * static_cast<unsigned char>(file[start + 1]);
      if (file[start + 2] == 4 && end <= file.size()) {
        values.emplace_back();
        std::memcpy(&values.back(), file.data() + end - sizeof(float), sizeof(float));
      }
      start = end;
    }
    return values;
  }

  /// The numbers from `first` up to `end`.
  static std::vector<float> numbers(std::size_t first, std::size_t end) {
    std::vector<float> values;
    for (std::size_t i = first; i < end; ++i) {
      values.push_back(static_cast<float>(i));
    }
    return values;
  }

  std::vector<fs::path> tempFiles() const {
    if (!fs::exists(m_area.spillPath())) {
      return {};
    }
    return {fs::directory_iterator(m_area.spillPath()), {}};
  }

  TempArea m_area;
  std::size_t m_next = 0;
};

TEST_F(BinarySpill, FewSamplesTouchNoTempFile) {
  start();
  addSamples(kBlockRecords);
  EXPECT_THAT(tempFiles(), IsEmpty());
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(valuesIn("run.qmbin"), numbers(0, kBlockRecords));
}

TEST_F(BinarySpill, FullBlocksWaitInATempFileAndComeOutInTheirOrder) {
  start();
  addSamples(2 * kBlockRecords + 1);
  ASSERT_THAT(tempFiles(), SizeIs(1));
  EXPECT_THAT(tempFiles()[0].filename().string(), HasSubstr("_qmet"));
  EXPECT_EQ(fs::file_size(tempFiles()[0]), 2 * SampleBlock::kSize);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(valuesIn("run.qmbin"), numbers(0, 2 * kBlockRecords + 1));
  EXPECT_THAT(tempFiles(), IsEmpty());
}

TEST_F(BinarySpill, NamesStandInFrontOfSamplesFromTheTempFile) {
  start();
  addSamples(kBlockRecords + 1);
  EXPECT_EQ(m_writer.fini(), 0);
  // "", M, SAMPLED_VALUE, CPU0; the metric; the first sample.
  EXPECT_EQ(hexOf(bytes("run.qmbin").substr(0, 15)),
            "04 00 00 01 00 00 00 05 00 00 02 00 01 00 4d");
  EXPECT_EQ(bytes("run.qmbin").size(), 7 + 8 + 20 + 11 + 23 + (kBlockRecords + 1) * kRecordSize);
}

TEST_F(BinarySpill, EveryFlushEmptiesTheTempFile) {
  start(true);
  addSamples(kBlockRecords + 1);
  EXPECT_EQ(m_writer.flushContinuousResults(m_metadata), 1);
  EXPECT_THAT(tempFiles(), IsEmpty());
  addSamples(kBlockRecords + 1);
  EXPECT_EQ(m_writer.flushContinuousResults(m_metadata), 1);
  EXPECT_EQ(valuesIn("run_0.qmbin"), numbers(0, kBlockRecords + 1));
  EXPECT_EQ(valuesIn("run_1.qmbin"), numbers(kBlockRecords + 1, 2 * kBlockRecords + 2));
}

TEST_F(BinarySpill, TempFileGoesWithAWriterThatIsNotEnded) {
  {
    BinaryWriter writer;
    ASSERT_EQ(writer.init(m_directory.file("run"), false), 0);
    BinaryMetric metric(7, Metric::SAMPLED_VALUE);
    for (std::size_t i = 0; i <= kBlockRecords; ++i) {
      metric.value(m_cpu0, Data(1.0));
    }
    EXPECT_EQ(writer.writeMessage(metric.message()), 0);
    EXPECT_THAT(tempFiles(), SizeIs(1));
  }
  EXPECT_THAT(tempFiles(), IsEmpty());
}

TEST_F(BinarySpill, MemoryHoldsTheSamplesWhereNoTempFileCanBeMade) {
  const NoPlaceForTempFiles none;
  start();
  addSamples(3 * kBlockRecords + 1);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(valuesIn("run.qmbin"), numbers(0, 3 * kBlockRecords + 1));
  EXPECT_THAT(m_log.errors(), IsEmpty());
}

TEST_F(BinarySpill, MemoryHoldsWhatAFullDiskDoesNotTake) {
  start();
  {
    const FullDisk disk(SampleBlock::kSize * 3 / 2);
    addSamples(4 * kBlockRecords + 1);
  }
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(valuesIn("run.qmbin"), numbers(0, 4 * kBlockRecords + 1));
  EXPECT_THAT(m_log.errors(), IsEmpty());
}

TEST_F(BinarySpill, MemoryHoldsAllThatComesBehindWhatAFullDiskRefused) {
  start();
  {
    const FullDisk disk(SampleBlock::kSize * 3 / 2);
    addSamples(2 * kBlockRecords + 1);
  }
  addSamples(2 * kBlockRecords);  // The disk would take these.
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(valuesIn("run.qmbin"), numbers(0, 4 * kBlockRecords + 1));
}

TEST_F(BinarySpill, BlockThatSomebodyChangedIsLost) {
  start();
  addSamples(2 * kBlockRecords + 1);
  ASSERT_THAT(tempFiles(), SizeIs(1));
  {
    std::fstream file(tempFiles()[0], std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(SampleBlock::kHeadSize + 10);
    file.write("\xff\xff", 2);  // The number of samples of the first run.
  }
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(valuesIn("run.qmbin"), numbers(kBlockRecords, 2 * kBlockRecords + 1));
  ASSERT_THAT(m_log.errors(), SizeIs(1));
  EXPECT_THAT(m_log.errors()[0].second, HasSubstr("Cannot read back 1 of 2 blocks of samples"));
}

TEST_F(BinarySpill, BlocksThatCannotBeReadBackAreOneErrorAndTheRestIsWritten) {
  start();
  addSamples(2 * kBlockRecords + 1);
  ASSERT_THAT(tempFiles(), SizeIs(1));
  const fs::path file = tempFiles()[0];
  fs::resize_file(file, SampleBlock::kSize);
  EXPECT_EQ(m_writer.fini(), 0);
  std::vector<float> left = numbers(0, kBlockRecords);
  left.push_back(static_cast<float>(2 * kBlockRecords));
  EXPECT_EQ(valuesIn("run.qmbin"), left);
  ASSERT_THAT(m_log.errors(), SizeIs(1));
  EXPECT_EQ(m_log.errors()[0].second,
            "ERROR: Cannot read back 1 of 2 blocks of samples from " + file.string() + "\n");
}

TEST_F(BinarySpill, HandleIsLeftEmpty) {
  start();
  pwr::Logger* const handle =
      g_pluginEnvironment->getFileOutputHandle(m_directory.file("run.qmbin").c_str());
  handle->m_pendingBytes = 5;
  addSamples(kBlockRecords + 1);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(handle->m_buffer, IsEmpty());
  EXPECT_EQ(handle->m_buffer.capacity(), 0U) << "a series has a handle for each of its files";
  EXPECT_EQ(handle->m_pendingBytes, 0U);
}

/// Lets the process have no more memory than it has now, and `bytes`, while it lives.
class LittleMemory {
 public:
  explicit LittleMemory(std::uint64_t bytes) {
    ::getrlimit(RLIMIT_AS, &m_former);
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t now = pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    const rlimit limit{now + bytes, m_former.rlim_max};
    ::setrlimit(RLIMIT_AS, &limit);
  }
  LittleMemory(const LittleMemory&) = delete;
  LittleMemory& operator=(const LittleMemory&) = delete;
  ~LittleMemory() { ::setrlimit(RLIMIT_AS, &m_former); }

 private:
  rlimit m_former{};
};

TEST_F(BinarySpill, WantOfMemoryFailsTheMessageAndKeepsWhatCame) {
  if (kAddressSanitizer) {
    GTEST_SKIP() << "the sanitizer ends the process for want of memory";
  }
  const NoPlaceForTempFiles none;
  start();
  BinaryMetric metric(7, Metric::SAMPLED_VALUE);
  metric.value(m_cpu0, Data(1.0));
  ASSERT_EQ(m_writer.writeMessage(metric.message()), 0);
  std::size_t written = 1;
  {
    const LittleMemory little(8 * SampleBlock::kSize);
    while (m_writer.writeMessage(metric.message()) == 0) {
      ASSERT_LT(++written, 1'000'000U) << "memory did not run out";
    }
  }
  EXPECT_EQ(m_writer.writeMessage(metric.message()), 0);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_GT(written, kBlockRecords);
  EXPECT_THAT(valuesIn("run.qmbin"), SizeIs(written + 1));
}

}  // namespace
}  // namespace qumetra::test
