#include "qumetra/collect/process_collector.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "host/handles.h"
#include "qumetra/collect/cpu_time_collector.h"
#include "qumetra/collect/named.h"
#include "qumetra/model/message_sink.h"
#include "qumetra/model/model.h"

namespace qumetra {

ProcessCollector::ProcessCollector() = default;
ProcessCollector::~ProcessCollector() = default;

SourceInfo ProcessCollector::info() const {
  return {.name = "process",
          .description = "CPU time of the command under measurement and of the tool itself",
          .reads = "<procfs>/self/stat, <procfs>/<pid>/stat"};
}

void ProcessCollector::open(CollectorContext& context) {
  const std::string path = context.procfs + "/self/stat";
  SourceFile file(path);
  const auto text = file.isOpen() ? file.readAll(m_buffer) : std::nullopt;
  if (!text) {
    throw SourceMissing(fmt::format("{}: cannot be read: {}; check that procfs is mounted there",
                                    path, std::generic_category().message(errno)));
  }
  const auto stat = parseProcessStat(*text);
  if (!stat) {
    throw SourceMissing(
        fmt::format("{}: does not tell of a process; check that procfs is mounted there", path));
  }
  m_context = &context;
  m_ticksPerStep = cpuTimeStepTicks();
  m_ownPid = stat->pid;
  m_attribute = &context.model.addAttribute(named("Process"), pwr::AttributeType::Process);
  m_state = &context.model.addDescriptor(named("Active"));
  MetricSpec spec;
  spec.name = "Process CPU Time";
  spec.type = pwr::Metric::SAMPLED_RESIDENCY;
  spec.valueTitle = "Residency";
  spec.stateTitle = "State";
  spec.entityTitle = "Process";
  m_cpuTime = &addMetric(context, spec);
  watch(std::move(file), *stat,
        processStartTicks(stat->startTime, m_ticksPerStep, presentMoment()));
}

void ProcessCollector::commandStarted(std::uint32_t pid, std::uint64_t ticks) {
  const std::string path = fmt::format("{}/{}/stat", m_context->procfs, pid);
  SourceFile file(path);
  const auto text = file.isOpen() ? file.readAll(m_buffer) : std::nullopt;
  const auto stat = text ? parseProcessStat(*text) : std::nullopt;
  // The procfs of another machine or container has other processes under these numbers.
  if (!stat || stat->pid != pid || stat->parentPid != m_ownPid) {
    m_context->notice(
        fmt::format("the command is not among the processes: {} does not tell of it", path));
    return;
  }
  // It had used no time at its start, so that the first values cover its whole life.
  watch(std::move(file), *stat, ticks).readAt = ticks;
}

void ProcessCollector::summarise(SummaryContext& context) {
  for (Watched& watched : m_processes) {
    if (watched.life == Life::Running) {
      watched.process->setEndTime(watched.readAt);
    }
  }
  Collector::summarise(context);
}

void ProcessCollector::read(std::uint64_t now) {
  for (Watched& watched : m_processes) {
    if (watched.life == Life::Running) {
      readProcess(watched, now);
    }
  }
}

void ProcessCollector::tellEnds(MessageSink& sink) {
  for (Watched& watched : m_processes) {
    if (watched.life == Life::HasEnded) {
      watched.life = Life::EndIsTold;
      sink.ended(*watched.process);
    }
  }
}

ProcessCollector::Watched& ProcessCollector::watch(SourceFile file, const ProcessStat& stat,
                                                   std::uint64_t start) {
  Model& model = m_context->model;
  const std::string name = shownProcessName(stat.name);
  pwr::Process& process = model.addProcess(named(name), stat.pid, stat.parentPid, name,
                                           {.startTime = start, .endTime = 0});
  pwr::EntityHandle& entity = model.addEntity(named(freshName(stat)));
  entity.addAttributeValue(m_attribute, pwr::Data::fromHandle(&process));
  Watched& watched = m_processes.emplace_back();
  watched.file = std::move(file);
  watched.process = &process;
  watched.column = m_cpuTime->addColumn(entity, *m_state);
  return watched;
}

/// A name that no other process in the results has.
std::string ProcessCollector::freshName(const ProcessStat& stat) {
  std::string name = shownProcessName(stat.name);
  if (name.empty() || !m_names.insert(name).second) {
    name += fmt::format("{}{}", name.empty() ? "process " : " ", stat.pid);
    m_names.insert(name);
  }
  return name;
}

void ProcessCollector::readProcess(Watched& watched, std::uint64_t now) {
  const auto text = watched.file.readAll(m_buffer);
  const auto stat = text ? parseProcessStat(*text) : std::nullopt;
  if (stat && watched.readAt != 0 && now > watched.readAt) {
    m_cpuTime->set(watched.column, counterDelta(watched.cpuTime, stat->cpuTime) * m_ticksPerStep,
                   now - watched.readAt);
  }
  if (stat) {
    watched.cpuTime = stat->cpuTime;
    watched.readAt = now;
  }
  if (!stat || stat->hasEnded) {
    watched.life = Life::HasEnded;
    watched.process->setEndTime(now);
    watched.file.close();
  }
}

}  // namespace qumetra
