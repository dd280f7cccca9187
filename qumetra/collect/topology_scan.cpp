#include "qumetra/collect/topology_scan.h"

#include <algorithm>

#include <fmt/format.h>

#include "qumetra/collect/kernel_text.h"
#include "qumetra/collect/proc_stat.h"
#include "qumetra/collect/source_file.h"

namespace qumetra {
namespace {

/// Above every CPU number there is; keeps a broken list from filling the memory.
constexpr std::uint64_t kCpuLimit = 1U << 16;

/// Appends the numbers of "3" or "0-3". Returns false for anything else.
bool appendRange(std::string_view text, std::vector<std::uint32_t>& cpus) {
  const std::size_t dash = text.find('-');
  const auto first = parseNumber(text.substr(0, dash));
  const auto last = dash == std::string_view::npos ? first : parseNumber(text.substr(dash + 1));
  if (!first || !last || *first > *last || *last >= kCpuLimit) {
    return false;
  }
  for (std::uint64_t cpu = *first; cpu <= *last; ++cpu) {
    cpus.push_back(static_cast<std::uint32_t>(cpu));
  }
  return true;
}

void sortUnique(std::vector<std::uint32_t>& numbers) {
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
}

std::optional<std::vector<std::uint32_t>> cpusOfStat(const std::string& procfs) {
  const auto text = readText(procfs + "/stat");
  if (!text) {
    return std::nullopt;
  }
  ProcStat stat;
  parseProcStat(*text, stat);
  std::vector<std::uint32_t> cpus;
  for (const CpuTimes& times : stat.cpus) {
    cpus.push_back(times.cpu);
  }
  sortUnique(cpus);
  return cpus;
}

std::optional<std::uint32_t> readId(const std::string& path) {
  const auto number = readNumber(path);
  if (!number || *number > UINT32_MAX) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(*number);
}

}  // namespace

std::optional<std::vector<std::uint32_t>> parseCpuList(std::string_view text) {
  std::vector<std::uint32_t> cpus;
  std::string_view rest = trimmed(text);
  while (!rest.empty()) {
    const std::size_t comma = rest.find(',');
    if (!appendRange(rest.substr(0, comma), cpus)) {
      return std::nullopt;
    }
    rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
  }
  sortUnique(cpus);
  return cpus;
}

std::vector<std::uint32_t> onlineCpus(const std::string& procfs, const std::string& sysfs) {
  if (const auto text = readText(sysfs + "/devices/system/cpu/online")) {
    const auto cpus = parseCpuList(*text);
    if (cpus && !cpus->empty()) {
      return *cpus;
    }
  }
  const auto cpus = cpusOfStat(procfs);
  return cpus && !cpus->empty() ? *cpus : std::vector<std::uint32_t>{0};
}

pwr::ThreadLocation locateCpu(const std::string& sysfs, std::uint32_t cpu) {
  const std::string folder = fmt::format("{}/devices/system/cpu/cpu{}/topology", sysfs, cpu);
  // Machines that do not know their packages say -1, which reads as no number.
  const std::uint32_t package = readId(folder + "/physical_package_id").value_or(0);
  const std::uint32_t core = readId(folder + "/core_id").value_or(cpu);
  return {.package = package, .module = std::nullopt, .core = core, .id = cpu};
}

std::vector<pwr::ThreadLocation> scanTopology(const std::string& procfs, const std::string& sysfs) {
  std::vector<pwr::ThreadLocation> locations;
  for (const std::uint32_t cpu : onlineCpus(procfs, sysfs)) {
    locations.push_back(locateCpu(sysfs, cpu));
  }
  return locations;
}

}  // namespace qumetra
