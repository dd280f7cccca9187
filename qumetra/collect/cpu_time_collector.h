// How the CPUs spend their time, by procfs's stat.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "qumetra/collect/collector.h"
#include "qumetra/collect/proc_stat.h"
#include "qumetra/collect/source_file.h"

namespace qumetra {

/// Metrics: "CPU Time", the time of each hardware thread per mode, a residency; "Interrupts" and
/// "Context Switches" of the whole machine, counters.
///
/// The kernel counts CPU time in steps, most often of 10 ms, so that short intervals are coarse. A
/// CPU that goes offline gives no values meanwhile, and starts afresh when it is back.
class CpuTimeCollector : public Collector {
 public:
  CpuTimeCollector();
  ~CpuTimeCollector() override;

  SourceInfo info() const override;
  void open(CollectorContext& context) override;

 protected:
  void read(std::uint64_t now) override;

 private:
  struct Cpu {
    std::array<std::uint64_t, kCpuModes.size()> modes{};
    std::uint64_t readAt = 0;
    /// The number of the reading that last told of this CPU.
    std::uint64_t reading = 0;
    /// The column of its first mode; the others follow.
    std::size_t firstColumn = 0;
  };
  /// A counter of the whole machine.
  struct Counter {
    SampledMetric* metric = nullptr;
    std::size_t column = 0;
    std::optional<std::uint64_t> value;
    std::uint64_t readAt = 0;
  };

  void addCpuTime(CollectorContext& context);
  Counter addCounter(CollectorContext& context, const std::string& name, const std::string& unit);
  Cpu& addCpu(std::uint32_t number);
  void readCpu(const CpuTimes& times, std::uint64_t now);
  static void readCounter(Counter& counter, std::optional<std::uint64_t> value, std::uint64_t now);

  MachineEntities* m_entities = nullptr;
  SourceFile m_file;
  std::string m_buffer;
  ProcStat m_stat;
  std::uint64_t m_ticksPerStep = 0;
  std::uint64_t m_readings = 0;
  std::vector<const pwr::DataDescriptor*> m_modes;
  SampledMetric* m_cpuTime = nullptr;
  std::map<std::uint32_t, Cpu> m_cpus;
  Counter m_interrupts;
  Counter m_contextSwitches;
};

/// The ticks of one step in which the kernel counts CPU time.
std::uint64_t cpuTimeStepTicks();

}  // namespace qumetra
