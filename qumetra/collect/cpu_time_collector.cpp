#include "qumetra/collect/cpu_time_collector.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

#include <fmt/format.h>

#include "host/handles.h"
#include "qumetra/collect/clock.h"
#include "qumetra/collect/named.h"
#include "qumetra/collect/quantities.h"
#include "qumetra/collect/report_texts.h"
#include "qumetra/model/model.h"

namespace qumetra {
namespace {

/// An interval of fewer steps than this shows more of the counting than of the CPU.
constexpr std::uint64_t kFewestSteps = 5;

void warnOfShortInterval(const CollectorContext& context, std::uint64_t ticksPerStep) {
  if (context.intervalTicks < kFewestSteps * ticksPerStep) {
    context.notice(fmt::format(
        "the kernel counts CPU time in steps of {}: single samples of CPU Time every {} are "
        "coarse, totals are not",
        spanText(ticksPerStep), spanText(context.intervalTicks)));
  }
}

}  // namespace

CpuTimeCollector::CpuTimeCollector() = default;
CpuTimeCollector::~CpuTimeCollector() = default;

SourceInfo CpuTimeCollector::info() const {
  return {.name = "cpu_time",
          .description = "CPU time per hardware thread and mode, interrupts, context switches",
          .reads = "<procfs>/stat"};
}

void CpuTimeCollector::open(CollectorContext& context) {
  const std::string path = context.procfs + "/stat";
  m_file = SourceFile(path);
  const auto text = m_file.isOpen() ? m_file.readAll(m_buffer) : std::nullopt;
  if (!text) {
    throw SourceMissing(fmt::format("{}: cannot be read: {}; check that procfs is mounted there",
                                    path, std::generic_category().message(errno)));
  }
  parseProcStat(*text, m_stat);
  if (m_stat.cpus.empty()) {
    throw SourceMissing(fmt::format(
        "{}: no line of a single CPU, such as \"cpu0 ...\"; check that procfs is mounted there",
        path));
  }
  m_entities = &context.entities;
  m_ticksPerStep = cpuTimeStepTicks();
  warnOfShortInterval(context, m_ticksPerStep);
  addCpuTime(context);
  m_interrupts = addCounter(context, "Interrupts", "interrupts");
  m_contextSwitches = addCounter(context, "Context Switches", "switches");
}

void CpuTimeCollector::read(std::uint64_t now) {
  const auto text = m_file.readAll(m_buffer);
  if (!text) {
    return;
  }
  ++m_readings;
  parseProcStat(*text, m_stat);
  for (const CpuTimes& times : m_stat.cpus) {
    readCpu(times, now);
  }
  readCounter(m_interrupts, m_stat.interrupts, now);
  readCounter(m_contextSwitches, m_stat.contextSwitches, now);
}

void CpuTimeCollector::addCpuTime(CollectorContext& context) {
  for (const std::string_view mode : kCpuModes) {
    m_modes.push_back(&context.model.addDescriptor(named(std::string(mode))));
  }
  MetricSpec spec;
  spec.name = "CPU Time";
  spec.type = pwr::Metric::SAMPLED_RESIDENCY;
  spec.valueTitle = "Residency";
  spec.stateTitle = "Mode";
  spec.entityTitle = "CPU";
  spec.totalsName = totalsNameFor(spec.entityTitle);
  m_cpuTime = &addMetric(context, spec);
  for (const CpuTimes& times : m_stat.cpus) {
    addCpu(times.cpu);
  }
}

CpuTimeCollector::Counter CpuTimeCollector::addCounter(CollectorContext& context,
                                                       const std::string& name,
                                                       const std::string& unit) {
  MetricSpec spec;
  spec.name = name;
  spec.type = pwr::Metric::SAMPLED_DELTA;
  spec.quantity = &addCountQuantity(context.model, name, unit);
  spec.valueTitle = "Count";
  spec.stateTitle = "Event";
  spec.entityTitle = "Scope";
  Counter counter;
  counter.metric = &addMetric(context, spec);
  counter.column = counter.metric->addColumn(context.entities.system(),
                                             context.model.addDescriptor(named(name)));
  return counter;
}

CpuTimeCollector::Cpu& CpuTimeCollector::addCpu(std::uint32_t number) {
  const auto [entry, isNew] = m_cpus.try_emplace(number);
  if (!isNew) {
    return entry->second;
  }
  const pwr::EntityHandle& entity = m_entities->cpu(number);
  entry->second.firstColumn = m_cpuTime->columns().size();
  for (const pwr::DataDescriptor* mode : m_modes) {
    m_cpuTime->addColumn(entity, *mode);
  }
  return entry->second;
}

void CpuTimeCollector::readCpu(const CpuTimes& times, std::uint64_t now) {
  Cpu& cpu = addCpu(times.cpu);
  if (cpu.reading == m_readings) {
    return;  // told twice in one reading: the first counts
  }
  const bool hasPrevious = cpu.reading != 0 && cpu.reading + 1 == m_readings;
  for (std::size_t mode = 0; hasPrevious && mode < times.modes.size(); ++mode) {
    const std::uint64_t steps = counterDelta(cpu.modes[mode], times.modes[mode]);
    m_cpuTime->set(cpu.firstColumn + mode, steps * m_ticksPerStep, now - cpu.readAt);
  }
  cpu.modes = times.modes;
  cpu.readAt = now;
  cpu.reading = m_readings;
}

void CpuTimeCollector::readCounter(Counter& counter, std::optional<std::uint64_t> value,
                                   std::uint64_t now) {
  if (value && counter.value) {
    counter.metric->set(counter.column, counterDelta(*counter.value, *value), now - counter.readAt);
  }
  // A reading without the counter is bridged by the next one that has it.
  if (value) {
    counter.value = value;
    counter.readAt = now;
  }
}

std::uint64_t cpuTimeStepTicks() {
  const long stepsPerSecond = ::sysconf(_SC_CLK_TCK);
  constexpr std::uint64_t kUsualStepsPerSecond = 100;
  return kTicksPerSecond /
         (stepsPerSecond > 0 ? static_cast<std::uint64_t>(stepsPerSecond) : kUsualStepsPerSecond);
}

}  // namespace qumetra
