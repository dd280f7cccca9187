#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/handles.h"
#include "host/quantity.h"
#include "qumetra/collect/cpu_time_collector.h"
#include "tests/collect/collector_fixture.h"

namespace qumetra::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

ProcStat parsed(const std::string& text) {
  ProcStat stat;
  parseProcStat(text, stat);
  return stat;
}

TEST(ProcStat, EveryCpuHasItsModesInOrder) {
  const ProcStat stat = parsed("cpu  9 9 9 9 9 9 9 9 9 9\ncpu3 1 2 3 4 5 6 7 8 99 99\n");
  ASSERT_EQ(1U, stat.cpus.size());
  EXPECT_EQ(3U, stat.cpus[0].cpu);
  EXPECT_THAT(stat.cpus[0].modes, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST(ProcStat, ModesAnOldKernelDoesNotKnowAreZero) {
  const ProcStat stat = parsed("cpu0 1 2 3 4\n");
  ASSERT_EQ(1U, stat.cpus.size());
  EXPECT_THAT(stat.cpus[0].modes, ElementsAre(1, 2, 3, 4, 0, 0, 0, 0));
}

TEST(ProcStat, CountersAreTheFirstNumberOfTheirLines) {
  const ProcStat stat = parsed("intr 12 1 2 3\nctxt 34\n");
  EXPECT_EQ(12U, stat.interrupts);
  EXPECT_EQ(34U, stat.contextSwitches);
}

TEST(ProcStat, GarbageIsPassedOverAndTheRestCounts) {
  const ProcStat stat = parsed(
      "cpu0 1 2 3\ncpu1 1 2 x 4\ncpu2 1 2 3 -4\ncpux 1 2 3 4\ncpu 5 5 5 5\ncpu4\n\n"
      "cpu5 1 2 3 18446744073709551616\ncpu99999999999 1 2 3 4\n\xff\xfe\nintr x\nctxt\n"
      "cpu6 1 2 3 4");
  ASSERT_EQ(1U, stat.cpus.size());
  EXPECT_EQ(6U, stat.cpus[0].cpu);
  EXPECT_EQ(std::nullopt, stat.interrupts);
  EXPECT_EQ(std::nullopt, stat.contextSwitches);
}

TEST(ProcStat, AReadingReplacesTheOneBefore) {
  ProcStat stat = parsed("cpu0 1 2 3 4\nintr 1\nctxt 1\n");
  parseProcStat("", stat);
  EXPECT_TRUE(stat.cpus.empty());
  EXPECT_EQ(std::nullopt, stat.interrupts);
  EXPECT_EQ(std::nullopt, stat.contextSwitches);
}

/// The modes of a CPU when all but user and idle stand still.
std::array<std::uint64_t, 8> modes(std::uint64_t user, std::uint64_t idle,
                                   std::uint64_t iowait = 0) {
  return {user, 10, 20, idle, iowait, 30, 40, 50};
}

class CpuTimeTest : public CollectorFixture {
 protected:
  /// The ticks of one step of the kernel's counters.
  const std::uint64_t step = 1'000'000'000 / static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));

  void writeStat(const std::string& cpus, std::uint64_t interrupts = 0,
                 std::uint64_t switches = 0) {
    machine.writeProc("stat", "cpu  1 2 3 4 5 6 7 8 9 10\n" + cpus + "intr " +
                                  std::to_string(interrupts) + " 5 6\nctxt " +
                                  std::to_string(switches) + "\nbtime 1\n");
  }
  CpuTimeCollector collector;
};

TEST_F(CpuTimeTest, EachModeHasTheTimeOfTheIntervalInTicks) {
  machine.addTwoPackages();
  writeStat(cpuLine(0, {100, 10, 20, 30, 40, 50, 60, 70}) + cpuLine(3, modes(0, 0)));
  openAndStart(collector);
  writeStat(cpuLine(0, {101, 12, 23, 34, 45, 56, 67, 78}) + cpuLine(3, modes(0, 7)));
  sample(collector, 5000);

  const auto samples = sink.samplesOf("CPU Time");
  ASSERT_EQ(1U, samples.size());
  EXPECT_EQ(5000U, samples[0].timestamp);
  const std::string cpu0 = "Package 0/Core 0/CPU 0";
  const std::string cpu3 = "Package 1/Core 1/CPU 3";
  const std::uint8_t unsignedTag = 2;
  EXPECT_THAT(samples[0].elements,
              ElementsAre(KeptElement{cpu0, "user", unsignedTag, 1 * step, 4000},
                          KeptElement{cpu0, "nice", unsignedTag, 2 * step, 4000},
                          KeptElement{cpu0, "system", unsignedTag, 3 * step, 4000},
                          KeptElement{cpu0, "idle", unsignedTag, 4 * step, 4000},
                          KeptElement{cpu0, "iowait", unsignedTag, 5 * step, 4000},
                          KeptElement{cpu0, "irq", unsignedTag, 6 * step, 4000},
                          KeptElement{cpu0, "softirq", unsignedTag, 7 * step, 4000},
                          KeptElement{cpu0, "steal", unsignedTag, 8 * step, 4000},
                          KeptElement{cpu3, "user", unsignedTag, 0, 4000},
                          KeptElement{cpu3, "nice", unsignedTag, 0, 4000},
                          KeptElement{cpu3, "system", unsignedTag, 0, 4000},
                          KeptElement{cpu3, "idle", unsignedTag, 7 * step, 4000},
                          KeptElement{cpu3, "iowait", unsignedTag, 0, 4000},
                          KeptElement{cpu3, "irq", unsignedTag, 0, 4000},
                          KeptElement{cpu3, "softirq", unsignedTag, 0, 4000},
                          KeptElement{cpu3, "steal", unsignedTag, 0, 4000}));
}

TEST_F(CpuTimeTest, TheFirstReadingGivesNoSample) {
  writeStat(cpuLine(0, modes(1, 1)), 1, 1);
  openAndStart(collector);
  EXPECT_TRUE(sink.samples.empty());
}

TEST_F(CpuTimeTest, CountersAreDeltasWithTheirDuration) {
  writeStat(cpuLine(0, modes(1, 1)), 1000, 50);
  openAndStart(collector);
  writeStat(cpuLine(0, modes(1, 1)), 1007, 53);
  sample(collector, 3000);
  EXPECT_THAT(sink.samplesOf("Interrupts").at(0).elements,
              ElementsAre(KeptElement{"System", "Interrupts", 2, 7, 2000}));
  EXPECT_THAT(sink.samplesOf("Context Switches").at(0).elements,
              ElementsAre(KeptElement{"System", "Context Switches", 2, 3, 2000}));
}

TEST_F(CpuTimeTest, ACounterThatStepsBackGivesZero) {
  writeStat(cpuLine(0, modes(5, 5, 100)), 1000);
  openAndStart(collector);
  writeStat(cpuLine(0, modes(6, 5, 90)), 900);
  sample(collector, 3000);
  const auto sample = sink.samplesOf("CPU Time").at(0);
  EXPECT_EQ(0U, KeepingSink::valueOf(sample, "Package 0/Core 0/CPU 0", "iowait"));
  EXPECT_EQ(step, KeepingSink::valueOf(sample, "Package 0/Core 0/CPU 0", "user"));
  EXPECT_EQ(0U, sink.samplesOf("Interrupts").at(0).elements.at(0).value);
}

TEST_F(CpuTimeTest, ACpuThatGoesGivesNoValuesAndStartsAfreshWhenItIsBack) {
  const std::string cpu1 = "Package 0/Core 1/CPU 1";
  writeStat(cpuLine(0, modes(0, 0)) + cpuLine(1, modes(10, 0)));
  openAndStart(collector);
  writeStat(cpuLine(0, modes(1, 0)));
  sample(collector, 2000);
  EXPECT_EQ(8U, sink.samplesOf("CPU Time").at(0).elements.size());
  writeStat(cpuLine(0, modes(2, 0)) + cpuLine(1, modes(500, 0)));
  sample(collector, 3000);
  EXPECT_EQ(8U, sink.samplesOf("CPU Time").at(1).elements.size());
  writeStat(cpuLine(0, modes(3, 0)) + cpuLine(1, modes(504, 0)));
  sample(collector, 4500);
  const auto last = sink.samplesOf("CPU Time").at(2);
  EXPECT_EQ(4 * step, KeepingSink::valueOf(last, cpu1, "user"));
  EXPECT_EQ(1500U, last.elements.back().duration);
}

TEST_F(CpuTimeTest, ACpuThatComesLaterIsFoundInTheTopology) {
  machine.addTwoPackages();
  machine.writeSys("devices/system/cpu/online", "0\n");
  writeStat(cpuLine(0, modes(0, 0)));
  openAndStart(collector);
  writeStat(cpuLine(0, modes(0, 0)) + cpuLine(6, modes(0, 0)));
  sample(collector, 2000);
  writeStat(cpuLine(0, modes(0, 0)) + cpuLine(6, modes(2, 0)));
  sample(collector, 3000);
  EXPECT_EQ(2 * step, KeepingSink::valueOf(sink.samplesOf("CPU Time").at(1),
                                           "Package 1/Core 0/CPU 6", "user"));
  EXPECT_EQ(8U, sink.metrics["CPU Time"]->entities.size()) << "not known in advance";
}

TEST_F(CpuTimeTest, ACpuThatIsToldTwiceCountsOnce) {
  writeStat(cpuLine(0, modes(1, 0)));
  openAndStart(collector);
  writeStat(cpuLine(0, modes(3, 0)) + cpuLine(0, modes(9, 0)));
  sample(collector, 2000);
  const auto sample = sink.samplesOf("CPU Time").at(0);
  EXPECT_EQ(8U, sample.elements.size());
  EXPECT_EQ(2 * step, sample.elements[0].value);
}

TEST_F(CpuTimeTest, AReadingWithoutACounterIsBridgedByTheNext) {
  writeStat(cpuLine(0, modes(0, 0)), 10);
  openAndStart(collector);
  machine.writeProc("stat", cpuLine(0, modes(0, 0)) + "intr what\n");
  sample(collector, 2000);
  EXPECT_TRUE(sink.samplesOf("Interrupts").empty());
  writeStat(cpuLine(0, modes(0, 0)), 16);
  sample(collector, 3000);
  EXPECT_THAT(sink.samplesOf("Interrupts").at(0).elements,
              ElementsAre(KeptElement{"System", "Interrupts", 2, 6, 2000}));
}

TEST_F(CpuTimeTest, AFileThatTurnsToGarbageGivesNothingAndBreaksNothing) {
  writeStat(cpuLine(0, modes(0, 0)));
  openAndStart(collector);
  machine.writeProc("stat", std::string(5000, '\xff'));
  sample(collector, 2000);
  EXPECT_TRUE(sink.samples.empty());
}

TEST_F(CpuTimeTest, AFileLongerThanTheBufferIsReadWhole) {
  std::string before;
  std::string after;
  for (unsigned cpu = 0; cpu < 1000; ++cpu) {
    before += cpuLine(cpu, modes(1000, 0));
    after += cpuLine(cpu, modes(1000 + cpu, 0));
  }
  writeStat(before);
  openAndStart(collector);
  writeStat(after, 77);
  sample(collector, 2000);
  EXPECT_EQ(999 * step, KeepingSink::valueOf(sink.samplesOf("CPU Time").at(0),
                                             "Package 0/Core 999/CPU 999", "user"));
  EXPECT_EQ(77U, sink.samplesOf("Interrupts").at(0).elements.at(0).value);
}

TEST_F(CpuTimeTest, TheMetricKnowsItsColumnsAndStatesInAdvance) {
  machine.addTwoPackages();
  writeStat(cpuLine(0, modes(0, 0)) + cpuLine(1, modes(0, 0)));
  openAndStart(collector);
  sample(collector, 2000);
  const pwr::Metric& metric = *sink.metrics.at("CPU Time");
  EXPECT_EQ(pwr::Metric::SAMPLED_RESIDENCY, metric.metricType);
  EXPECT_EQ(1U, metric.metricId);
  EXPECT_EQ("cpu_time", metric.featureName);
  EXPECT_EQ("cpu_time", metric.groupName);
  EXPECT_EQ(16U, metric.entities.size());
  ASSERT_EQ(2U, metric.entityList.size());
  EXPECT_EQ("CPU 1", metric.entityList[1]->getName());
  ASSERT_EQ(8U, metric.states.size());
  const pwr::DataHandle* state = nullptr;
  ASSERT_EQ(0, metric.states[3].toHandle(state));
  EXPECT_EQ("idle", state->getName());
  EXPECT_EQ(pwr::DataHandle::kDescriptorType, state->getHandleType());
  EXPECT_EQ("Residency", metric.valueHandle->getName());
  EXPECT_EQ("Mode", metric.descriptorTitleHandle->getName());
  EXPECT_EQ("CPU", metric.entityTitleHandle->getName());
}

TEST_F(CpuTimeTest, CountsHaveARateOfCodeNine) {
  writeStat(cpuLine(0, modes(0, 0)));
  openAndStart(collector);
  sample(collector, 2000);
  const pwr::Metric& metric = *sink.metrics.at("Interrupts");
  EXPECT_EQ(pwr::Metric::SAMPLED_DELTA, metric.metricType);
  EXPECT_EQ("interrupts", metric.quantity->toUnitsString());
  const pwr::Quantity* rate = nullptr;
  double factor = 0;
  ASSERT_EQ(0, metric.quantity->getRateConversion(rate, factor));
  EXPECT_EQ(9U, rate->toQuantity());
  EXPECT_EQ("interrupts/s", rate->toUnitsString());
  EXPECT_EQ(1.0, factor);
}

TEST_F(CpuTimeTest, EachMetricIsAnnouncedWithFeatureAndName) {
  writeStat(cpuLine(0, modes(0, 0)));
  openAndStart(collector);
  ASSERT_EQ(3U, sink.containers.size());
  EXPECT_EQ(1U, sink.containers[0].metricId);
  EXPECT_EQ("CPU Time", sink.containers[0].containerName);
  EXPECT_EQ("cpu_time", sink.containers[0].featureName);
  EXPECT_EQ("CPU Time", sink.containers[0].metricName);
  EXPECT_EQ("Context Switches", sink.containers[2].metricName);
  EXPECT_EQ(3U, sink.containers[2].metricId);
}

TEST_F(CpuTimeTest, AMissingFileIsOneLineWithPathReasonAndHelp) {
  try {
    open(collector);
    FAIL() << "opened";
  } catch (const SourceMissing& missing) {
    EXPECT_EQ(machine.procfs() +
                  "/stat: cannot be read: No such file or directory; check that procfs is mounted "
                  "there",
              missing.what());
  }
}

TEST_F(CpuTimeTest, AFolderInPlaceOfTheFileIsAReasonToo) {
  machine.writeProc("stat/x", "");
  try {
    open(collector);
    FAIL() << "opened";
  } catch (const SourceMissing& missing) {
    EXPECT_THAT(missing.what(), HasSubstr("Is a directory"));
  }
}

TEST_F(CpuTimeTest, AFileWithoutCpusIsAMissingSource) {
  machine.writeProc("stat", "btime 1\n");
  EXPECT_THROW(open(collector), SourceMissing);
}

TEST_F(CpuTimeTest, AnIntervalOfFewStepsIsNoticed) {
  writeStat(cpuLine(0, modes(0, 0)));
  open(collector);
  EXPECT_TRUE(notices.empty()) << "100 ms are enough";
  context->intervalTicks = 2 * step;
  CpuTimeCollector other;
  other.open(*context);
  ASSERT_EQ(1U, notices.size());
  EXPECT_THAT(notices[0], HasSubstr("steps of 10 ms: single samples of CPU Time every 20 ms"));
}

}  // namespace
}  // namespace qumetra::test
