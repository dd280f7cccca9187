// qumetra platform: tells what the tool knows of this machine.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "host/platform_metadata.h"
#include "host/system_metadata.h"
#include "qumetra/cli/command.h"
#include "qumetra/cli/console.h"
#include "qumetra/cli/session.h"
#include "qumetra/collect/platform_report.h"
#include "qumetra/model/model.h"

namespace qumetra::cli {
namespace {

using JsonWriter = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

constexpr const char* kUnknown = "unknown";

/// A line with a heading in front.
std::string line(const std::string& heading, const std::string& text) {
  return fmt::format("{:<13}  {}\n", heading, text.empty() ? kUnknown : text);
}

/// Lines below one heading; `none` when there are none.
class Section {
 public:
  explicit Section(std::string heading) : m_heading(std::move(heading)) {}

  void add(const std::string& text) { m_text += line(m_text.empty() ? m_heading : "", text); }
  std::string text(const std::string& none) const {
    return m_text.empty() ? line(m_heading, none) : m_text;
  }

 private:
  std::string m_heading;
  std::string m_text;
};

std::string systemText(const PlatformReport& report) {
  const pwr::SystemMetadata& system = *report.system;
  const pwr::CPUMetadata& processor = *report.processor;
  const pwr::TopTree& topology = processor.m_topology;
  return line("tool", toolVersionText()) + line("platform", system.m_platformName) +
         line("system", fmt::format("{}, kernel {}, {}", system.m_osName, system.m_osVersion,
                                    system.m_osType)) +
         line("processor", processor.m_description) + line("signature", system.m_cpuCodeName) +
         line("frequency", fmt::format("{:.0f} MHz", processor.m_cpuWords.cpuFrequencyMHz)) +
         line("topology",
              fmt::format("packages: {}, cores: {}, threads: {}", topology.getNumPackages(),
                          topology.getNumCores(), topology.getNumThreads()));
}

std::string pciText(const PlatformReport& report) {
  Section section("PCI devices");
  for (const PciDevice& device : report.pciDevices) {
    section.add(fmt::format("{}  {:04x}:{:04x}  class {:06x}", device.location, device.vendor,
                            device.device, device.classCode));
  }
  return section.text("none that can be read");
}

std::string telemetryText(const PlatformReport& report) {
  Section section("telemetry");
  for (const TelemetryEndpoint& endpoint : report.telemetryEndpoints) {
    section.add(fmt::format("endpoint {}, GUID {}, bytes: {}", endpoint.id,
                            endpoint.guid ? fmt::format("{:#x}", *endpoint.guid) : kUnknown,
                            endpoint.sizeBytes ? std::to_string(*endpoint.sizeBytes) : kUnknown));
  }
  return section.text("no endpoints");
}

std::string requirementText(const PlatformReport& report) {
  Section section("requirements");
  for (const RequirementState& state : report.requirements) {
    section.add(
        fmt::format("{:<3}  {}: {}", state.holds ? "yes" : "no", state.name, state.condition));
  }
  return section.text("none");
}

std::string asText(const PlatformReport& report) {
  return systemText(report) + pciText(report) + telemetryText(report) + requirementText(report);
}

void addText(JsonWriter& json, const char* name, const std::string& value) {
  json.Key(name);
  json.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

void addNumber(JsonWriter& json, const char* name, std::uint64_t value) {
  json.Key(name);
  json.Uint64(value);
}

/// A number, or null when it is not known.
template <typename Number>
void addNumber(JsonWriter& json, const char* name, const std::optional<Number>& value) {
  if (value) {
    addNumber(json, name, std::uint64_t{*value});
    return;
  }
  json.Key(name);
  json.Null();
}

void addSystem(JsonWriter& json, const pwr::SystemMetadata& system) {
  json.Key("system");
  json.StartObject();
  addText(json, "name", system.m_osName);
  addText(json, "kernel", system.m_osVersion);
  addText(json, "architecture", system.m_osType);
  addNumber(json, "build", system.m_osBuildNumber);
  json.EndObject();
}

void addProcessor(JsonWriter& json, const pwr::CPUMetadata& processor) {
  json.Key("processor");
  json.StartObject();
  addText(json, "name", processor.m_description);
  addNumber(json, "family", processor.m_family);
  addNumber(json, "model", processor.m_model);
  addNumber(json, "stepping", processor.m_stepping);
  json.Key("frequencyMHz");
  json.Double(static_cast<double>(processor.m_cpuWords.cpuFrequencyMHz));
  addNumber(json, "packages", processor.m_topology.getNumPackages());
  addNumber(json, "cores", processor.m_topology.getNumCores());
  addNumber(json, "threads", processor.m_topology.getNumThreads());
  json.EndObject();
}

void addDevices(JsonWriter& json, const std::vector<PciDevice>& devices) {
  json.Key("pciDevices");
  json.StartArray();
  for (const PciDevice& device : devices) {
    json.StartObject();
    addText(json, "location", device.location);
    addNumber(json, "vendor", device.vendor);
    addNumber(json, "device", device.device);
    addNumber(json, "class", device.classCode);
    json.EndObject();
  }
  json.EndArray();
}

void addEndpoints(JsonWriter& json, const std::vector<TelemetryEndpoint>& endpoints) {
  json.Key("telemetryEndpoints");
  json.StartArray();
  for (const TelemetryEndpoint& endpoint : endpoints) {
    json.StartObject();
    addNumber(json, "id", endpoint.id);
    addNumber(json, "guid", endpoint.guid);
    addNumber(json, "sizeBytes", endpoint.sizeBytes);
    json.EndObject();
  }
  json.EndArray();
}

void addRequirements(JsonWriter& json, const std::vector<RequirementState>& states) {
  json.Key("requirements");
  json.StartArray();
  for (const RequirementState& state : states) {
    json.StartObject();
    addText(json, "name", state.name);
    addText(json, "condition", state.condition);
    json.Key("holds");
    json.Bool(state.holds);
    json.EndObject();
  }
  json.EndArray();
}

std::string asJson(const PlatformReport& report) {
  rapidjson::StringBuffer buffer;
  JsonWriter json(buffer);
  json.SetIndent(' ', 2);
  json.StartObject();
  addText(json, "tool", toolVersionText());
  addText(json, "platform", report.system->m_platformName);
  addSystem(json, *report.system);
  addProcessor(json, *report.processor);
  addDevices(json, report.pciDevices);
  addEndpoints(json, report.telemetryEndpoints);
  addRequirements(json, report.requirements);
  json.EndObject();
  return std::string(buffer.GetString(), buffer.GetSize()) + '\n';
}

int tellPlatform(bool json, const CommonOptions& common) {
  const auto environment = makeEnvironment(common);
  Model model;
  const PlatformReport report = describePlatform(model, SystemScanOptions());
  printResult(json ? asJson(report) : asText(report));
  return kDone;
}

}  // namespace

void addPlatformCommand(CLI::App& app, Action& action) {
  CLI::App* command = app.add_subcommand(
      "platform", "Tell what is known of this machine; belongs into every bug report");
  auto json = std::make_shared<bool>(false);
  command->add_flag("--json", *json, "As JSON");
  command->callback([&action, json] {
    action = [json](const CommonOptions& common) { return tellPlatform(*json, common); };
  });
}

}  // namespace qumetra::cli
