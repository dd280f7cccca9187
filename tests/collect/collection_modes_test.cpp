// Collections with a command, and live ones.
#include <signal.h>

#include <chrono>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qumetra/collect/collection.h"
#include "qumetra/model/model.h"
#include "tests/collect/collection_fixture.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

// With a command.

TEST_F(CollectionTest, ACollectionLastsAsLongAsItsCommand) {
  options.duration.reset();
  options.command = {"sh", "-c", "sleep 0.05; exit 7"};
  const CollectionResult result = collect();
  EXPECT_EQ(7, result.commandStatus);
  EXPECT_FALSE(result.stopped);
  EXPECT_GE(result.progress.elapsed, milliseconds(50));
  EXPECT_THAT(Replay(options.recordPath).sink.headers,
              testing::IsSupersetOf({"Command: sh -c 'sleep 0.05; exit 7'", "Command status: 7"}));
}

TEST_F(CollectionTest, ACommandThatSimplyWasShortIsARemarkAndStandsInTheReport) {
  std::vector<std::string> remarks;
  options.remark = [&remarks](const std::string& line) { remarks.push_back(line); };
  options.interval = milliseconds(100);
  options.sources = {"cpu_time"};
  options.command = {"true"};
  collect();
  EXPECT_THAT(notices, IsEmpty());
  EXPECT_THAT(remarks, ElementsAre(testing::StartsWith("only 1 sample of each metric")));
  EXPECT_THAT(Replay(options.recordPath).sink.texts,
              ElementsAre(testing::StartsWith("Warning: only 1 sample of each metric")));
}

TEST_F(CollectionTest, ACommandThatIsNotThereLeavesNothingBehind) {
  options.command = {"no-such-command-at-all"};
  try {
    collect();
    FAIL() << "collected";
  } catch (const CommandError& error) {
    EXPECT_EQ(127, error.status());
  }
  EXPECT_FALSE(std::filesystem::exists(options.recordPath));
}

TEST_F(CollectionTest, ATimeLimitsTheMeasuringAndTheCommandGoesOn) {
  options.command = {"sh", "-c", "sleep 0.3; exit 5"};
  options.duration = milliseconds(20);
  Model model;
  Collection collection(options, model, stop);
  collection.open();
  const CollectionResult result = collection.run();
  EXPECT_EQ(std::nullopt, result.commandStatus);
  EXPECT_TRUE(collection.commandRuns());
  EXPECT_EQ(5, collection.waitForCommand());
  EXPECT_FALSE(collection.commandRuns());
  EXPECT_EQ(5, collection.waitForCommand()) << "asked again";
}

TEST_F(CollectionTest, AfterAStopRequestACommandThatGoesOnIsToldToEnd) {
  options.command = {"sleep", "1000"};
  stop.requestStop();
  Model model;
  Collection collection(options, model, stop);
  collection.open();
  EXPECT_TRUE(collection.run().stopped);
  EXPECT_EQ(128 + SIGTERM, collection.waitForCommand());
}

TEST_F(CollectionTest, WithoutACommandThereIsNothingToWaitFor) {
  Model model;
  Collection collection(options, model, stop);
  EXPECT_FALSE(collection.commandRuns());
  EXPECT_EQ(0, collection.waitForCommand());
}

// Live.

TEST_F(CollectionTest, ALiveCollectionDeliversWithoutARecording) {
  options.recordPath.clear();
  KeepingSink sink;
  collect(&sink);
  EXPECT_THAT(sink.order, ElementsAre("system", "header", "container", "sample", "flush",
                                      "metadata", "header", "text", "table"));
}

class LiveCollectionTest : public CollectionTest {
 protected:
  LiveCollectionTest() {
    options.recordPath.clear();
    options.interval = milliseconds(5);
  }
  KeepingSink sink;
};

TEST_F(LiveCollectionTest, FlushesComeEveryPeriodAndAtTheEnd) {
  options.duration = milliseconds(400);
  options.flushPeriod = milliseconds(50);
  collect(&sink);
  ASSERT_GE(sink.flushes.size(), 3U);
  EXPECT_LT(sink.flushes.front(), sink.flushes.back());
  EXPECT_EQ(sink.samples.back().timestamp, sink.flushes.back());
}

TEST_F(LiveCollectionTest, ARequestFlushesOnce) {
  stop.requestFlush();
  collect(&sink);
  EXPECT_EQ(2U, sink.flushes.size()) << "one asked for, one at the end";
}

TEST_F(LiveCollectionTest, WithoutPeriodAndRequestThereIsTheLastFlushOnly) {
  collect(&sink);
  EXPECT_EQ(1U, sink.flushes.size());
}

TEST_F(LiveCollectionTest, ARecordingHoldsTheSameAndTheFlushes) {
  options.recordPath = directory.file("live.qmrec");
  options.flushPeriod = milliseconds(20);
  collect(&sink);
  const Replay replay(options.recordPath);
  EXPECT_EQ(sink.flushes.size(), replay.sink.flushes.size());
  ASSERT_EQ(sink.samples.size(), replay.sink.samples.size());
  for (std::size_t i = 0; i < sink.samples.size(); ++i) {
    EXPECT_EQ(sink.samples[i].timestamp, replay.sink.samples[i].timestamp);
    EXPECT_EQ(sink.samples[i].elements, replay.sink.samples[i].elements);
  }
  EXPECT_EQ(sink.headers, replay.sink.headers);
  EXPECT_EQ(sink.rowsOf("CPU Time Summary: Residency (Percentage and Time)"),
            replay.sink.rowsOf("CPU Time Summary: Residency (Percentage and Time)"));
}

TEST_F(CollectionTest, ARecordedCollectionIgnoresFlushRequests) {
  stop.requestFlush();
  collect();
  EXPECT_THAT(Replay(options.recordPath).sink.flushes, IsEmpty());
}

}  // namespace
}  // namespace qumetra::test
