#include "qumetra/recording/metadata_record.h"

#include <utility>

namespace qumetra {
namespace {

// Each sets its target when the member is there.

void read(RecordObject& record, std::string_view name, std::string& target) {
  if (const auto member = record.find(name)) {
    target = member->string();
  }
}

template <std::integral Integer>
void read(RecordObject& record, std::string_view name, Integer& target) {
  if (const auto member = record.find(name)) {
    target = member->integer<Integer>();
  }
}

void readFlag(RecordObject& record, std::string_view name, std::uint8_t& target) {
  if (const auto member = record.find(name)) {
    target = member->boolean() ? 1 : 0;
  }
}

void read(RecordObject& record, std::string_view name, pwr::VersionRecord& target) {
  if (const auto member = record.find(name)) {
    const RecordList parts = member->list(3);
    target.major = parts[0].integer<std::uint16_t>();
    target.minor = parts[1].integer<std::uint8_t>();
    target.third = parts[2].integer<std::uint8_t>();
  }
}

void readTimes(RecordObject& record, pwr::SystemMetadata& metadata) {
  if (const auto frequency = record.find("timestampFrequency")) {
    metadata.m_timestampFrequency = frequency->narrowReal();
  }
  read(record, "firstTimestamp", metadata.m_firstTimestamp);
  read(record, "lastTimestamp", metadata.m_lastTimestamp);
  read(record, "timerResolution", metadata.m_timerResolution);
  read(record, "timeDisplayResolution", metadata.m_timeDisplayResolution);
  read(record, "collectionStartTime", metadata.m_collectionStartTime);
  if (const auto duration = record.find("collectionDurationSec")) {
    metadata.m_collectionDurationSec = duration->real();
  }
}

void readArguments(RecordObject& record, pwr::SystemMetadata& metadata) {
  std::vector<std::string> arguments;
  const auto member = record.find("collectorArguments");
  if (!member) {
    return;
  }
  for (const RecordValue argument : member->list()) {
    arguments.emplace_back(argument.string());
  }
  metadata.m_collectorArguments = std::move(arguments);
}

}  // namespace

void readMetadata(RecordObject& record, Model& model, pwr::SystemMetadata& metadata) {
  read(record, "scuWord", metadata.m_scuWord);
  read(record, "platformName", metadata.m_platformName);
  read(record, "hostName", metadata.m_hostName);
  read(record, "osName", metadata.m_osName);
  read(record, "osType", metadata.m_osType);
  read(record, "osVersion", metadata.m_osVersion);
  read(record, "toolVersion", metadata.m_toolVersion);
  read(record, "driverVersion", metadata.m_driverVersion);
  readArguments(record, metadata);
  read(record, "osBuildNumber", metadata.m_osBuildNumber);
  readTimes(record, metadata);
  readFlag(record, "hasIntegratedGraphics", metadata.m_hasIntegratedGraphics);
  read(record, "secureSignIn", metadata.m_secureSignIn);
  read(record, "versionWord", metadata.m_versionWord);
  read(record, "cpuNativeModelName", metadata.m_cpuNativeModelName);
  read(record, "cpuCodeName", metadata.m_cpuCodeName);
  read(record, "pchDeviceNames", metadata.m_pchDeviceNames);
  if (const auto platform = record.find("platform")) {
    readPlatform(platform->list(), model, metadata);
  }
  record.finish();
}

}  // namespace qumetra
