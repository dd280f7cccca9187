#include "qumetra/cli/qmbin_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>

#include <fmt/format.h>

#include "qumetra/recording/json_text.h"
#include "qumetra/recording/utf8.h"

namespace qumetra::cli {
namespace {

std::string shown(const std::string& name) {
  if (std::none_of(name.begin(), name.end(), isControl) &&
      findInvalidUtf8(name) == std::string::npos) {
    return name;
  }
  std::string quoted;
  JsonText(quoted).text(name);
  return quoted;
}

/// The parts that are not empty.
std::string joined(std::initializer_list<std::string> parts, const char* separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (!part.empty()) {
      text += (text.empty() ? "" : separator) + part;
    }
  }
  return text;
}

/// Nothing around nothing.
std::string within(const char* front, const std::string& text, const char* back = "") {
  return text.empty() ? text : front + text + back;
}

std::string counted(std::size_t count, const char* what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string countedIfAny(std::uint16_t count, const char* what) {
  return count == 0 ? "" : counted(count, what);
}

std::string frequency(const char* name, float megahertz) {
  return megahertz == 0 ? "" : fmt::format("{}{} MHz", name, megahertz);
}

std::string platformOf(const QmbinSystem& system) {
  const std::string codes =
      joined({shown(system.cpuCodeName), shown(system.nativeModelName)}, ", ");
  const std::string platform = joined({shown(system.platformName), within("(", codes, ")")}, " ");
  const std::string id = system.platformId == 0 ? "" : fmt::format("id {:#x}", system.platformId);
  return joined({within("platform ", platform), within("hubs ", shown(system.controllerHubs)), id},
                ", ");
}

}  // namespace

void appendText(std::string& out, const QmbinSystem& system) {
  const std::string software = joined({shown(system.osName), shown(system.osType)}, " ");
  const std::string counts =
      joined({countedIfAny(system.packages, "package"), countedIfAny(system.modules, "module"),
              countedIfAny(system.cores, "core"), countedIfAny(system.threads, "thread")},
             ", ");
  const std::string frequencies = joined(
      {frequency("", system.cpuFrequencyMHz), frequency("bus ", system.busFrequencyMHz),
       frequency("low ", system.lowFrequencyMHz), frequency("high ", system.highFrequencyMHz)},
      ", ");
  const std::string times = fmt::format("ticks {} to {}, {} s", system.firstTimestamp,
                                        system.lastTimestamp, system.durationSeconds);
  out += "system: " + joined({joined({shown(system.hostName), software}, ", "), platformOf(system),
                              counts, frequencies, times},
                             "; ");
}

void appendText(std::string& out, const QmbinDescriptor& descriptor) {
  fmt::format_to(std::back_inserter(out), "descriptor {}: {}{}", descriptor.index,
                 shown(descriptor.name), within(" = ", shown(descriptor.attribute)));
}

void appendText(std::string& out, const QmbinMetric& metric) {
  fmt::format_to(std::back_inserter(out), "metric {}: {}, {}", metric.id, shown(metric.name),
                 shown(metric.type));
  if (metric.hasQuantity) {
    out += ", " + joined({shown(metric.quantity), within("(", shown(metric.units), ")")}, " ");
  }
  out += within(", group ", shown(metric.group));
  out += ", " + counted(metric.columns.size(), "column");
  for (const std::string& item : metric.metadata) {
    out += ", " + shown(item);
  }
}

void appendText(std::string& out, const QmbinSample& sample) {
  fmt::format_to(
      std::back_inserter(out), "{} {}: {}", sample.timestamp,
      sample.metric == nullptr ? std::to_string(sample.metricId) : shown(sample.metric->name),
      shown(*sample.name));
  if (sample.descriptor != nullptr) {
    out += " / " + shown(sample.descriptor->name);
  }
  fmt::format_to(std::back_inserter(out), " = {}, {} us", sample.value,
                 sample.durationMicroseconds);
}

}  // namespace qumetra::cli
