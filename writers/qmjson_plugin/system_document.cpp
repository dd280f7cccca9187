#include "writers/qmjson_plugin/system_document.h"

#include "host/platform_metadata.h"
#include "host/system_metadata.h"
#include "writers/json_plugin_helper/json_file.h"

namespace {

void writePlatform(JsonFile& file, const pwr::SystemMetadata& system, const pwr::CPUMetadata& cpu) {
  file.unsignedMember("Platform ID", cpu.m_cpuWords.platformId);
  file.textMember("Platform Name", system.m_platformName);
  file.textMember("CPU Name", system.getFormattedCPUCodeName());
  file.textMember("CPU Native Name", system.getCPUNativeModelName(cpu.m_model));
  file.textMember("PCH Name", system.getFormattedPCHDeviceNamesStr(system.m_platformName));
  file.textMember("Host Name", system.m_hostName);
  file.unsignedMember("Num Packages", cpu.m_topology.getNumPackages());
  file.unsignedMember("Num Modules", cpu.m_topology.getNumModules());
  file.unsignedMember("Num Cores", cpu.m_topology.getNumCores());
  file.unsignedMember("Num Threads", cpu.m_topology.getNumThreads());
  file.numberMember("HFM Frequency MHz", static_cast<double>(cpu.m_cpuWords.highFrequencyMHz));
  file.numberMember("LFM Frequency MHz", static_cast<double>(cpu.m_cpuWords.lowFrequencyMHz));
  file.numberMember("CPU Frequency MHz", static_cast<double>(cpu.m_cpuWords.cpuFrequencyMHz));
  file.numberMember("Bus Frequency MHz", static_cast<double>(cpu.m_cpuWords.busFrequencyMHz));
}

void writeOs(JsonFile& file, const pwr::SystemMetadata& system) {
  file.textMember("OS Name", system.m_osName);
  file.textMember("OS Type", system.m_osType);
  file.textMember("OS Version", system.m_osVersion);
}

void writeCollection(JsonFile& file, const SystemFacts& facts) {
  file.textMember("Qumetra Version", facts.toolVersion);
  file.textMember("Qumetra Driver Version", facts.driverVersion);
  file.unsignedMember("Collection Start Timestamp", facts.startTimestamp);
  file.unsignedMember("Collection Stop Timestamp", facts.system.m_lastTimestamp);
  file.numberMember("Collection Duration", facts.system.getCollectionDurationSec());
  file.textMember("Collection Command Line", facts.commandLine);
}

}  // namespace

void writeSystem(JsonFile& file, const SystemFacts& facts) {
  file.key("systemMetaData");
  file.startObject();
  file.key("platform");
  file.startObject();
  writePlatform(file, facts.system, facts.cpu);
  file.endObject();
  file.key("os");
  file.startObject();
  writeOs(file, facts.system);
  file.endObject();
  file.key("qumetra");
  file.startObject();
  writeCollection(file, facts);
  file.endObject();
  file.endObject();
}
