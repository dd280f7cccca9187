#include "qumetra/collect/system_scan.h"

#include <sys/utsname.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

#include <fmt/format.h>

#include "host/platform_metadata.h"
#include "qumetra/collect/clock.h"
#include "qumetra/collect/kernel_text.h"
#include "qumetra/collect/source_file.h"
#include "qumetra/model/model.h"

namespace qumetra {
namespace {

constexpr float kUnknownFrequencyMHz = 1000;
constexpr float kKiloHertzPerMegaHertz = 1000;

/// The text behind the first line of `text` that begins with `key`, blanks, and `separator`.
std::optional<std::string> valueOf(std::string_view text, std::string_view key, char separator) {
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const std::size_t at = line.find(separator);
    if (at != std::string_view::npos && trimmed(line.substr(0, at)) == key) {
      return std::string(trimmed(line.substr(at + 1)));
    }
  }
  return std::nullopt;
}

std::optional<std::string> cpuinfo(const std::string& procfs, std::string_view key) {
  const auto text = readText(procfs + "/cpuinfo");
  return text ? valueOf(*text, key, ':') : std::nullopt;
}

std::optional<std::uint32_t> cpuinfoNumber(const std::string& procfs, std::string_view key) {
  const auto text = cpuinfo(procfs, key);
  const auto number = text ? parseNumber(*text) : std::nullopt;
  return number ? std::optional(static_cast<std::uint32_t>(*number)) : std::nullopt;
}

/// A file of cpufreq, which tells kHz, in MHz; 0 when it is not there.
float cpufreqMHz(const std::string& sysfs, std::string_view file) {
  const auto kiloHertz =
      readNumber(fmt::format("{}/devices/system/cpu/cpu0/cpufreq/{}", sysfs, file));
  return static_cast<float>(kiloHertz.value_or(0)) / kKiloHertzPerMegaHertz;
}

float cpuinfoMHz(const std::string& procfs) {
  const std::string text = cpuinfo(procfs, "cpu MHz").value_or("");
  float value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  // The comparison is false for a NaN.
  return error == std::errc() && value > 0 && value < 1e6F ? value : 0;
}

std::string osName(const std::string& path, const utsname& system) {
  const auto text = readText(path);
  std::string name = text ? valueOf(*text, "PRETTY_NAME", '=').value_or("") : "";
  if (name.size() >= 2 && name.front() == name.back() &&
      (name.front() == '"' || name.front() == '\'')) {
    name = name.substr(1, name.size() - 2);
  }
  return name.empty() ? system.sysname : name;
}

/// The number in front of the kernel's version text, such as 1 in "#1 SMP".
std::uint32_t buildNumber(std::string_view version) {
  std::uint32_t number = 0;
  if (version.starts_with('#')) {
    std::from_chars(version.data() + 1, version.data() + version.size(), number);
  }
  return number;
}

CpuSignature signatureOf(const CpuIdentity& cpu, const std::string& procfs) {
  if (cpu.signature) {
    return *cpu.signature;
  }
  return {cpuinfoNumber(procfs, "cpu family").value_or(0),
          cpuinfoNumber(procfs, "model").value_or(0),
          cpuinfoNumber(procfs, "stepping").value_or(0)};
}

std::string brandOf(const CpuIdentity& cpu, const std::string& procfs) {
  return cpu.brand.empty() ? cpuinfo(procfs, "model name").value_or("unknown processor")
                           : cpu.brand;
}

pwr::CPUMetadata& describeCpu(Model& model, const SystemScanOptions& options,
                              const CpuIdentity& cpu,
                              const std::vector<pwr::ThreadLocation>& topology) {
  const CpuSignature signature = signatureOf(cpu, options.procfs);
  pwr::CPUMetadata& result = model.addCpuMetadata();
  result.m_name = "CPU";
  result.m_description = brandOf(cpu, options.procfs);
  result.m_id = pwr::SystemMetadata::kCpu;
  if (!cpu.vendor.empty()) {
    result.m_values["Vendor"] = cpu.vendor;
  }
  result.m_family = static_cast<std::uint8_t>(signature.family);
  result.m_model = static_cast<std::uint8_t>(signature.model);
  result.m_stepping = static_cast<std::uint8_t>(signature.stepping);
  result.m_cpuWords.lowFrequencyMHz = cpufreqMHz(options.sysfs, "cpuinfo_min_freq");
  result.m_cpuWords.highFrequencyMHz = cpufreqMHz(options.sysfs, "cpuinfo_max_freq");
  result.m_cpuWords.cpuFrequencyMHz = cpuFrequencyMHz(options.procfs, options.sysfs);
  for (const pwr::ThreadLocation& location : topology) {
    result.m_topology.addThread(location);
  }
  return result;
}

void describeOs(pwr::SystemMetadata& metadata, const std::string& osRelease) {
  utsname system{};
  ::uname(&system);
  metadata.m_hostName = system.nodename;
  metadata.m_osName = osName(osRelease, system);
  metadata.m_osType = system.machine;
  metadata.m_osVersion = system.release;
  metadata.m_osBuildNumber = buildNumber(system.version);
}

void describeClock(pwr::SystemMetadata& metadata) {
  metadata.m_timestampFrequency = static_cast<float>(kTicksPerMicrosecond);
  metadata.m_timerResolution = clockResolutionTicks();
  // Below 1000 asks readers for milliseconds with three decimals.
  metadata.m_timeDisplayResolution = 1;
}

}  // namespace

float cpuFrequencyMHz(const std::string& procfs, const std::string& sysfs) {
  for (const float frequency : {cpufreqMHz(sysfs, "base_frequency"),
                                cpufreqMHz(sysfs, "cpuinfo_max_freq"), cpuinfoMHz(procfs)}) {
    if (frequency > 0) {
      return frequency;
    }
  }
  return kUnknownFrequencyMHz;
}

pwr::VersionRecord toolVersion() {
  return {QUMETRA_VERSION_MAJOR, QUMETRA_VERSION_MINOR, QUMETRA_VERSION_PATCH};
}

std::string toolVersionText() {
  const pwr::VersionRecord version = toolVersion();
  return fmt::format("{}.{}.{}", version.major, version.minor, version.third);
}

std::string utcNowText() {
  const time_t now = ::time(nullptr);
  tm parts{};
  ::gmtime_r(&now, &parts);
  std::array<char, 64> text{};
  const std::size_t length = ::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &parts);
  return {text.data(), length};
}

pwr::SystemMetadata& scanSystem(Model& model, const SystemScanOptions& options,
                                const CpuIdentity& cpu,
                                const std::vector<pwr::ThreadLocation>& topology) {
  pwr::SystemMetadata& metadata = model.addSystemMetadata();
  pwr::CPUMetadata& processor = describeCpu(model, options, cpu, topology);
  metadata.m_platformMetadata[pwr::SystemMetadata::kCpu] = &processor;
  metadata.m_cpuNativeModelName = processor.m_description;
  metadata.m_cpuCodeName = fmt::format("family {} model {} stepping {}", processor.m_family,
                                       processor.m_model, processor.m_stepping);
  metadata.m_platformName = readText(options.sysfs + "/class/dmi/id/product_name").value_or("");
  if (metadata.m_platformName.empty()) {
    metadata.m_platformName = processor.m_description;
  }
  describeOs(metadata, options.osRelease);
  describeClock(metadata);
  metadata.m_collectorArguments = options.commandLine;
  metadata.m_toolVersion = toolVersion();
  metadata.m_versionWord = std::uint32_t{metadata.m_toolVersion.major} << 16U |
                           std::uint32_t{metadata.m_toolVersion.minor} << 8U |
                           std::uint32_t{metadata.m_toolVersion.third};
  return metadata;
}

}  // namespace qumetra
