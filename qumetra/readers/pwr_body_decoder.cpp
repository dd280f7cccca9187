#include "qumetra/readers/pwr_body_decoder.h"

#include <cstddef>
#include <utility>

namespace qumetra {
namespace {

// What the records that have no type are told by, behind their first words.
constexpr std::uint32_t kMagicNumber = 0xADDEDEFA;
constexpr std::uint32_t kHeadMarkerNumber = 0x02000020;
constexpr std::uint8_t kHeadMarkerLevel = 2;

constexpr std::uint16_t kVersion = 2;

// The most that the format lets a record have, texts with their terminating zeros.
constexpr std::size_t kLongestMetadataText = 400;
constexpr std::size_t kLongestWakelockName = 80;
constexpr std::size_t kLongestProcessPath = 30;
constexpr std::size_t kMostAttributes = 2048;
constexpr std::size_t kUnlimited = 0x10000;

constexpr std::size_t kAttributeSize = 12;
constexpr std::size_t kHardwareThreadSize = 4;
constexpr std::size_t kReservedSize = 48;

bool isKnown(std::uint16_t version) { return version == kVersion || version == kPwrLegacyVersion; }

}  // namespace

void PwrBodyDecoder::take(PwrMagic& magic) {
  magic.constant4 = m_fields.u32();
  if (magic.constant4 != kMagicNumber) {
    wrong("a magic record without its number");
  }
}

void PwrBodyDecoder::take(PwrCollection& collection) {
  collection.constant8 = m_fields.u32();
  collection.versionMajor = m_fields.u16();
  collection.versionMinor = m_fields.u16();
  collection.versionPatch = m_fields.u32();
  collection.constant20 = m_fields.u64();
  // The only text without a terminating zero.
  collection.name = m_fields.bytes(m_fields.u8());
}

void PwrBodyDecoder::take(PwrSystem& system) {
  system.constant8 = m_fields.u16();
  system.constant10 = m_fields.u16();
  system.osKind = m_fields.u16();
  for (std::uint16_t& number : system.osVersion) {
    number = m_fields.u16();
  }
  system.hostName = sizedText(kUnlimited);
  system.platformName = sizedText(kUnlimited);
  system.osName = sizedText(kUnlimited);
  system.lastText = sizedText(kUnlimited);
}

void PwrBodyDecoder::take(PwrHardware& hardware) {
  hardware.constant8 = m_fields.u32();
  hardware.tscFrequencyHz = m_fields.u64();
  hardware.tscFrequencyHzAgain = m_fields.u64();
  hardware.highestAddress = m_fields.u64();
  hardware.addressWidth = m_fields.u8();
  hardware.family = m_fields.u8();
  hardware.model = m_fields.u8();
  hardware.stepping = m_fields.u8();
  const std::uint64_t count = m_fields.u32();
  hardware.threads.clear();
  if (count * kHardwareThreadSize != m_fields.left()) {
    return wrong("there are not as many hardware threads as are told: " + std::to_string(count));
  }
  hardware.threads.resize(static_cast<std::size_t>(count));
  for (PwrHardware::Thread& thread : hardware.threads) {
    thread.constant0 = m_fields.u8();
    thread.package = m_fields.u8();
    thread.core = m_fields.u8();
    thread.thread = m_fields.u8();
  }
}

void PwrBodyDecoder::take(PwrHeadMarker& marker) {
  marker.constant4 = m_fields.u32();
  marker.constant8 = m_fields.u8();
  marker.firstTsc = m_fields.u64();
  marker.timerResolutionDiv100 = m_fields.u64();
  if (marker.constant4 != kHeadMarkerNumber || marker.constant8 != kHeadMarkerLevel) {
    wrong("a head marker does not begin as all do");
  }
}

void PwrBodyDecoder::take(PwrPowerThreshold& threshold) {
  threshold.constant8 = m_fields.u32();
  threshold.constant12 = m_fields.u16();
  threshold.constant14 = m_fields.bytes(kReservedSize);
  threshold.cpuFrequencyMHz = m_fields.u32();
}

void PwrBodyDecoder::take(PwrProcess& process) {
  process.path = terminatedText(m_fields.left(), kLongestProcessPath);
}

void PwrBodyDecoder::take(PwrThread& thread) {
  thread.event = m_fields.u32();
  thread.constant8 = m_fields.u32();
  thread.pid = m_fields.u32();
  thread.tid = m_fields.u32();
  thread.tsc = m_fields.u64();
}

void PwrBodyDecoder::take(PwrInfo& info) {
  if (!isKnown(info.version)) {
    return unknown("version", info.version);
  }
  info.infoType = m_fields.u32();
  info.value = m_fields.u32();
  info.parentUid = m_fields.u32();
  info.uid = m_fields.u32();
  const std::size_t longLength = m_fields.u16();
  const std::size_t shortLength = m_fields.u16();
  const std::size_t kindLength = m_fields.u16();
  const std::size_t descriptionLength = m_fields.u16();
  limit(longLength + shortLength + kindLength + descriptionLength + 1, kLongestMetadataText);
  info.longName = m_fields.bytes(longLength);
  info.shortName = m_fields.bytes(shortLength);
  info.kindName = m_fields.bytes(kindLength);
  info.description = m_fields.bytes(descriptionLength);
  takeTerminator();
}

void PwrBodyDecoder::take(PwrMetric& metric) {
  if (!isKnown(metric.version)) {
    return unknown("version", metric.version);
  }
  metric.metricType = m_fields.u32();
  metric.metricId = m_fields.u32();
  metric.quantityUid = m_fields.u32();
  metric.tabGroupUid = m_fields.u32();
  metric.timelineGroupUid = m_fields.u32();
  const std::size_t nameLength = m_fields.u16();
  const std::size_t secondLength = m_fields.u16();
  limit(nameLength + secondLength + 1, kLongestMetadataText);
  metric.name = m_fields.bytes(nameLength);
  metric.secondName = m_fields.bytes(secondLength);
  takeTerminator();
}

void PwrBodyDecoder::take(PwrSample& sample) {
  if (!isKnown(sample.version)) {
    return unknown("version", sample.version);
  }
  const std::size_t count = m_fields.u16();
  sample.attributes.clear();
  if (count > kMostAttributes) {
    return wrong("more than 2048 attributes: " + std::to_string(count));
  }
  if (count * kAttributeSize != m_fields.left()) {
    return wrong("there are not as many attributes as are told: " + std::to_string(count));
  }
  sample.attributes.resize(count);
  for (PwrAttribute& attribute : sample.attributes) {
    attribute.id = PwrAttributeId{m_fields.u32()};
    attribute.bits = m_fields.u64();
  }
}

void PwrBodyDecoder::take(PwrKernelWakelock& wakelock) {
  wakelock.action = PwrWakelockAction{m_fields.u8()};
  wakelock.timeout = m_fields.u64();
  wakelock.name = sizedText(kLongestWakelockName);
}

void PwrBodyDecoder::take(PwrUserWakelock& wakelock) {
  wakelock.action = PwrWakelockAction{m_fields.u8()};
  wakelock.flag = m_fields.u8();
  wakelock.uid = m_fields.u32();
  wakelock.constant30 = m_fields.u32();
  wakelock.name = sizedText(kLongestWakelockName);
}

void PwrBodyDecoder::take(PwrPackage& package) {
  package.uid = m_fields.u32();
  package.name = sizedText(kLongestWakelockName);
}

std::string PwrBodyDecoder::sizedText(std::size_t longest) {
  const std::size_t size = m_fields.u16();
  return terminatedText(size, longest);
}

std::string PwrBodyDecoder::terminatedText(std::size_t size, std::size_t longest) {
  limit(size, longest);
  if (size == 0) {
    wrong("a text has no terminating zero");
    return {};
  }
  std::string text = m_fields.bytes(size - 1);
  takeTerminator();
  return text;
}

void PwrBodyDecoder::limit(std::size_t size, std::size_t longest) {
  if (size > longest) {
    wrong("a text of " + std::to_string(size) + " bytes where at most " + std::to_string(longest) +
          " may be");
  }
}

void PwrBodyDecoder::takeTerminator() {
  if (m_fields.u8() != 0) {
    wrong("a text has no terminating zero");
  }
}

void PwrBodyDecoder::unknown(const char* what, unsigned number) {
  wrong("unknown " + (what + (' ' + std::to_string(number))));
}

void PwrBodyDecoder::wrong(std::string what) {
  if (m_problem.empty()) {
    m_problem = std::move(what);
  }
}

}  // namespace qumetra
