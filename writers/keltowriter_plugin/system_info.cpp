#include "writers/keltowriter_plugin/system_info.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "client/src/common/real_to_integer.h"
#include "client/src/common/tokenizer.h"
#include "host/platform_metadata.h"
#include "host/system_metadata.h"
#include "host/topology.h"

std::map<std::pair<int, int>, int> coreThreadCount;

namespace {

constexpr float kHzPerMHz = 1'000'000.0F;
constexpr std::uint64_t kTimerUnit = 100;

enum OsKind : std::uint32_t {
  kWindows = 2,
  kLinux32 = 3,
  kLinuxItanium = 4,
  kLinux64 = 5,
  kOther = 6,
};

/// 0 for a node that is not there.
std::uint8_t lowByteOfId(const pwr::TNode* node) {
  return node == nullptr ? std::uint8_t{0} : static_cast<std::uint8_t>(node->id);
}

const pwr::TNode* packageOf(const pwr::TNode* core) {
  const pwr::TNode* const above = core == nullptr ? nullptr : core->parent;
  const bool isModule = above != nullptr && above->kind == pwr::TNode::kModule;
  return isModule ? above->parent : above;
}

KeltoThreadEntry threadEntry(const pwr::TNode* thread) {
  const pwr::TNode* const core = thread == nullptr ? nullptr : thread->parent;
  const std::uint8_t packageId = lowByteOfId(packageOf(core));
  const std::uint8_t coreId = lowByteOfId(core);
  const int index = getCoreThreadCount(packageId, coreId);
  return {0, packageId, coreId, static_cast<std::uint8_t>(index)};
}

void fillThreads(const pwr::TopTree& topology, KeltoSystemInfo& info) {
  std::vector<const pwr::TNode*> threads;
  topology.getAllThreads(threads);
  info.threadCount = static_cast<std::uint32_t>(threads.size());
  info.threadTable.reserve(threads.size());
  for (const pwr::TNode* thread : threads) {
    info.threadTable.push_back(threadEntry(thread));
  }
}

/// In single precision, which is what the file's numbers have always been made with.
std::uint32_t frequencyInHz(float megahertz) { return pwr::realToUInt32(megahertz * kHzPerMHz); }

}  // namespace

int getCoreThreadCount(int package, int core) { return coreThreadCount[{package, core}]++; }

void fillKeltoSystemInfo(const pwr::SystemMetadata& metadata, const pwr::CPUMetadata& cpu,
                         KeltoSystemInfo& info) {
  fillThreads(cpu.m_topology, info);
  info.versionMajor = static_cast<std::uint16_t>(metadata.m_versionWord >> 16U);
  info.versionMinor = static_cast<std::uint8_t>(metadata.m_versionWord >> 8U);
  info.versionPatch = static_cast<std::uint8_t>(metadata.m_versionWord);
  info.platformName = metadata.m_platformName;
  info.hostName = metadata.m_hostName;
  info.osName = metadata.m_osName;
  info.osType = metadata.m_osType;
  info.tscFrequencyHz = frequencyInHz(metadata.m_timestampFrequency);
  info.cpuFrequencyHz = frequencyInHz(cpu.m_cpuWords.cpuFrequencyMHz);
  info.cpuFrequencyMHz = pwr::realToUInt64(cpu.m_cpuWords.cpuFrequencyMHz);
  info.family = cpu.m_family;
  info.model = cpu.m_model;
  info.stepping = cpu.m_stepping;
  info.firstTsc = metadata.m_firstTimestamp;
  info.lastTsc = metadata.m_lastTimestamp;
  info.timerResolutionDiv100 = metadata.m_timerResolution / kTimerUnit;
  info.osKind = keltoOsKind(metadata.m_osName, metadata.m_osType);
  info.osVersion = keltoOsVersion(metadata.m_osVersion);
}

std::uint32_t keltoOsKind(const std::string& osName, const std::string& osType) {
  if (osName.find("Window") != std::string::npos) {
    return kWindows;
  }
  if (osType == "ia64") {
    return kLinuxItanium;
  }
  if (osType == "x86_64") {
    return kLinux64;
  }
  const bool is32Bit = osType.size() == 4 && osType[0] == 'i' && osType.ends_with("86");
  return is32Bit ? kLinux32 : kOther;
}

std::array<std::uint16_t, 4> keltoOsVersion(const std::string& version) {
  std::array<std::uint16_t, 4> numbers{};
  const pwr::Tokenizer tokenizer(version, ".");
  const std::vector<std::string>& tokens = tokenizer.get_all_tokens();
  const std::size_t count = std::min(tokens.size(), numbers.size());
  for (std::size_t i = 0; i < count; ++i) {
    numbers[i] = static_cast<std::uint16_t>(std::strtoul(tokens[i].c_str(), nullptr, 0));
  }
  return numbers;
}
