#include "qumetra/collect/report_texts.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "client/src/common/number_text.h"
#include "client/src/common/platform_entry.h"
#include "host/platform_metadata.h"
#include "qumetra/collect/clock.h"
#include "qumetra/collect/system_scan.h"

namespace qumetra {
namespace {

/// Below this many samples a single odd one weighs a lot.
constexpr std::uint64_t kFewestMoments = 10;

std::string counted(std::size_t count, const char* one, const char* many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

std::string processorLine(const pwr::SystemMetadata& metadata) {
  const auto* const cpu = pwr::platformEntry<pwr::CPUMetadata>(metadata, pwr::SystemMetadata::kCpu);
  if (cpu == nullptr) {
    return "Processor: " + metadata.m_cpuNativeModelName;
  }
  return fmt::format("Processor: {}; {}; {}; {}; {}", cpu->m_description, metadata.m_cpuCodeName,
                     counted(cpu->m_topology.getNumPackages(), "package", "packages"),
                     counted(cpu->m_topology.getNumCores(), "core", "cores"),
                     counted(cpu->m_topology.getNumThreads(), "thread", "threads"));
}

std::string quoted(const std::string& argument) {
  if (!argument.empty() && argument.find_first_of(" \t\n\"'\\$`") == std::string::npos) {
    return argument;
  }
  std::string result = "'";
  for (const char c : argument) {
    result += c == '\'' ? "'\\''" : std::string(1, c);
  }
  return result + "'";
}

}  // namespace

std::string spanText(std::uint64_t ticks) {
  constexpr double kTicksPerMillisecond = 1e6;
  std::string text;
  const bool isSeconds = ticks >= kTicksPerSecond;
  pwr::appendGeneral(text, static_cast<double>(ticks) /
                               (isSeconds ? double{kTicksPerSecond} : kTicksPerMillisecond));
  return text + (isSeconds ? " s" : " ms");
}

std::string commandText(const std::vector<std::string>& arguments) {
  std::string text;
  for (const std::string& argument : arguments) {
    text += (text.empty() ? "" : " ") + quoted(argument);
  }
  return text;
}

std::vector<std::string> openingLines(const pwr::SystemMetadata& metadata,
                                      const CollectionSetup& setup) {
  std::vector<std::string> lines{
      "Qumetra " + toolVersionText(),
      "Host: " + metadata.m_hostName,
      "Platform: " + metadata.m_platformName,
      processorLine(metadata),
      fmt::format("Operating system: {}; kernel {}; {}", metadata.m_osName, metadata.m_osVersion,
                  metadata.m_osType),
      "Start: " + metadata.getCollectionStartTime(),
      "Interval: " + spanText(setup.intervalTicks),
      fmt::format("Sources: {}", fmt::join(setup.sources, "; "))};
  if (!metadata.m_collectorArguments.empty()) {
    lines.push_back("Collected by: " + commandText(metadata.m_collectorArguments));
  }
  if (!setup.command.empty()) {
    lines.push_back("Command: " + commandText(setup.command));
  }
  return lines;
}

std::vector<std::string> closingLines(const pwr::SystemMetadata& metadata,
                                      const CollectionSetup& setup,
                                      const CollectionOutcome& outcome) {
  std::vector<std::string> lines{
      "Duration: " + spanText(metadata.m_lastTimestamp - metadata.m_firstTimestamp),
      fmt::format("Samples: {} of each metric", outcome.moments)};
  if (outcome.stopped) {
    lines.emplace_back("Ended: early, on request");
  }
  if (!setup.command.empty()) {
    lines.push_back(outcome.commandStatus
                        ? fmt::format("Command status: {}", *outcome.commandStatus)
                        : "Command status: still running when the collection ended");
  }
  return lines;
}

std::optional<std::string> fewSamplesLine(const CollectionOutcome& outcome) {
  if (outcome.moments >= kFewestMoments) {
    return std::nullopt;
  }
  return fmt::format(
      "only {}; shares and rates are coarse below {}, a longer time or a shorter interval helps",
      counted(outcome.moments, "sample of each metric", "samples of each metric"), kFewestMoments);
}

std::optional<std::string> missedSamplesLine(const CollectionOutcome& outcome) {
  if (outcome.missed == 0) {
    return std::nullopt;
  }
  return fmt::format(
      "{} came too late and {} left out; totals cover the whole time all the same, a longer "
      "interval helps",
      counted(outcome.missed, "sample", "samples"), outcome.missed == 1 ? "was" : "were");
}

std::optional<std::string> leftOutValuesLine(const CollectionOutcome& outcome) {
  if (outcome.leftOutValues == 0) {
    return std::nullopt;
  }
  return fmt::format("{} no finite {} and {} left out of the samples",
                     counted(outcome.leftOutValues, "value was", "values were"),
                     outcome.leftOutValues == 1 ? "number" : "numbers",
                     outcome.leftOutValues == 1 ? "is" : "are");
}

std::optional<std::string> joinedFlushesLine(const CollectionOutcome& outcome) {
  if (outcome.joinedFlushes == 0) {
    return std::nullopt;
  }
  return fmt::format(
      "{} came much too late and {} joined with the next; no sample is lost, a longer period helps",
      counted(outcome.joinedFlushes, "flush", "flushes"),
      outcome.joinedFlushes == 1 ? "was" : "were");
}

}  // namespace qumetra
