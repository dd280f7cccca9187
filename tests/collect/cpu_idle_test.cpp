#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/handles.h"
#include "host/quantity.h"
#include "qumetra/collect/cpu_idle_collector.h"
#include "tests/collect/collector_fixture.h"

namespace qumetra::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const char* const kResidency = "CPU Idle States";
const char* const kEntries = "CPU Idle State Entries";

/// Ticks of a time that the kernel tells in microseconds.
constexpr unsigned long us(unsigned long value) { return value * 1000; }

class CpuIdleTest : public CollectorFixture {
 protected:
  static constexpr std::uint64_t kSecond = 1'000'000'000;

  /// Two CPUs of two packages with the states POLL and C1.
  void addTwoCpus() {
    machine.addTwoPackages();
    for (const unsigned cpu : {0U, 2U}) {
      machine.addIdleState(cpu, 0, "POLL", 100, 10);
      machine.addIdleState(cpu, 1, "C1", 2000, 20);
    }
  }
  CpuIdleCollector collector;
};

TEST_F(CpuIdleTest, TimesBecomeTicksPerStateAndCpu) {
  addTwoCpus();
  openAndStart(collector);
  machine.setIdleState(0, 0, 101, 10);
  machine.setIdleState(0, 1, 2500, 23);
  machine.setIdleState(2, 1, 2007, 21);
  sample(collector, kStart + us(1000));
  const std::string cpu0 = "Package 0/Core 0/CPU 0";
  const std::string cpu2 = "Package 1/Core 0/CPU 2";
  EXPECT_THAT(sink.samplesOf(kResidency).at(0).elements,
              ElementsAre(KeptElement{cpu0, "POLL", 2, us(1), us(1000)},
                          KeptElement{cpu0, "C1", 2, us(500), us(1000)},
                          KeptElement{cpu2, "POLL", 2, 0, us(1000)},
                          KeptElement{cpu2, "C1", 2, us(7), us(1000)}));
  EXPECT_THAT(sink.samplesOf(kEntries).at(0).elements,
              ElementsAre(KeptElement{cpu0, "POLL", 2, 0, us(1000)},
                          KeptElement{cpu0, "C1", 2, 3, us(1000)},
                          KeptElement{cpu2, "POLL", 2, 0, us(1000)},
                          KeptElement{cpu2, "C1", 2, 1, us(1000)}));
}

TEST_F(CpuIdleTest, CountersThatStepBackGiveZero) {
  addTwoCpus();
  openAndStart(collector);
  machine.setIdleState(0, 1, 1, 1);
  sample(collector, 2000);
  EXPECT_EQ(0U, sink.samplesOf(kResidency).at(0).elements.at(1).value);
  EXPECT_EQ(0U, sink.samplesOf(kEntries).at(0).elements.at(1).value);
}

TEST_F(CpuIdleTest, StatesComeInTheOrderOfTheirNumbers) {
  machine.addIdleState(0, 10, "C10", 0, 0);
  machine.addIdleState(0, 2, "C2", 0, 0);
  openAndStart(collector);
  sample(collector, 2000);
  const auto sample = sink.samplesOf(kResidency).at(0);
  EXPECT_EQ("C2", sample.elements.at(0).state);
  EXPECT_EQ("C10", sample.elements.at(1).state);
}

TEST_F(CpuIdleTest, CpusShareTheDescriptorOfAState) {
  addTwoCpus();
  openAndStart(collector);
  sample(collector, 2000);
  const pwr::Metric& metric = *sink.metrics.at(kResidency);
  EXPECT_EQ(2U, metric.states.size());
  EXPECT_EQ(metric.entities[1].second, metric.entities[3].second);
  EXPECT_EQ(metric.entities[1].second, sink.metrics.at(kEntries)->entities[1].second);
}

TEST_F(CpuIdleTest, TwoStatesOfOneNameAreToldApart) {
  machine.addIdleState(0, 0, "C1", 0, 0);
  machine.addIdleState(0, 1, "C1", 0, 0);
  openAndStart(collector);
  sample(collector, 2000);
  const auto sample = sink.samplesOf(kResidency).at(0);
  EXPECT_EQ("C1", sample.elements.at(0).state);
  EXPECT_EQ("C1 state1", sample.elements.at(1).state);
}

TEST_F(CpuIdleTest, AStateWithoutANameHasItsNumber) {
  machine.setIdleState(0, 3, 5, 5);
  openAndStart(collector);
  sample(collector, 2000);
  EXPECT_EQ("state3", sink.samplesOf(kResidency).at(0).elements.at(0).state);
}

TEST_F(CpuIdleTest, TheDescriptionOfAStateIsItsHeader) {
  machine.addIdleState(0, 0, "C6", 0, 0);
  machine.writeSys("devices/system/cpu/cpu0/cpuidle/state0/desc", "MWAIT 0x20\n");
  openAndStart(collector);
  sample(collector, 2000);
  EXPECT_EQ("MWAIT 0x20", sink.metrics.at(kResidency)->entities.at(0).second->getHeader());
}

TEST_F(CpuIdleTest, EntriesHaveARateOfCodeNine) {
  addTwoCpus();
  openAndStart(collector);
  sample(collector, 2000);
  const pwr::Quantity* rate = nullptr;
  double factor = 0;
  ASSERT_EQ(0, sink.metrics.at(kEntries)->quantity->getRateConversion(rate, factor));
  EXPECT_EQ(9U, rate->toQuantity());
  EXPECT_EQ("entries/s", rate->toUnitsString());
}

TEST_F(CpuIdleTest, AFileThatTurnsToGarbageCostsItsValueOnly) {
  addTwoCpus();
  openAndStart(collector);
  machine.writeSys("devices/system/cpu/cpu0/cpuidle/state0/time", "soon\n");
  machine.writeSys("devices/system/cpu/cpu0/cpuidle/state1/time", "");
  sample(collector, 2000);
  EXPECT_EQ(2U, sink.samplesOf(kResidency).at(0).elements.size());
  EXPECT_EQ(4U, sink.samplesOf(kEntries).at(0).elements.size());
}

TEST_F(CpuIdleTest, ACpuThatIsBackIsFoundWithinASecondAndStartsAfresh) {
  addTwoCpus();
  openAndStart(collector);
  // As when a CPU goes offline: what was open gives nothing any more, and its folder is gone.
  for (const char* file : {"state0/time", "state0/usage", "state1/time", "state1/usage"}) {
    machine.writeSys(std::string("devices/system/cpu/cpu2/cpuidle/") + file, "");
  }
  machine.removeSys("devices/system/cpu/cpu2/cpuidle");
  sample(collector, 2000);
  EXPECT_EQ(2U, sink.samplesOf(kResidency).at(0).elements.size());
  machine.addIdleState(2, 0, "POLL", 5, 5);
  machine.addIdleState(2, 1, "C1", 6, 6);
  sample(collector, 3 * kSecond);
  EXPECT_EQ(2U, sink.samplesOf(kResidency).at(1).elements.size()) << "a new first reading";
  machine.setIdleState(2, 1, 9, 7);
  sample(collector, 4 * kSecond);
  const auto last = sink.samplesOf(kResidency).at(2);
  EXPECT_EQ(us(3), KeepingSink::valueOf(last, "Package 1/Core 0/CPU 2", "C1"));
  EXPECT_EQ(kSecond, last.elements.back().duration);
}

TEST_F(CpuIdleTest, ACpuThatWasOfflineAtTheStartIsFoundLater) {
  addTwoCpus();
  openAndStart(collector);
  machine.addIdleState(7, 0, "POLL", 0, 0);
  machine.addIdleState(7, 1, "C1", 0, 0);
  sample(collector, 3 * kSecond);
  machine.setIdleState(7, 0, 4, 1);
  sample(collector, 4 * kSecond);
  EXPECT_EQ(us(4), KeepingSink::valueOf(sink.samplesOf(kResidency).at(1), "Package 1/Core 1/CPU 7",
                                        "POLL"));
}

TEST_F(CpuIdleTest, WithoutAnyStateTheSourceIsMissing) {
  machine.addTwoPackages();
  try {
    open(collector);
    FAIL() << "opened";
  } catch (const SourceMissing& missing) {
    EXPECT_THAT(missing.what(), HasSubstr(machine.sysfs() + "/devices/system/cpu/cpu*/cpuidle: no "
                                                            "readable idle state of any CPU"));
    EXPECT_THAT(missing.what(), HasSubstr("CONFIG_CPU_IDLE"));
  }
}

TEST_F(CpuIdleTest, TheFolderOfTheDriverIsNoCpu) {
  addTwoCpus();
  machine.writeSys("devices/system/cpu/cpuidle/current_driver", "acpi_idle\n");
  machine.writeSys("devices/system/cpu/cpufreq/x", "");
  openAndStart(collector);
  sample(collector, 2000);
  EXPECT_EQ(4U, sink.samplesOf(kResidency).at(0).elements.size());
}

TEST_F(CpuIdleTest, TwoCollectorsShareTheEntitiesOfTheMachine) {
  addTwoCpus();
  openAndStart(collector);
  sample(collector, 2000);
  EXPECT_EQ(&entities->cpu(2), sink.metrics.at(kResidency)->entityList.at(1));
  EXPECT_EQ(entities->cpu(0).getParent(), entities->cpu(4).getParent()) << "one core";
  EXPECT_NE(entities->cpu(0).getParent(), entities->cpu(2).getParent()) << "core 0 of another";
}

}  // namespace
}  // namespace qumetra::test
