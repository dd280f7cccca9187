#include "qumetra/collect/report_texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/platform_metadata.h"
#include "qumetra/collect/system_scan.h"

namespace qumetra::test {
namespace {

using testing::ElementsAre;

TEST(SpanText, IsInMillisecondsBelowASecond) {
  EXPECT_EQ("100 ms", spanText(100'000'000));
  EXPECT_EQ("0.5 ms", spanText(500'000));
  EXPECT_EQ("1 s", spanText(1'000'000'000));
  EXPECT_EQ("2.5 s", spanText(2'500'000'000));
}

TEST(CommandText, QuotesWhatAShellWouldSplit) {
  EXPECT_EQ("sh -c 'echo a; b' '' 'it'\\''s'", commandText({"sh", "-c", "echo a; b", "", "it's"}));
}

class ReportTexts : public testing::Test {
 protected:
  ReportTexts() {
    m_cpu.m_description = "Some CPU";
    m_cpu.m_topology.addThread({.package = 0, .module = std::nullopt, .core = 0, .id = 0});
    m_cpu.m_topology.addThread({.package = 0, .module = std::nullopt, .core = 0, .id = 1});
    m_metadata.m_hostName = "host";
    m_metadata.m_platformName = "board";
    m_metadata.m_cpuCodeName = "family 1 model 2 stepping 3";
    m_metadata.m_osName = "Some Linux";
    m_metadata.m_osVersion = "6.1";
    m_metadata.m_osType = "x86_64";
    m_metadata.m_collectionStartTime = "2001-02-03 04:05:06 UTC";
    m_metadata.m_platformMetadata[1] = &m_cpu;
    m_metadata.m_firstTimestamp = 500;
    m_metadata.m_lastTimestamp = 2'500'000'500;
    m_setup.intervalTicks = 100'000'000;
    m_setup.sources = {"cpu_time", "cpu_idle"};
  }

  pwr::CPUMetadata m_cpu;
  pwr::SystemMetadata m_metadata;
  CollectionSetup m_setup;
};

TEST_F(ReportTexts, TheOpeningTellsWhatWasMeasuredWhereAndHow) {
  m_metadata.m_collectorArguments = {"qumetra", "collect"};
  m_setup.command = {"sleep", "1"};
  EXPECT_THAT(
      openingLines(m_metadata, m_setup),
      ElementsAre("Qumetra " + toolVersionText(), "Host: host", "Platform: board",
                  "Processor: Some CPU; family 1 model 2 stepping 3; 1 package; 1 core; 2 threads",
                  "Operating system: Some Linux; kernel 6.1; x86_64",
                  "Start: 2001-02-03 04:05:06 UTC", "Interval: 100 ms",
                  "Sources: cpu_time; cpu_idle", "Collected by: qumetra collect",
                  "Command: sleep 1"));
}

TEST_F(ReportTexts, TheClosingTellsDurationAndSamples) {
  EXPECT_THAT(closingLines(m_metadata, m_setup, {.moments = 25}),
              ElementsAre("Duration: 2.5 s", "Samples: 25 of each metric"));
}

TEST_F(ReportTexts, TheClosingTellsAnEarlyEndAndTheCommandsStatus) {
  m_setup.command = {"false"};
  EXPECT_THAT(
      closingLines(m_metadata, m_setup, {.moments = 1, .stopped = true}),
      ElementsAre("Duration: 2.5 s", "Samples: 1 of each metric", "Ended: early, on request",
                  "Command status: still running when the collection ended"));
  EXPECT_THAT(closingLines(m_metadata, m_setup, {.moments = 1, .commandStatus = 1}),
              ElementsAre("Duration: 2.5 s", "Samples: 1 of each metric", "Command status: 1"));
}

TEST(DoubtLines, EnoughSamplesInTimeLeaveNoDoubt) {
  EXPECT_EQ(std::nullopt, fewSamplesLine({.moments = 10}));
  EXPECT_EQ(std::nullopt, missedSamplesLine({.moments = 10}));
}

TEST(DoubtLines, TooFewSamplesAreADoubt) {
  EXPECT_EQ(
      "only 9 samples of each metric; shares and rates are coarse below 10, a longer time or a "
      "shorter interval helps",
      fewSamplesLine({.moments = 9}));
}

TEST(DoubtLines, MissedSamplesAreADoubt) {
  EXPECT_EQ(
      "1 sample came too late and was left out; totals cover the whole time all the same, a longer "
      "interval helps",
      missedSamplesLine({.moments = 10, .missed = 1}));
}

TEST(DoubtLines, ValuesThatWereLeftOutAreADoubt) {
  EXPECT_EQ(std::nullopt, leftOutValuesLine({}));
  EXPECT_EQ("1 value was no finite number and is left out of the samples",
            leftOutValuesLine({.leftOutValues = 1}));
  EXPECT_EQ("2 values were no finite numbers and are left out of the samples",
            leftOutValuesLine({.leftOutValues = 2}));
}

TEST(DoubtLines, FlushesThatWereJoinedAreADoubt) {
  EXPECT_EQ(std::nullopt, joinedFlushesLine({}));
  EXPECT_EQ(
      "1 flush came much too late and was joined with the next; no sample is lost, a longer period "
      "helps",
      joinedFlushesLine({.joinedFlushes = 1}));
}

}  // namespace
}  // namespace qumetra::test
