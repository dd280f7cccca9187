#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/handles.h"
#include "qumetra/collect/cpu_time_collector.h"
#include "qumetra/collect/process_collector.h"
#include "qumetra/collect/process_stat.h"
#include "tests/collect/collector_fixture.h"

namespace qumetra::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const char* const kMetric = "Process CPU Time";

// The text of a process.

TEST(ProcessStat, FieldsAreAtTheirPlaces) {
  // 14 and 15 are user and kernel time, 22 is the start; the others are numbers of their own.
  const auto stat = parseProcessStat(
      "4711 (make) S 4710 3 4 5 6 7 8 9 10 11 1200 34 16 17 18 19 20 21 987654 23 24 25\n");
  ASSERT_TRUE(stat);
  EXPECT_EQ(4711U, stat->pid);
  EXPECT_EQ(4710U, stat->parentPid);
  EXPECT_EQ("make", stat->name);
  EXPECT_FALSE(stat->hasEnded);
  EXPECT_EQ(1234U, stat->cpuTime);
  EXPECT_EQ(987654U, stat->startTime);
}

TEST(ProcessStat, ANameWithBlanksAndBracketsEndsAtTheLastBracket) {
  const std::string text = processStat({.pid = 7, .name = "a) R (b c)"});
  const auto stat = parseProcessStat(text);
  ASSERT_TRUE(stat);
  EXPECT_EQ("a) R (b c)", stat->name);
  EXPECT_EQ(7U, stat->pid);
}

TEST(ProcessStat, AZombieAndADeadOneHaveEnded) {
  EXPECT_TRUE(parseProcessStat(processStat({.state = 'Z'}))->hasEnded);
  EXPECT_TRUE(parseProcessStat(processStat({.state = 'X'}))->hasEnded);
  EXPECT_FALSE(parseProcessStat(processStat({.state = 'T'}))->hasEnded);
}

TEST(ProcessStat, WhatIsNoSuchTextIsNothing) {
  for (const char* text : {"", "1", "1 (a", "1 a) S 1", ")(", "1 (a)", "1 (a) S 1 2 3",
                           "x (a) S 1 2 3 4 5 6 7 8 9 10 "
                           "11 12 13 14 15 16 17 18 19",
                           "99999999999 (a) S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 "
                           "18 19",
                           "1 (a) S 1 2 3 4 5 6 7 8 9 10 -1 12 13 14 15 16 17 18 19"}) {
    EXPECT_FALSE(parseProcessStat(text)) << text;
  }
}

TEST(ShownProcessName, HasAtMostFifteenBytes) {
  EXPECT_EQ("fifteen-letters", shownProcessName("fifteen-letters"));
  EXPECT_EQ("kworker/0:1H-ev", shownProcessName("kworker/0:1H-events_highpri"));
}

TEST(ShownProcessName, WhatIsNotPrintableUtf8IsAQuestionMark) {
  EXPECT_EQ("a?b?c?", shownProcessName("a\nb\x7f"
                                       "c\xff"));
  EXPECT_EQ("gr\xc3\xbc\xc3\x9f", shownProcessName("gr\xc3\xbc\xc3\x9f"));
  EXPECT_EQ("fourteen bytes?", shownProcessName("fourteen bytes\xc3\xbc")) << "cut in a letter";
}

TEST(ProcessStart, IsAsLongAgoAsTheMachinesClockTells) {
  // The machine is up for 100 s, of which it slept 60 s.
  const Moment now{.monotonic = 40'000'000'000, .sinceBoot = 100'000'000'000};
  EXPECT_EQ(37'500'000'000U, processStartTicks(9750, 10'000'000, now));
  EXPECT_EQ(40'000'000'000U, processStartTicks(10'000, 10'000'000, now));
}

TEST(ProcessStart, OneThatSeemsToLieAheadIsAtTheLastWholeStep) {
  const Moment now{.monotonic = 40, .sinceBoot = 105};
  EXPECT_EQ(35U, processStartTicks(11, 10, now));
  EXPECT_EQ(35U, processStartTicks(UINT64_MAX, 10, now));
}

TEST(ProcessStart, OneFromBeforeASuspensionIsUnknown) {
  const Moment now{.monotonic = 40'000'000'000, .sinceBoot = 100'000'000'000};
  EXPECT_EQ(0U, processStartTicks(5000, 10'000'000, now));
}

// The collector.

class ProcessTest : public CollectorFixture {
 protected:
  static constexpr unsigned kToolPid = 100;
  static constexpr unsigned kCommandPid = 101;
  static constexpr std::uint64_t kSecond = 1'000'000'000;

  ProcessTest() { writeTool(0); }

  void writeTool(std::uint64_t cpuTime) {
    machine.writeProc(
        "self/stat",
        processStat({.pid = kToolPid, .name = "qumetra", .parentPid = 1, .userTime = cpuTime}));
  }
  void writeCommand(ProcessText text) {
    text.pid = kCommandPid;
    text.parentPid = kToolPid;
    machine.writeProc("101/stat", processStat(text));
  }
  /// Opens and starts with a command that began 100 ticks after the first reading.
  void startWithCommand(const std::string& name = "make") {
    writeCommand({.name = name});
    open(collector);
    collector.start(kStart);
    collector.commandStarted(kCommandPid, kStart + 100);
    collector.announce(sink);
  }
  /// The process that an entity of the metric stands for.
  const pwr::Process& processOf(std::size_t index) const {
    const pwr::EntityHandle& entity = *collector.metrics().at(0)->columns().at(index).entity;
    const auto& [attribute, value] = *entity.begin();
    EXPECT_EQ(pwr::AttributeType::Process, attribute->getAttributeType());
    const pwr::DataHandle* handle = nullptr;
    value.toHandle(handle);
    return dynamic_cast<const pwr::Process&>(*handle);
  }

  const std::uint64_t step = cpuTimeStepTicks();
  ProcessCollector collector;
};

TEST_F(ProcessTest, CpuTimeOfTheToolIsTheStepsSinceTheLastReading) {
  writeTool(40);
  openAndStart(collector);
  writeTool(43);
  sample(collector, kStart + kSecond);
  EXPECT_THAT(sink.samplesOf(kMetric).at(0).elements,
              ElementsAre(KeptElement{"qumetra", "Active", 2, 3 * step, kSecond}));
}

TEST_F(ProcessTest, TheCommandIsMeasuredFromItsStart) {
  startWithCommand();
  writeCommand({.name = "make", .userTime = 2, .systemTime = 5});
  sample(collector, kStart + kSecond);
  EXPECT_THAT(sink.samplesOf(kMetric).at(0).elements,
              ElementsAre(KeptElement{"qumetra", "Active", 2, 0, kSecond},
                          KeptElement{"make", "Active", 2, 7 * step, kSecond - 100}));
}

TEST_F(ProcessTest, AnEntityHasItsProcessAsAnAttribute) {
  startWithCommand();
  const pwr::Process& tool = processOf(0);
  EXPECT_EQ(kToolPid, tool.getPid());
  EXPECT_EQ(1U, tool.getParentPid());
  EXPECT_EQ("qumetra", tool.getPath());
  EXPECT_EQ(0U, tool.getEndTime());
  const pwr::Process& command = processOf(1);
  EXPECT_EQ(kCommandPid, command.getPid());
  EXPECT_EQ(kToolPid, command.getParentPid());
  EXPECT_EQ("make", command.getPath());
  EXPECT_EQ(kStart + 100, command.getStartTime());
}

TEST_F(ProcessTest, APathIsTheCommandNameOfAtMostFifteenCharacters) {
  startWithCommand("a_kernel_worker_with_a_long_name");
  EXPECT_EQ("a_kernel_worker", processOf(1).getPath());
}

TEST_F(ProcessTest, TwoProcessesOfOneNameHaveTwoEntityNames) {
  startWithCommand("qumetra");
  EXPECT_EQ("qumetra", collector.metrics().at(0)->columns().at(0).entity->getName());
  EXPECT_EQ("qumetra 101", collector.metrics().at(0)->columns().at(1).entity->getName());
  EXPECT_EQ("qumetra", processOf(1).getPath());
}

TEST_F(ProcessTest, AProcessWithoutANameIsCalledByItsNumber) {
  startWithCommand("");
  EXPECT_EQ("process 101", collector.metrics().at(0)->columns().at(1).entity->getName());
}

TEST_F(ProcessTest, AnEndIsToldOnceBehindTheLastValue) {
  startWithCommand();
  writeCommand({.name = "make", .state = 'Z', .userTime = 4});
  sample(collector, kStart + kSecond);
  EXPECT_EQ(4 * step, KeepingSink::valueOf(sink.samplesOf(kMetric).at(0), "make", "Active"));
  EXPECT_THAT(sink.order, ElementsAre("container", "sample", "ended"));
  EXPECT_EQ(kStart + kSecond, processOf(1).getEndTime());
  sample(collector, kStart + 2 * kSecond);
  EXPECT_THAT(sink.samplesOf(kMetric).at(1).elements,
              ElementsAre(KeptElement{"qumetra", "Active", 2, 0, kSecond}));
  EXPECT_EQ(std::vector<const pwr::DataHandle*>{&processOf(1)}, sink.ends);
  EXPECT_EQ(kStart + kSecond, processOf(1).getEndTime());
}

TEST_F(ProcessTest, AProcessThatOutlivesTheCollectionIsKnownUpToTheLastReading) {
  startWithCommand();
  writeCommand({.name = "make", .state = 'Z'});
  sample(collector, kStart + kSecond);
  sample(collector, kStart + 2 * kSecond);
  SummaryContext summary{.model = model, .sink = sink};
  collector.summarise(summary);
  EXPECT_EQ(kStart + 2 * kSecond, processOf(0).getEndTime());
  EXPECT_EQ(kStart + kSecond, processOf(1).getEndTime());
  EXPECT_EQ(std::vector<const pwr::DataHandle*>{&processOf(1)}, sink.ends);
}

TEST_F(ProcessTest, AProcessThatIsGoneHasEnded) {
  startWithCommand();
  machine.writeProc("101/stat", "");
  sample(collector, kStart + kSecond);
  EXPECT_THAT(sink.samplesOf(kMetric).at(0).elements, testing::SizeIs(1));
  EXPECT_EQ(std::vector<const pwr::DataHandle*>{&processOf(1)}, sink.ends);
}

TEST_F(ProcessTest, ATimeThatStepsBackIsNone) {
  writeTool(40);
  openAndStart(collector);
  writeTool(39);
  sample(collector, kStart + kSecond);
  EXPECT_EQ(0U, sink.samplesOf(kMetric).at(0).elements.at(0).value);
}

TEST_F(ProcessTest, AProcessOfAnotherParentIsNotTheCommand) {
  machine.writeProc("101/stat", processStat({.pid = kCommandPid, .name = "sshd", .parentPid = 1}));
  open(collector);
  collector.start(kStart);
  collector.commandStarted(kCommandPid, kStart);
  EXPECT_THAT(notices, ElementsAre("the command is not among the processes: " + machine.procfs() +
                                   "/101/stat does not tell of it"));
  EXPECT_EQ(1U, collector.metrics().at(0)->columns().size());
}

TEST_F(ProcessTest, ACommandThatCannotBeReadIsANotice) {
  open(collector);
  collector.start(kStart);
  collector.commandStarted(kCommandPid, kStart);
  EXPECT_THAT(notices, ElementsAre(StartsWith("the command is not among the processes: ")));
}

TEST_F(ProcessTest, WithoutACommandThereIsTheToolAlone) {
  openAndStart(collector);
  EXPECT_EQ(1U, collector.metrics().at(0)->columns().size());
  EXPECT_THAT(notices, IsEmpty());
}

TEST_F(ProcessTest, AnUnreadableProcfsIsMissing) {
  machine.writeProc("self/stat", "nothing\n");
  try {
    open(collector);
    FAIL() << "opened";
  } catch (const SourceMissing& missing) {
    EXPECT_THAT(missing.what(), HasSubstr("/self/stat: does not tell of a process"));
  }
}

TEST_F(ProcessTest, WithoutProcfsTheSourceIsMissing) {
  std::filesystem::remove(machine.procfs() + "/self/stat");
  try {
    open(collector);
    FAIL() << "opened";
  } catch (const SourceMissing& missing) {
    EXPECT_THAT(missing.what(),
                HasSubstr("/self/stat: cannot be read: No such file or directory; check that"));
  }
}

}  // namespace
}  // namespace qumetra::test
