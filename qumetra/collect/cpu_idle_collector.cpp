#include "qumetra/collect/cpu_idle_collector.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "host/handles.h"
#include "qumetra/collect/clock.h"
#include "qumetra/collect/kernel_text.h"
#include "qumetra/collect/named.h"
#include "qumetra/collect/quantities.h"
#include "qumetra/model/model.h"

namespace qumetra {
namespace {

namespace fs = std::filesystem;

/// How long a CPU that is gone is left alone before it is looked for again.
constexpr std::uint64_t kRetryTicks = kTicksPerSecond;

/// The numbers N of the entries "<prefix>N" of a folder, in ascending order.
std::vector<std::uint32_t> numberedEntries(const std::string& folder, std::string_view prefix) {
  std::vector<std::uint32_t> numbers;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    const auto number = name.starts_with(prefix)
                            ? parseNumber(std::string_view(name).substr(prefix.size()))
                            : std::nullopt;
    if (number && *number < UINT32_MAX) {
      numbers.push_back(static_cast<std::uint32_t>(*number));
    }
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

MetricSpec cpuStateSpec(const std::string& name, pwr::Metric::MetricType type) {
  MetricSpec spec;
  spec.name = name;
  spec.type = type;
  spec.stateTitle = "State";
  spec.entityTitle = "CPU";
  spec.totalsName = totalsNameFor(spec.entityTitle);
  return spec;
}

}  // namespace

CpuIdleCollector::CpuIdleCollector() = default;
CpuIdleCollector::~CpuIdleCollector() = default;

SourceInfo CpuIdleCollector::info() const {
  return {.name = "cpu_idle",
          .description = "idle states per hardware thread, and how often they were entered",
          .reads = "<sysfs>/devices/system/cpu/cpu*/cpuidle"};
}

void CpuIdleCollector::open(CollectorContext& context) {
  m_model = &context.model;
  m_entities = &context.entities;
  MetricSpec residency = cpuStateSpec("CPU Idle States", pwr::Metric::SAMPLED_RESIDENCY);
  residency.valueTitle = "Residency";
  m_residency = &addMetric(context, residency);
  MetricSpec entries = cpuStateSpec("CPU Idle State Entries", pwr::Metric::SAMPLED_DELTA);
  entries.valueTitle = "Count";
  entries.quantity = &addCountQuantity(context.model, "State Entries", "entries");
  m_entries = &addMetric(context, entries);
  findCpus(context.sysfs);
}

void CpuIdleCollector::read(std::uint64_t now) {
  retryLost(now);
  for (Cpu& cpu : m_cpus) {
    for (State& state : cpu.states) {
      readState(cpu, state, now);
    }
  }
}

void CpuIdleCollector::findCpus(const std::string& sysfs) {
  const std::string folder = sysfs + "/devices/system/cpu";
  for (const std::uint32_t number : numberedEntries(folder, "cpu")) {
    Cpu& cpu = m_cpus.emplace_back();
    cpu.number = number;
    cpu.folder = fmt::format("{}/cpu{}/cpuidle", folder, number);
    findStates(cpu);
  }
  if (m_residency->columns().empty()) {
    throw SourceMissing(
        fmt::format("{}/cpu*/cpuidle: no readable idle state of any CPU; it takes a kernel with "
                    "CONFIG_CPU_IDLE "
                    "and an idle driver, which virtual machines and containers often lack",
                    folder));
  }
}

void CpuIdleCollector::findStates(Cpu& cpu) {
  std::map<std::string, int> uses;
  for (const std::uint32_t index : numberedEntries(cpu.folder, "state")) {
    State state;
    state.folder = fmt::format("{}/state{}", cpu.folder, index);
    state.time.file = SourceFile(state.folder + "/time");
    state.usage.file = SourceFile(state.folder + "/usage");
    if (!state.time.file.isOpen() || !state.usage.file.isOpen()) {
      continue;
    }
    std::string name = readText(state.folder + "/name").value_or("");
    if (name.empty() || uses[name]++ > 0) {
      name += fmt::format("{}state{}", name.empty() ? "" : " ", index);
    }
    const pwr::EntityHandle& entity = m_entities->cpu(cpu.number);
    const pwr::DataDescriptor& descriptor =
        stateNamed(name, readText(state.folder + "/desc").value_or(""));
    state.time.column = m_residency->addColumn(entity, descriptor);
    state.usage.column = m_entries->addColumn(entity, descriptor);
    cpu.states.push_back(std::move(state));
  }
  cpu.isLost = cpu.states.empty();
}

const pwr::DataDescriptor& CpuIdleCollector::stateNamed(const std::string& name,
                                                        const std::string& description) {
  const pwr::DataDescriptor*& state = m_stateNames[name];
  if (state == nullptr) {
    state = &m_model->addDescriptor(named(name, description));
  }
  return *state;
}

void CpuIdleCollector::retryLost(std::uint64_t now) {
  if (now < m_nextRetry) {
    return;
  }
  m_nextRetry = now + kRetryTicks;
  for (Cpu& cpu : m_cpus) {
    if (cpu.isLost && cpu.states.empty()) {
      findStates(cpu);
    } else if (cpu.isLost) {
      reopen(cpu);
    }
  }
}

void CpuIdleCollector::reopen(Cpu& cpu) {
  cpu.isLost = false;
  for (State& state : cpu.states) {
    for (const auto& [counter, name] :
         {std::pair(&state.time, "/time"), {&state.usage, "/usage"}}) {
      // A reading across the gap would count the time away as time of the interval.
      counter->value.reset();
      counter->file = SourceFile(state.folder + name);
      cpu.isLost = cpu.isLost || !counter->file.isOpen();
    }
  }
}

void CpuIdleCollector::readState(Cpu& cpu, State& state, std::uint64_t now) {
  const bool hasTime = readCounter(state.time, *m_residency, kTicksPerMicrosecond, now);
  const bool hasUsage = readCounter(state.usage, *m_entries, 1, now);
  cpu.isLost = cpu.isLost || !hasTime || !hasUsage;
}

bool CpuIdleCollector::readCounter(Counter& counter, SampledMetric& metric,
                                   std::uint64_t ticksPerUnit, std::uint64_t now) {
  const auto value = counter.file.isOpen() ? counter.file.readNumber() : std::nullopt;
  if (!value) {
    counter.value.reset();
    return false;
  }
  if (counter.value) {
    metric.set(counter.column, counterDelta(*counter.value, *value) * ticksPerUnit,
               now - counter.readAt);
  }
  counter.value = value;
  counter.readAt = now;
  return true;
}

}  // namespace qumetra
