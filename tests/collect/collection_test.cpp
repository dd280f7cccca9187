#include "qumetra/collect/collection.h"

#include <chrono>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/configuration.h"
#include "host/handles.h"
#include "host/platform_metadata.h"
#include "qumetra/model/model.h"
#include "tests/collect/collection_fixture.h"

namespace qumetra::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

TEST_F(CollectionTest, TheRecordingHoldsTheMessagesInOrder) {
  collect();
  const Replay replay(options.recordPath);
  EXPECT_THAT(replay.warnings, IsEmpty());
  EXPECT_THAT(replay.sink.order,
              ElementsAre("system", "header", "container", "sample", "header", "text", "table"));
  EXPECT_EQ(0U, replay.sink.systemId);
}

TEST_F(CollectionTest, TheSystemRecordCarriesTheTrueEnd) {
  const CollectionResult result = collect();
  const Replay replay(options.recordPath);
  const pwr::SystemMetadata& metadata = *replay.sink.metadata;
  const auto elapsed = static_cast<std::uint64_t>(result.progress.elapsed.count());
  EXPECT_EQ(elapsed, metadata.m_lastTimestamp - metadata.m_firstTimestamp);
  EXPECT_GE(result.progress.elapsed, milliseconds(50));
  EXPECT_EQ(metadata.m_lastTimestamp, replay.sink.samples.back().timestamp);
  EXPECT_NEAR(0.05, metadata.getCollectionDurationSec(), 5.0);
  // The record itself was rewritten: a change later in the stream would come too late for readers.
  EXPECT_THAT(readFile(options.recordPath), testing::Not(HasSubstr("\n{\"metadata\"")));
}

TEST_F(CollectionTest, TheFirstSampleIsAfterTheStart) {
  collect();
  const Replay replay(options.recordPath);
  EXPECT_GT(replay.sink.samples.front().timestamp, replay.sink.metadata->m_firstTimestamp);
}

TEST_F(CollectionTest, TimestampsOfAMetricGrow) {
  options.duration = milliseconds(200);
  collect();
  const Replay replay(options.recordPath);
  const auto samples = replay.sink.samplesOf("CPU Time");
  ASSERT_GT(samples.size(), 1U);
  for (std::size_t i = 1; i < samples.size(); ++i) {
    EXPECT_GT(samples[i].timestamp, samples[i - 1].timestamp);
  }
}

TEST_F(CollectionTest, DurationsOfAMetricAddUpToTheWholeTime) {
  collect();
  const Replay replay(options.recordPath);
  std::uint64_t sum = 0;
  for (const KeptSample& sample : replay.sink.samplesOf("Interrupts")) {
    sum += sample.elements.at(0).duration;
  }
  const pwr::SystemMetadata& metadata = *replay.sink.metadata;
  EXPECT_EQ(metadata.m_lastTimestamp - metadata.m_firstTimestamp, sum);
}

TEST_F(CollectionTest, ARunShorterThanTheIntervalHasOneSample) {
  options.interval = std::chrono::hours(1);
  options.duration = milliseconds(1);
  collect();
  const Replay replay(options.recordPath);
  EXPECT_EQ(1U, replay.sink.samplesOf("CPU Time").size());
}

TEST_F(CollectionTest, MetricsWithoutAQuantityComeFirstAtEachMoment) {
  options.interval = std::chrono::hours(1);
  collect();
  const Replay replay(options.recordPath);
  std::vector<std::string> metrics;
  for (const KeptSample& sample : replay.sink.samples) {
    metrics.push_back(sample.metric);
  }
  EXPECT_THAT(metrics, ElementsAre("CPU Time", "CPU Idle States", "Process CPU Time", "Interrupts",
                                   "Context Switches", "CPU Idle State Entries"));
}

TEST_F(CollectionTest, MetricIdsCountFromOneOverAllCollectors) {
  collect();
  const Replay replay(options.recordPath);
  std::vector<std::uint32_t> ids;
  for (const auto& container : replay.sink.containers) {
    ids.push_back(container.metricId);
  }
  EXPECT_THAT(ids, ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(CollectionTest, EachMetricHasATitleTableWithItsOwnId) {
  collect();
  const Replay replay(options.recordPath);
  std::vector<std::string> titles;
  std::vector<std::uint32_t> ids;
  for (const KeptTable& table : replay.sink.tables) {
    if (table.type == 0) {
      titles.push_back(table.title);
      ids.push_back(table.id);
    }
  }
  EXPECT_THAT(titles, ElementsAre("CPU Time Summary: Residency (Percentage and Time)",
                                  "Interrupts Summary: Average Rate and Total",
                                  "Context Switches Summary: Average Rate and Total",
                                  "CPU Idle States Summary: Residency (Percentage and Time)",
                                  "CPU Idle State Entries Summary: Average Rate and Total",
                                  "Process CPU Time Summary: Residency (Percentage and Time)"));
  EXPECT_THAT(ids, ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(CollectionTest, TheOrderOfMetricsIsThatOfTheCollectors) {
  collect();
  const Replay replay(options.recordPath);
  const auto* order = pwr::WriterInterfaceConfigFileParser::instance();
  std::deque<std::string> names;
  ASSERT_TRUE(order->getFeatureOrder(names));
  EXPECT_THAT(names, ElementsAre("cpu_time", "cpu_idle", "process"));
  ASSERT_TRUE(order->getMetricOrderForFeature(names, "cpu_idle"));
  EXPECT_THAT(names, ElementsAre("CPU Idle States", "CPU Idle State Entries"));
}

TEST_F(CollectionTest, TheReportNamesToolStartAndDuration) {
  options.commandLine = {"qumetra", "collect", "-t", "1"};
  collect();
  const Replay replay(options.recordPath);
  EXPECT_THAT(replay.sink.headers.front(), StartsWith("Qumetra "));
  EXPECT_THAT(replay.sink.headers, testing::Contains("Collected by: qumetra collect -t 1"));
  EXPECT_THAT(replay.sink.headers, testing::Contains(StartsWith("Start: 2")));
  EXPECT_THAT(replay.sink.headers, testing::Contains(StartsWith("Duration: ")));
}

TEST_F(CollectionTest, TooFewSamplesAreAWarningInReportAndNotices) {
  options.interval = milliseconds(100);
  collect();
  const Replay replay(options.recordPath);
  EXPECT_THAT(notices, ElementsAre(StartsWith("only 1 sample of each metric")));
  EXPECT_THAT(replay.sink.texts, ElementsAre(StartsWith("Warning: only 1 sample of each metric")));
}

TEST_F(CollectionTest, AMissingSourceIsOneLineAndTheRestIsCollected) {
  m_machine.removeSys("devices/system/cpu/cpu0/cpuidle");
  m_machine.removeSys("devices/system/cpu/cpu1/cpuidle");
  options.interval = milliseconds(100);
  collect();
  EXPECT_THAT(notices.at(0), StartsWith("source cpu_idle is left out: " + m_machine.sysfs()));
  const Replay replay(options.recordPath);
  EXPECT_EQ(4U, replay.sink.metrics.size());
  EXPECT_THAT(replay.sink.texts, testing::Contains(StartsWith("Warning: source cpu_idle is left")));
}

TEST_F(CollectionTest, AMissingSourceThatWasNamedIsAnError) {
  m_machine.removeSys("devices/system/cpu/cpu0/cpuidle");
  m_machine.removeSys("devices/system/cpu/cpu1/cpuidle");
  options.sources = {"cpu_time", "cpu_idle"};
  EXPECT_THAT(failureOfOpen(), StartsWith("source cpu_idle: " + m_machine.sysfs()));
  EXPECT_FALSE(std::filesystem::exists(options.recordPath));
}

TEST_F(CollectionTest, ASourceThatIsNotThereAtAllListsTheKnownOnes) {
  options.sources = {"cpu_tim"};
  EXPECT_EQ("unknown source \"cpu_tim\"; known are: cpu_time, cpu_idle, process", failureOfOpen());
}

TEST_F(CollectionTest, NothingToCollectIsAnErrorWithTheReasons) {
  options.procfs = directory.file("none");
  options.sysfs = directory.file("none");
  EXPECT_THAT(failureOfOpen(),
              testing::AllOf(StartsWith("nothing to collect on this machine: "),
                             HasSubstr("/stat: cannot be read"), HasSubstr("CONFIG_CPU_IDLE")));
  EXPECT_TRUE(notices.empty()) << "the error tells it all";
}

TEST_F(CollectionTest, OnlyTheChosenSourcesAreCollected) {
  options.sources = {"cpu_idle"};
  collect();
  const Replay replay(options.recordPath);
  EXPECT_EQ(2U, replay.sink.metrics.size());
  EXPECT_EQ(1U, replay.sink.metrics.at("CPU Idle States")->metricId);
}

TEST_F(CollectionTest, AnIntervalOfZeroIsAnError) {
  options.interval = milliseconds(0);
  EXPECT_EQ("the interval between samples must be above 0", failureOfOpen());
}

TEST_F(CollectionTest, ATimeBelowZeroIsAnError) {
  options.duration = milliseconds(-1);
  EXPECT_EQ("the time to collect must not be below 0", failureOfOpen());
}

TEST_F(CollectionTest, WithoutAnyTakerRunIsAnError) {
  options.recordPath.clear();
  EXPECT_THROW(collect(), CollectionError);
}

TEST_F(CollectionTest, ARecordingThatCannotBeMadeIsAnError) {
  options.recordPath = "/proc/out.qmrec";
  try {
    collect();
    FAIL() << "collected";
  } catch (const CollectionError& error) {
    EXPECT_THAT(error.what(), StartsWith(options.recordPath + ": "));
  }
}

TEST_F(CollectionTest, AFullDiskIsAnError) {
  options.recordPath = "/dev/full";
  try {
    collect();
    FAIL() << "collected";
  } catch (const CollectionError& error) {
    EXPECT_STREQ("/dev/full: No space left on device", error.what());
  }
}

TEST_F(CollectionTest, AStopRequestEndsItEarlyWithResults) {
  options.duration.reset();
  std::thread later([this] {
    std::this_thread::sleep_for(milliseconds(30));
    stop.requestStop();
  });
  const CollectionResult result = collect();
  later.join();
  EXPECT_TRUE(result.stopped);
  const Replay replay(options.recordPath);
  EXPECT_EQ("table", replay.sink.order.back());
  EXPECT_THAT(replay.sink.headers, testing::Contains("Ended: early, on request"));
}

TEST_F(CollectionTest, AStopRequestBeforeTheStartGivesOneSample) {
  stop.requestStop();
  EXPECT_TRUE(collect().stopped);
  EXPECT_EQ(1U, Replay(options.recordPath).sink.samplesOf("CPU Time").size());
}

TEST_F(CollectionTest, AKilledCollectionLeavesARecordingThatReplays) {
  // A copy taken while it runs is what a kill would leave.
  const std::string copy = directory.file("killed.qmrec");
  options.duration = milliseconds(1300);
  options.progress = [&](const CollectionProgress& progress) {
    if (progress.elapsed > milliseconds(1150) && !std::filesystem::exists(copy)) {
      std::filesystem::copy_file(options.recordPath, copy);
    }
  };
  collect();
  const Replay replay(copy);
  EXPECT_GT(replay.sink.samplesOf("CPU Time").size(), 10U);
  EXPECT_GE(replay.sink.metadata->getCollectionDurationSec(), 1.0) << "kept up to date";
  EXPECT_THAT(replay.sink.headers, testing::Contains(StartsWith("Host: ")));
}

TEST_F(CollectionTest, RunningWithoutOpeningIsAnError) {
  Model model;
  Collection collection(options, model, stop);
  EXPECT_THROW(collection.run(), CollectionError);
}

TEST_F(CollectionTest, ProgressGrowsWithTheSamples) {
  options.duration = milliseconds(200);
  std::vector<CollectionProgress> seen;
  options.progress = [&seen](const CollectionProgress& progress) { seen.push_back(progress); };
  const CollectionResult result = collect();
  ASSERT_GT(seen.size(), 1U);
  EXPECT_EQ(6U, seen[0].samples) << "one message per metric";
  EXPECT_GT(seen[1].elapsed, seen[0].elapsed);
  EXPECT_EQ(result.progress.samples, seen.back().samples);
  EXPECT_FALSE(result.stopped);
}

TEST_F(CollectionTest, SourcesAreListedWithWhatTheyRead) {
  const auto sources = Collection::allSources();
  ASSERT_EQ(3U, sources.size());
  EXPECT_EQ("cpu_time", sources[0].name);
  EXPECT_EQ("<procfs>/stat", sources[0].reads);
  EXPECT_EQ("cpu_idle", sources[1].name);
  EXPECT_EQ("process", sources[2].name);
}

// This machine.

TEST(ThisMachine, TheModesOfACpuAddUpToAboutTheTime) {
  StopSignal stop;
  Model model;
  KeepingSink sink;
  CollectionOptions options;
  options.sources = {"cpu_time"};
  options.duration = milliseconds(300);
  Collection collection(options, model, stop);
  collection.open();
  const CollectionResult result = collection.run(&sink);
  ASSERT_EQ("CPU 0", sink.metrics.at("CPU Time")->entityList.at(0)->getName());
  double sum = 0;
  for (const KeptSample& sample : sink.samplesOf("CPU Time")) {
    for (std::size_t mode = 0; mode < 8; ++mode) {
      sum += static_cast<double>(sample.elements.at(mode).value);
    }
  }
  // The kernel counts each of the eight modes in steps of its own.
  const auto elapsed = static_cast<double>(result.progress.elapsed.count());
  EXPECT_NEAR(sum, elapsed, 0.5 * elapsed);
}

TEST(ThisMachine, TheMetadataIsWhatWritersNeed) {
  StopSignal stop;
  Model model;
  KeepingSink sink;
  CollectionOptions options;
  options.duration = milliseconds(1);
  Collection collection(options, model, stop);
  collection.open();
  collection.run(&sink);
  ASSERT_NE(nullptr, sink.metadata);
  EXPECT_EQ("x86_64", sink.metadata->m_osType);
  EXPECT_FALSE(sink.metadata->m_hostName.empty());
  const auto* cpu = dynamic_cast<const pwr::CPUMetadata*>(sink.metadata->m_platformMetadata.at(1));
  ASSERT_NE(nullptr, cpu);
  EXPECT_GT(cpu->m_cpuWords.cpuFrequencyMHz, 0);
  EXPECT_GT(cpu->m_topology.getNumThreads(), 0U);
  for (const KeptSample& sample : sink.samples) {
    for (const KeptElement& element : sample.elements) {
      EXPECT_FALSE(element.state.empty());
      EXPECT_EQ(2, element.tag);
    }
  }
}

}  // namespace
}  // namespace qumetra::test
