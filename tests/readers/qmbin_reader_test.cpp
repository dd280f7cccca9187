#include "qumetra/readers/qmbin_reader.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/readers/string_source.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

/// Keeps copies of what it gets.
class Keeper : public QmbinVisitor {
 public:
  struct Sample {
    std::uint64_t timestamp;
    std::string metric;
    std::string name;
    std::string descriptor;
    float duration;
    float value;
    bool operator==(const Sample&) const = default;
  };

  void system(const QmbinSystem& system) override { systems.push_back(system); }
  void descriptor(const QmbinDescriptor& descriptor) override { descriptors.push_back(descriptor); }
  void metric(const QmbinMetric& metric) override { metrics.push_back(metric); }
  void sample(const QmbinSample& sample) override {
    samples.push_back({sample.timestamp, sample.metric == nullptr ? "none" : sample.metric->name,
                       *sample.name,
                       sample.descriptor == nullptr ? "none" : sample.descriptor->name,
                       sample.durationMicroseconds, sample.value});
  }
  void fault(std::uint64_t offset, const std::string& what) override {
    faults.push_back(std::to_string(offset) + ": " + what);
  }

  std::vector<QmbinSystem> systems;
  std::vector<QmbinDescriptor> descriptors;
  std::vector<QmbinMetric> metrics;
  std::vector<Sample> samples;
  std::vector<std::string> faults;
};

// Records, by hand.
const std::string kTextA = "05 00 00 01 00 01 00 61";
const std::string kTextB = "05 00 00 02 00 01 00 62";
const std::string kTextC = "05 00 00 03 00 01 00 63";
const std::string kDescriptor1 = "06 00 02 01 00 01 00 02 00";
/// Metric 7: group a, name b, type c; quantity b, units c; columns (a, 1) and none; metadata a.
const std::string kMetric7 =
    "1e 00 03 07 00 00 00 01 00 02 00 03 00 02 00 03 00 01 00 02 00 01 00"
    "01 00 01 00 00 00 00 00 01 00";
/// Tick 9, 2.5 microseconds, metric 7, name c, descriptor 1, value 1.
const std::string kSample =
    "18 00 04 09 00 00 00 00 00 00 00 00 00 20 40 07 00 00 00 03 00 01 00 00 00 80 3f";

const std::string kTexts = kTextA + kTextB + kTextC;

class QmbinReading : public ::testing::Test {
 protected:
  QmbinCounts read(const std::string& hex) {
    StringSource source(fromHex(hex));
    return m_reader.read(source);
  }

  Keeper m_found;
  QmbinReader m_reader{m_found};
};

TEST_F(QmbinReading, EmptyFileIsFineAndSaysNothing) {
  const QmbinCounts counts = read("");
  EXPECT_EQ(counts.samples + counts.texts + counts.faults, 0U);
}

TEST_F(QmbinReading, WholeRecordsEndBeforeOneThatWasCut) {
  EXPECT_EQ(read("").end, 0U);
  EXPECT_EQ(read(kSample + " 18 00 04").end, 27U);
}

TEST_F(QmbinReading, ReferencesToWhatWasNotToldAreCounted) {
  const QmbinCounts counts = read(kSample + " 18 00 04");
  EXPECT_EQ(counts.untold, 3U);  // The metric, the name and the descriptor.
  EXPECT_EQ(counts.faults, 4U);
}

TEST_F(QmbinReading, SampleHasItsNamesResolved) {
  const QmbinCounts counts = read(kTexts + kDescriptor1 + kMetric7 + kSample);
  EXPECT_THAT(m_found.samples, ElementsAre(Keeper::Sample{9, "b", "c", "b", 2.5F, 1.0F}));
  EXPECT_EQ(counts.texts, 3U);
  EXPECT_EQ(counts.descriptors, 1U);
  EXPECT_EQ(counts.metrics, 1U);
  EXPECT_EQ(counts.samples, 1U);
  EXPECT_EQ(counts.untold, 0U);
  EXPECT_THAT(m_found.faults, IsEmpty());
}

TEST_F(QmbinReading, DescriptorHasAttributeAndName) {
  read(kTexts + kDescriptor1);
  ASSERT_THAT(m_found.descriptors, SizeIs(1));
  EXPECT_EQ(m_found.descriptors[0].index, 1);
  EXPECT_EQ(m_found.descriptors[0].attribute, "a");
  EXPECT_EQ(m_found.descriptors[0].name, "b");
}

TEST_F(QmbinReading, MetricTellsTextsColumnsAndMetadata) {
  read(kTexts + kDescriptor1 + kMetric7);
  ASSERT_THAT(m_found.metrics, SizeIs(1));
  const QmbinMetric& metric = m_found.metrics[0];
  EXPECT_EQ(metric.id, 7U);
  EXPECT_EQ(metric.group + metric.name + metric.type + metric.quantity + metric.units, "abcbc");
  ASSERT_THAT(metric.columns, SizeIs(2));
  EXPECT_THAT(metric.columns[0].entity, Optional(std::string("a")));
  EXPECT_EQ(metric.columns[0].descriptor, 1);
  EXPECT_EQ(metric.columns[1].entity, std::nullopt);
  EXPECT_EQ(metric.columns[1].descriptor, 0);
  EXPECT_THAT(metric.metadata, ElementsAre("a"));
}

TEST_F(QmbinReading, MetricWithoutQuantityNeedsNoTextsForIt) {
  read(kTexts + "14 00 03 07 00 00 00 01 00 02 00 03 00 00 00 00 00 00 00 00 00 00 00");
  ASSERT_THAT(m_found.metrics, SizeIs(1));
  EXPECT_FALSE(m_found.metrics[0].hasQuantity);
  EXPECT_THAT(m_found.faults, IsEmpty());
}

TEST_F(QmbinReading, SystemHasAllItsFields) {
  read(kTexts +
       "40 00 01 08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11 00 00 20 40 00 00 16 45 "
       "00 00 48 44 00 00 c8 44 00 00 c8 42 0d 0c 0b 0a 01 00 02 00 03 00 01 00 02 00 "
       "01 00 02 00 03 00 04 00 03 00 01 00 01 00");
  ASSERT_THAT(m_found.systems, SizeIs(1));
  const QmbinSystem& system = m_found.systems[0];
  EXPECT_EQ(system.firstTimestamp, 0x0102030405060708U);
  EXPECT_EQ(system.lastTimestamp, 0x1112131415161718U);
  EXPECT_EQ(system.durationSeconds, 2.5F);
  EXPECT_EQ(system.highFrequencyMHz, 2400.0F);
  EXPECT_EQ(system.lowFrequencyMHz, 800.0F);
  EXPECT_EQ(system.cpuFrequencyMHz, 1600.0F);
  EXPECT_EQ(system.busFrequencyMHz, 100.0F);
  EXPECT_EQ(system.platformId, 0x0a0b0c0dU);
  EXPECT_EQ(system.platformName + system.cpuCodeName + system.nativeModelName, "abc");
  EXPECT_EQ(system.controllerHubs + system.hostName, "ab");
  EXPECT_EQ(system.packages, 1);
  EXPECT_EQ(system.modules, 2);
  EXPECT_EQ(system.cores, 3);
  EXPECT_EQ(system.threads, 4);
  EXPECT_EQ(system.osType + system.osName, "ca");
  EXPECT_THAT(m_found.faults, IsEmpty());
}

TEST_F(QmbinReading, SeriesKeepsTheNamesOfEarlierFiles) {
  read(kTexts + kDescriptor1 + kMetric7);
  const QmbinCounts counts = read(kSample);
  EXPECT_EQ(counts.texts, 0U);
  EXPECT_THAT(m_found.samples, ElementsAre(Keeper::Sample{9, "b", "c", "b", 2.5F, 1.0F}));
  EXPECT_THAT(m_found.faults, IsEmpty());
}

TEST_F(QmbinReading, LaterFileOfASeriesAloneNamesWhatIsMissing) {
  EXPECT_EQ(read(kSample).faults, 3U);
  EXPECT_THAT(m_found.faults, ElementsAre("0: a sample of a metric that was not told: 7",
                                          "0: the sample's name is a text that was not told: 3",
                                          "0: a descriptor that was not told: 1"));
  EXPECT_THAT(m_found.samples, ElementsAre(Keeper::Sample{9, "none", "", "none", 2.5F, 1.0F}));
}

TEST_F(QmbinReading, FileThatEndsInAHeadKeepsWhatStandsBefore) {
  read(kTexts + "18 00");
  EXPECT_THAT(m_found.faults, ElementsAre("24: the file ends in the head of a record"));
}

TEST_F(QmbinReading, FileThatEndsInAPayloadKeepsWhatStandsBefore) {
  const QmbinCounts counts = read(kTexts + "18 00 04 09 00");
  EXPECT_EQ(counts.texts, 3U);
  EXPECT_THAT(m_found.faults,
              ElementsAre("24: the file ends in a record: 2 of 24 bytes are there"));
}

TEST_F(QmbinReading, UnknownRecordIsLeftOut) {
  EXPECT_EQ(read("02 00 05 00 00" + kTexts).texts, 3U);
  EXPECT_THAT(m_found.faults, ElementsAre("0: unknown type of record 5"));
}

TEST_F(QmbinReading, RecordOfAWrongSizeIsLeftOut) {
  // A text that claims a byte more than there is, and one of each other kind that is too short.
  read("05 00 00 09 00 02 00 61" +
       std::string("01 00 01 00 01 00 02 00 02 00 03 00 00 01 00 04 00"));
  EXPECT_THAT(m_found.faults, ElementsAre("0: a text record of 5 bytes should have 6",
                                          "8: a system record of 1 bytes should have 64",
                                          "12: a descriptor record of 1 bytes should have 6",
                                          "16: a metric record of 2 bytes should have 20",
                                          "21: a sample record of 1 bytes should have 24"));
  EXPECT_THAT(m_found.metrics, IsEmpty());
}

TEST_F(QmbinReading, MetricThatCountsMoreColumnsThanItHasIsLeftOut) {
  read(kTexts + "14 00 03 07 00 00 00 01 00 02 00 03 00 00 00 00 00 00 00 ff ff ff ff");
  EXPECT_THAT(m_found.faults, ElementsAre("24: a metric record of 20 bytes should have 393230"));
}

TEST_F(QmbinReading, NameThatIsToldTwiceIsAFaultAndTheLaterOneHolds) {
  read(kTexts + "05 00 00 03 00 01 00 64" + kDescriptor1 + kDescriptor1 + kMetric7 + kMetric7 +
       kSample);
  EXPECT_THAT(m_found.faults,
              ElementsAre("24: told once more: text 3", "41: told once more: descriptor 1",
                          "83: told once more: metric 7"));
  ASSERT_THAT(m_found.samples, SizeIs(1));
  EXPECT_EQ(m_found.samples[0].name, "d");
}

TEST_F(QmbinReading, NumberZeroIsNoName) {
  read("05 00 00 00 00 01 00 61 06 00 02 00 00 00 00 00 00");
  EXPECT_THAT(m_found.faults,
              ElementsAre("0: a text has the number 0", "8: a descriptor has the number 0"));
}

TEST_F(QmbinReading, OsNamesThatDifferAreAFault) {
  std::string system = "40 00 01";
  for (int i = 0; i < 31; ++i) {
    system += i >= 20 && (i < 25 || i > 28) ? "01 00" : "00 00";
  }
  read(kTexts + system + "02 00");
  EXPECT_THAT(m_found.faults, ElementsAre("24: the two OS names differ"));
}

TEST(FileSource, MissingFileIsToldWithItsPath) {
  const TempDir directory;
  const std::string path = directory.file("none.qmbin");
  try {
    FileSource source(path);
    FAIL() << "the file was opened";
  } catch (const ReadError& error) {
    EXPECT_EQ(error.what(), path + ": No such file or directory");
  }
}

TEST(FileSource, DirectoryIsAnError) {
  const TempDir directory;
  FileSource source(directory.path().string());
  char byte = 0;
  EXPECT_THROW(source.read(&byte, 1), ReadError);
}

}  // namespace
}  // namespace qumetra::test
