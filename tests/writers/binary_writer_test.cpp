// The life of a binary writer: modes, files, and what outlives a flush.
#include <filesystem>

#include "tests/writers/binary_fixture.h"

namespace qumetra::test {
namespace {

using pwr::Data;
using pwr::Metric;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// Takes the environment away as long as it lives.
class NoEnvironment {
 public:
  NoEnvironment() { g_pluginEnvironment = nullptr; }
  NoEnvironment(const NoEnvironment&) = delete;
  NoEnvironment& operator=(const NoEnvironment&) = delete;
  ~NoEnvironment() { g_pluginEnvironment = m_former; }

 private:
  PluginEnvironment* m_former = g_pluginEnvironment;
};

class BinaryWriterLife : public BinaryResult {
 protected:
  BinaryWriterLife() { m_metric.value(m_cpu0, Data(1.0)); }

  bool exists(const std::string& name) const {
    return std::filesystem::exists(m_directory.file(name));
  }

  BinaryMetric m_metric{7, Metric::TRACED_EVENT};
};

using BinarySeries = BinaryWriterLife;

TEST_F(BinaryWriterLife, FileIsMadeAtTheEnd) {
  start();
  add(m_metric);
  EXPECT_FALSE(exists("run.qmbin"));
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(recordsOfType("04", "run.qmbin"), SizeIs(1));
}

TEST_F(BinaryWriterLife, FileIsReleasedAtTheEnd) {
  start();
  EXPECT_EQ(m_writer.fini(), 0);
  for (const auto& open : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code ignored;
    EXPECT_NE(std::filesystem::read_symlink(open.path(), ignored), m_directory.file("run.qmbin"));
  }
}

TEST_F(BinaryWriterLife, RunWithoutAnythingLeavesAnEmptyFile) {
  ASSERT_EQ(m_writer.init(m_directory.file("run"), false), 0);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(bytes("run.qmbin"), "");
}

TEST_F(BinaryWriterLife, SamplesWithoutASystemMessageAreWritten) {
  ASSERT_EQ(m_writer.init(m_directory.file("run"), false), 0);
  EXPECT_EQ(add(m_metric), 0);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(recordsOfType("04", "run.qmbin"), SizeIs(1));
}

TEST_F(BinaryWriterLife, SystemMessageWithoutMetadataFailsAndChangesNothing) {
  start();
  EXPECT_EQ(m_writer.writeMessage(pwr::SystemMessage()), 1);
  BinaryMetric transition(8, Metric::TRACED_VALUE_TRANSITION);
  transition.value(m_cpu0, Data(1.0), 4);
  add(transition);
  EXPECT_EQ(durationAndValue(), "00 00 80 3f | 00 00 80 3f");
}

TEST_F(BinaryWriterLife, SecondInitKeepsTheFirstBase) {
  start();
  EXPECT_EQ(m_writer.init(m_directory.file("other"), true), 0);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_TRUE(exists("run.qmbin"));
  EXPECT_FALSE(exists("other.qmbin"));
}

TEST_F(BinaryWriterLife, SecondCollectionGoesBehindTheFirst) {
  start();
  add(m_metric);
  EXPECT_EQ(m_writer.fini(), 0);
  const std::string first = bytes("run.qmbin");
  EXPECT_EQ(m_writer.init(m_directory.file("run"), false), 0);
  add(m_metric);
  EXPECT_EQ(m_writer.fini(), 0);
  // Its sample only: the names were told.
  EXPECT_EQ(bytes("run.qmbin"), first + first.substr(first.size() - 27));
}

TEST_F(BinaryWriterLife, SecondCollectionTakesObjectsAnewThatStandWhereOthersStood) {
  alignas(pwr::EntityHandle) unsigned char place[sizeof(pwr::EntityHandle)];
  const auto collect = [&](const std::string& name) {
    ASSERT_EQ(m_writer.init(m_directory.file("run"), false), 0);
    auto* entity = new (place) pwr::EntityHandle(50, {name, "", ""}, nullptr);
    BinaryMetric metric(7, Metric::TRACED_EVENT);
    metric.value(*entity, Data(1.0));
    EXPECT_EQ(add(metric), 0);
    EXPECT_EQ(m_writer.fini(), 0);
    entity->~EntityHandle();
  };
  collect("first");
  collect("second");
  const auto samples = recordsOfType("04", "run.qmbin");
  ASSERT_THAT(samples, SizeIs(2));
  EXPECT_NE(samples[0], samples[1]);
}

TEST_F(BinaryWriterLife, CallsBeforeInitTouchNothing) {
  pwr::SystemMessage message;
  message.m_metadata = &m_metadata;
  EXPECT_EQ(m_writer.writeMessage(message), 1);
  EXPECT_EQ(add(m_metric), 1);
  EXPECT_EQ(m_writer.flushContinuousResults(m_metadata), 0);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_TRUE(std::filesystem::is_empty(m_directory.path()));
}

TEST_F(BinaryWriterLife, FileThatCannotBeMadeIsTheHandlesToReport) {
  std::filesystem::create_directory(m_directory.path() / "run.qmbin");
  start();
  add(m_metric);
  EXPECT_EQ(m_writer.fini(), 0);
  ASSERT_THAT(m_log.errors(), SizeIs(1));
  EXPECT_THAT(m_log.errors()[0].second, HasSubstr("run.qmbin"));
}

TEST_F(BinaryWriterLife, NameOfTheFileIsCutAt1023Characters) {
  std::string base = m_directory.path().string();
  while (base.size() < 1'100) {
    base += "/" + std::string(99, 'd');
  }
  ASSERT_EQ(m_writer.init(base, false), 0);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_TRUE(std::filesystem::is_regular_file(base.substr(0, 1'023)));
}

TEST_F(BinarySeries, FlushesMakeNumberedFilesFromZero) {
  start(true);
  add(m_metric);
  EXPECT_EQ(m_writer.flushContinuousResults(m_metadata), 1);
  add(m_metric);
  EXPECT_EQ(m_writer.flushContinuousResults(m_metadata), 1);
  EXPECT_THAT(recordsOfType("04", "run_0.qmbin"), SizeIs(1));
  EXPECT_THAT(recordsOfType("04", "run_1.qmbin"), SizeIs(1));
}

TEST_F(BinarySeries, NamesAreToldInTheFileOfTheirFirstUseOnly) {
  start(true);
  add(m_metric);
  m_writer.flushContinuousResults(m_metadata);
  m_metric.value(m_cpu1, Data(1.0), 0, &m_c6);
  add(m_metric);
  m_writer.flushContinuousResults(m_metadata);
  // "", M, TRACED_EVENT, CPU0 are texts 1 to 4 of the first file.
  EXPECT_THAT(records("run_1.qmbin"),
              ElementsAre("06 00 00 05 00 02 00 43 36", "08 00 00 06 00 04 00 43 50 55 31",
                          "06 00 02 01 00 01 00 05 00",
                          "18 00 04 00 00 00 00 00 00 00 00 00 00 80 3f 07 00 00 00 04 00 00 00 "
                          "00 00 80 3f",
                          "18 00 04 00 00 00 00 00 00 00 00 00 00 80 3f 07 00 00 00 06 00 01 00 "
                          "00 00 80 3f"));
}

TEST_F(BinarySeries, EveryFileTellsTheSystemOfItsFlush) {
  pwr::CPUMetadata cpu;
  start(true);
  pwr::SystemMetadata later = m_metadata;
  later.m_platformMetadata[pwr::SystemMetadata::kCpu] = &cpu;
  later.m_lastTimestamp = 0x11;
  m_writer.flushContinuousResults(later);
  later.m_lastTimestamp = 0x12;
  m_writer.flushContinuousResults(later);
  ASSERT_THAT(recordsOfType("01", "run_0.qmbin"), SizeIs(1));
  ASSERT_THAT(recordsOfType("01", "run_1.qmbin"), SizeIs(1));
  EXPECT_EQ(recordsOfType("01", "run_0.qmbin")[0].substr(33, 2), "11");
  EXPECT_EQ(recordsOfType("01", "run_1.qmbin")[0].substr(33, 2), "12");
  EXPECT_THAT(recordsOfType("00", "run_1.qmbin"), IsEmpty());
}

TEST_F(BinarySeries, EndWritesNothing) {
  start(true);
  add(m_metric);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_FALSE(exists("run.qmbin"));
  EXPECT_FALSE(exists("run_0.qmbin"));
}

TEST_F(BinarySeries, FlushWithoutAnOutputHandleReturnsZeroAndKeepsTheSamples) {
  start(true);
  add(m_metric);
  {
    const NoEnvironment none;
    EXPECT_EQ(m_writer.flushContinuousResults(m_metadata), 0);
    EXPECT_EQ(m_writer.fini(), 0);
  }
  EXPECT_EQ(m_writer.flushContinuousResults(m_metadata), 1);
  EXPECT_THAT(recordsOfType("04", "run_0.qmbin"), SizeIs(1));
}

TEST_F(BinarySeries, FlushIsGoodAlsoWhenItsFileCannotBeMade) {
  std::filesystem::create_directory(m_directory.path() / "run_0.qmbin");
  start(true);
  EXPECT_EQ(m_writer.flushContinuousResults(m_metadata), 1);
  EXPECT_THAT(m_log.errors(), SizeIs(1));
}

TEST_F(BinarySeries, FlushOfARunThatIsNotContinuousMakesANumberedFileToo) {
  start(false);
  add(m_metric);
  EXPECT_EQ(m_writer.flushContinuousResults(m_metadata), 1);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(recordsOfType("04", "run_0.qmbin"), SizeIs(1));
  EXPECT_EQ(bytes("run.qmbin"), "");
}

// What the writers of a process share.

TEST_F(BinarySeries, NumbersOfFilesGoOnInTheNextWriter) {
  start(true);
  m_writer.flushContinuousResults(m_metadata);
  BinaryWriter second;
  ASSERT_EQ(second.init(m_directory.file("second"), true), 0);
  EXPECT_EQ(second.flushContinuousResults(m_metadata), 1);
  EXPECT_TRUE(exists("second_1.qmbin"));
}

TEST_F(BinarySeries, MetricThatAnyWriterToldIsNotToldAgain) {
  start(true);
  add(m_metric);
  BinaryWriter second;
  ASSERT_EQ(second.init(m_directory.file("second"), false), 0);
  EXPECT_EQ(second.writeMessage(m_metric.message()), 0);
  EXPECT_EQ(second.fini(), 0);
  EXPECT_THAT(recordsOfType("03", "second.qmbin"), IsEmpty());
  EXPECT_THAT(recordsOfType("04", "second.qmbin"), SizeIs(1));
}

}  // namespace
}  // namespace qumetra::test
