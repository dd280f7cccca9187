#include "qumetra/cli/pwr_json.h"

#include <bit>
#include <cstdint>
#include <string_view>
#include <variant>

#include <fmt/format.h>

#include "qumetra/recording/json_text.h"

namespace qumetra::cli {
namespace {

/// Appends members to an object, one by one.
class Members {
 public:
  explicit Members(JsonText& json) : m_json(json) {}

  Members& number(std::string_view name, std::uint64_t value) {
    m_json.name(name);
    m_json.unsignedInteger(value);
    return *this;
  }
  Members& text(std::string_view name, std::string_view value) {
    m_json.name(name);
    m_json.text(value);
    return *this;
  }
  JsonText& member(std::string_view name) {
    m_json.name(name);
    return m_json;
  }

 private:
  JsonText& m_json;
};

std::string hexDigits(std::string_view bytes) {
  std::string digits;
  for (const char byte : bytes) {
    digits += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  }
  return digits;
}

bool isReal(PwrAttributeId id) {
  return id == PwrAttributeId::Real || id == PwrAttributeId::RealLowerBound ||
         id == PwrAttributeId::RealUpperBound;
}

bool isSigned(PwrAttributeId id) {
  return id == PwrAttributeId::Int || id == PwrAttributeId::IntLowerBound ||
         id == PwrAttributeId::IntUpperBound;
}

void addAttribute(JsonText& json, const PwrAttribute& attribute, bool isLegacy) {
  json.beginObject();
  Members members(json);
  members.number("id", static_cast<std::uint32_t>(attribute.id));
  members.text("name", pwrAttributeName(attribute.id));
  if (isReal(attribute.id) && !isLegacy) {
    members.member("value").real(std::bit_cast<double>(attribute.bits));
    // Not every bit of a number that is none shows in its text.
    members.number("bits", attribute.bits);
  } else if (isSigned(attribute.id)) {
    members.member("value").integer(static_cast<std::int64_t>(attribute.bits));
  } else {
    members.number("value", attribute.bits);
  }
  json.endObject();
}

void addHead(Members& members, std::uint64_t tsc, std::uint16_t subType, std::uint16_t version) {
  members.number("tsc", tsc).number("sub_type", subType).number("version", version);
}

void addFields(Members& members, const PwrMagic& magic) {
  members.number("constant_4", magic.constant4);
}

void addFields(Members& members, const PwrCollection& collection) {
  members.number("constant_8", collection.constant8)
      .number("version_major", collection.versionMajor)
      .number("version_minor", collection.versionMinor)
      .number("version_patch", collection.versionPatch)
      .number("constant_20", collection.constant20)
      .text("name", collection.name);
}

void addFields(Members& members, const PwrSystem& system) {
  members.number("constant_8", system.constant8)
      .number("constant_10", system.constant10)
      .number("os_kind", system.osKind);
  JsonText& json = members.member("os_version");
  json.beginList();
  for (const std::uint16_t number : system.osVersion) {
    json.unsignedInteger(number);
  }
  json.endList();
  members.text("host_name", system.hostName)
      .text("platform_name", system.platformName)
      .text("os_name", system.osName)
      .text("last_text", system.lastText);
}

void addFields(Members& members, const PwrHardware& hardware) {
  members.number("constant_8", hardware.constant8)
      .number("tsc_frequency_hz", hardware.tscFrequencyHz)
      .number("tsc_frequency_hz_again", hardware.tscFrequencyHzAgain)
      .number("highest_address", hardware.highestAddress)
      .number("address_width", hardware.addressWidth)
      .number("family", hardware.family)
      .number("model", hardware.model)
      .number("stepping", hardware.stepping);
  JsonText& json = members.member("threads");
  json.beginList();
  for (const PwrHardware::Thread& thread : hardware.threads) {
    json.beginObject();
    members.number("constant_0", thread.constant0)
        .number("package", thread.package)
        .number("core", thread.core)
        .number("thread", thread.thread);
    json.endObject();
  }
  json.endList();
}

void addFields(Members& members, const PwrHeadMarker& marker) {
  members.number("constant_4", marker.constant4)
      .number("constant_8", marker.constant8)
      .number("first_tsc", marker.firstTsc)
      .number("timer_resolution_div_100", marker.timerResolutionDiv100);
}

void addFields(Members& members, const PwrPowerThreshold& threshold) {
  members.number("constant_8", threshold.constant8)
      .number("constant_12", threshold.constant12)
      .text("constant_14", hexDigits(threshold.constant14))
      .number("cpu_frequency_mhz", threshold.cpuFrequencyMHz);
}

void addFields(Members& members, const PwrInfo& info) {
  addHead(members, info.tsc, info.subType, info.version);
  members.number("info_type", info.infoType)
      .number("value", info.value)
      .number("parent_uid", info.parentUid)
      .number("uid", info.uid)
      .text("long_name", info.longName)
      .text("short_name", info.shortName)
      .text("kind_name", info.kindName)
      .text("description", info.description);
}

void addFields(Members& members, const PwrMetric& metric) {
  addHead(members, metric.tsc, metric.subType, metric.version);
  members.number("metric_type", metric.metricType)
      .number("metric_id", metric.metricId)
      .number("quantity_uid", metric.quantityUid)
      .number("tab_group_uid", metric.tabGroupUid)
      .number("timeline_group_uid", metric.timelineGroupUid)
      .text("name", metric.name)
      .text("second_name", metric.secondName);
}

void addFields(Members& members, const PwrSample& sample) {
  addHead(members, sample.tsc, sample.subType, sample.version);
  JsonText& json = members.member("attributes");
  json.beginList();
  for (const PwrAttribute& attribute : sample.attributes) {
    addAttribute(json, attribute, sample.version == kPwrLegacyVersion);
  }
  json.endList();
}

void addFields(Members& members, const PwrProcess& process) {
  members.number("event", process.event)
      .number("constant_8", process.constant8)
      .number("pid", process.pid)
      .number("constant_16", process.constant16)
      .number("tsc", process.tsc)
      .text("path", process.path);
}

void addFields(Members& members, const PwrThread& thread) {
  members.number("event", thread.event)
      .number("constant_8", thread.constant8)
      .number("pid", thread.pid)
      .number("tid", thread.tid)
      .number("tsc", thread.tsc);
}

void addFields(Members& members, const PwrKernelWakelock& wakelock) {
  members.number("tid", wakelock.tid)
      .number("pid", wakelock.pid)
      .number("tsc", wakelock.tsc)
      .number("action", static_cast<std::uint8_t>(wakelock.action))
      .number("timeout", wakelock.timeout)
      .text("name", wakelock.name);
}

void addFields(Members& members, const PwrUserWakelock& wakelock) {
  members.number("tid", wakelock.tid)
      .number("pid", wakelock.pid)
      .number("tsc", wakelock.tsc)
      .number("action", static_cast<std::uint8_t>(wakelock.action))
      .number("flag", wakelock.flag)
      .number("uid", wakelock.uid)
      .number("constant_30", wakelock.constant30)
      .text("name", wakelock.name);
}

void addFields(Members& members, const PwrPackage& package) {
  members.number("tsc", package.tsc).number("uid", package.uid).text("name", package.name);
}

}  // namespace

void appendPwrJson(std::string& out, const PwrRecord& record) {
  JsonText json(out);
  json.beginObject();
  Members members(json);
  members.number("offset", record.offset);
  if (record.type) {
    members.number("type", *record.type);
  } else {
    members.member("type").null();
  }
  members.text("kind", pwrKindName(record));
  if (record.size) {
    members.number("size", *record.size);
  }
  std::visit([&](const auto& body) { addFields(members, body); }, record.body);
  json.endObject();
}

}  // namespace qumetra::cli
