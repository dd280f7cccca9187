// The processes that a collection is about, by procfs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "qumetra/collect/collector.h"
#include "qumetra/collect/process_stat.h"
#include "qumetra/collect/source_file.h"

namespace pwr {
class Attribute;
class Process;
}  // namespace pwr

namespace qumetra {

/// Metric: "Process CPU Time", the time that the tool itself and the command under measurement
/// spend on CPUs, without their children; a residency, whose share is above 100 % while several
/// threads run.
///
/// An entity stands for each process. It has the process as an attribute, by which writers find
/// pid, name, start and end; where they do not ask for attributes, nothing but the CPU time shows.
/// A process's share is of the time that it lived: there are no values after its end. One that
/// lives longer than the collection is not told to have ended, but writers that are served live
/// find the time of the last reading as its end: they know no other.
///
/// The kernel counts in steps, most often of 10 ms.
class ProcessCollector : public Collector {
 public:
  ProcessCollector();
  ~ProcessCollector() override;

  SourceInfo info() const override;
  void open(CollectorContext& context) override;
  void commandStarted(std::uint32_t pid, std::uint64_t ticks) override;
  void summarise(SummaryContext& context) override;

 protected:
  void read(std::uint64_t now) override;
  void tellEnds(MessageSink& sink) override;

 private:
  /// How far a process is.
  enum class Life { Running, HasEnded, EndIsTold };
  struct Watched {
    SourceFile file;
    pwr::Process* process = nullptr;
    Life life = Life::Running;
    std::size_t column = 0;
    std::uint64_t cpuTime = 0;
    /// When that was; 0 when it was not read yet.
    std::uint64_t readAt = 0;
  };

  /// Adds a process with its entity and column. `start` is in ticks.
  Watched& watch(SourceFile file, const ProcessStat& stat, std::uint64_t start);
  std::string freshName(const ProcessStat& stat);
  void readProcess(Watched& watched, std::uint64_t now);

  CollectorContext* m_context = nullptr;
  std::uint64_t m_ticksPerStep = 0;
  std::uint32_t m_ownPid = 0;
  const pwr::Attribute* m_attribute = nullptr;
  const pwr::DataDescriptor* m_state = nullptr;
  SampledMetric* m_cpuTime = nullptr;
  std::vector<Watched> m_processes;
  std::set<std::string> m_names;
  std::string m_buffer;
};

}  // namespace qumetra
