#include "qumetra/recording/metadata_writer.h"

#include "qumetra/recording/json_text.h"
#include "qumetra/recording/platform_writer.h"

namespace qumetra {
namespace {

template <typename Append>
std::string jsonOf(Append append) {
  std::string text;
  JsonText json(text);
  append(json);
  return text;
}

std::string textJson(const std::string& value) {
  return jsonOf([&](JsonText& json) { json.text(value); });
}

std::string versionJson(const pwr::VersionRecord& version) {
  return jsonOf([&](JsonText& json) {
    json.beginList();
    json.unsignedInteger(version.major);
    json.unsignedInteger(version.minor);
    json.unsignedInteger(version.third);
    json.endList();
  });
}

std::string argumentsJson(const std::vector<std::string>& arguments) {
  return jsonOf([&](JsonText& json) {
    json.beginList();
    for (const std::string& argument : arguments) {
      json.text(argument);
    }
    json.endList();
  });
}

std::string realJson(double value) {
  return jsonOf([&](JsonText& json) { json.real(value); });
}

std::string narrowRealJson(float value) {
  return jsonOf([&](JsonText& json) { json.narrowReal(value); });
}

std::string platformJson(const pwr::SystemMetadata& metadata) {
  return jsonOf([&](JsonText& json) { appendPlatform(json, metadata); });
}

std::string flagJson(bool value) { return value ? "true" : "false"; }

constexpr std::string_view kDuration = "collectionDurationSec";

}  // namespace

MetadataText::MetadataText(const pwr::SystemMetadata& metadata)
    : m_durationJson(realJson(metadata.getCollectionDurationSec())) {
  const auto add = [this](std::string_view name, std::string json, std::string_view absent) {
    const bool isDefault = json == absent;
    m_members.push_back({name, std::move(json), isDefault});
  };
  const auto text = [&](std::string_view name, const std::string& value) {
    add(name, textJson(value), "\"\"");
  };
  const auto number = [&](std::string_view name, std::uint64_t value) {
    add(name, std::to_string(value), "0");
  };
  number("scuWord", metadata.m_scuWord);
  text("platformName", metadata.m_platformName);
  text("hostName", metadata.m_hostName);
  text("osName", metadata.m_osName);
  text("osType", metadata.m_osType);
  text("osVersion", metadata.m_osVersion);
  add("toolVersion", versionJson(metadata.m_toolVersion), "[0,0,0]");
  add("driverVersion", versionJson(metadata.m_driverVersion), "[0,0,0]");
  add("collectorArguments", argumentsJson(metadata.m_collectorArguments), "[]");
  number("osBuildNumber", metadata.m_osBuildNumber);
  add("timestampFrequency", narrowRealJson(metadata.m_timestampFrequency), "0");
  number("firstTimestamp", metadata.m_firstTimestamp);
  number("lastTimestamp", metadata.m_lastTimestamp);
  number("timerResolution", metadata.m_timerResolution);
  number("timeDisplayResolution", metadata.m_timeDisplayResolution);
  add("hasIntegratedGraphics", flagJson(metadata.m_hasIntegratedGraphics != 0), "false");
  number("secureSignIn", metadata.m_secureSignIn);
  number("versionWord", metadata.m_versionWord);
  text("collectionStartTime", metadata.m_collectionStartTime);
  add(kDuration,
      metadata.m_collectionDurationSec ? realJson(*metadata.m_collectionDurationSec) : "", "");
  text("cpuNativeModelName", metadata.m_cpuNativeModelName);
  text("cpuCodeName", metadata.m_cpuCodeName);
  text("pchDeviceNames", metadata.m_pchDeviceNames);
  add("platform", platformJson(metadata), "[]");
}

std::string MetadataText::object() const {
  return jsonOf([this](JsonText& json) {
    json.beginObject();
    for (const Member& member : m_members) {
      if (!member.isDefault) {
        json.rawMember(member.name, member.json);
      }
    }
    json.endObject();
  });
}

std::string MetadataText::changesFrom(const MetadataText& former) const {
  std::string text;
  JsonText json(text);
  json.beginObject();
  for (std::size_t i = 0; i < m_members.size(); ++i) {
    const Member& member = m_members[i];
    if (member.json != former.m_members[i].json) {
      json.rawMember(member.name, member.json.empty() ? m_durationJson : member.json);
    }
  }
  json.endObject();
  return text == "{}" ? std::string() : text;
}

}  // namespace qumetra
