// The idle states of the CPUs, by sysfs's cpuidle.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "qumetra/collect/collector.h"
#include "qumetra/collect/source_file.h"

namespace qumetra {

/// Metrics: "CPU Idle States", the time of each hardware thread per idle state, a residency; "CPU
/// Idle State Entries", how often it entered the state, a counter.
///
/// The kernel counts a stay in a state when it ends: an interval may therefore show more time than
/// it has, and the ones before it less. A CPU that goes offline gives no values meanwhile; whether
/// it is back is looked at once a second.
class CpuIdleCollector : public Collector {
 public:
  CpuIdleCollector();
  ~CpuIdleCollector() override;

  SourceInfo info() const override;
  void open(CollectorContext& context) override;

 protected:
  void read(std::uint64_t now) override;

 private:
  /// A counter of a state: its file, and what it said last.
  struct Counter {
    SourceFile file;
    std::optional<std::uint64_t> value;
    std::uint64_t readAt = 0;
    std::size_t column = 0;
  };
  struct State {
    std::string folder;
    Counter time;
    Counter usage;
  };
  struct Cpu {
    std::uint32_t number = 0;
    std::string folder;
    /// Empty as long as the CPU has none, for example while it is offline.
    std::vector<State> states;
    bool isLost = false;
  };

  void findCpus(const std::string& sysfs);
  /// Finds the states of a CPU and adds their columns; without any the CPU counts as lost.
  void findStates(Cpu& cpu);
  /// The state of that name, made at its first use with what the kernel says of it.
  const pwr::DataDescriptor& stateNamed(const std::string& name, const std::string& description);
  void retryLost(std::uint64_t now);
  void reopen(Cpu& cpu);
  void readState(Cpu& cpu, State& state, std::uint64_t now);
  /// Returns false when the file cannot be read any more.
  static bool readCounter(Counter& counter, SampledMetric& metric, std::uint64_t ticksPerUnit,
                          std::uint64_t now);

  Model* m_model = nullptr;
  MachineEntities* m_entities = nullptr;
  std::vector<Cpu> m_cpus;
  std::map<std::string, const pwr::DataDescriptor*> m_stateNames;
  SampledMetric* m_residency = nullptr;
  SampledMetric* m_entries = nullptr;
  std::uint64_t m_nextRetry = 0;
};

}  // namespace qumetra
