#include "qumetra/readers/pwr_decoder.h"

#include <cstddef>
#include <utility>

namespace qumetra {
namespace {

/// The types of records as they stand in files.
enum RecordType : std::uint16_t {
  kProcess = 0,
  kHardware = 18,
  kCollection = 44,
  kSystem = 45,
  kPowerThreshold = 63,
  kKernelWakelock = 64,
  kUserWakelock = 67,
  kPackage = 68,
  kSample = 71,
  kMetadata = 72
};

/// What stands behind the type of samples and metadata.
enum SubType : std::uint16_t { kSampleSubType = 6, kInfoSubType = 7, kMetricSubType = 8 };

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

/// Takes the fields of one record. What is wrong first sticks; what is taken behind it is of no
/// use.
class Decoder {
 public:
  Decoder(RecordFields fields, PwrRecord& record) : m_fields(fields), m_record(record) {}

  std::string run();

 private:
  void takeRecord();
  void takeHeaderRecord();
  void takeTimedRecord();
  void takeSampleRecord(std::uint64_t tsc);
  void takeMetadataRecord(std::uint64_t tsc);
  void takeWakelockRecord();

  void take(PwrMagic& magic);
  void take(PwrCollection& collection);
  void take(PwrSystem& system);
  void take(PwrHardware& hardware);
  void take(PwrHeadMarker& marker);
  void take(PwrPowerThreshold& threshold);
  void take(PwrProcess& process);
  void take(PwrThread& thread);
  void take(PwrInfo& info);
  void take(PwrMetric& metric);
  void take(PwrSample& sample);
  void take(PwrKernelWakelock& wakelock);
  void take(PwrUserWakelock& wakelock);
  void take(PwrPackage& package);

  void takeSizeAndType();
  std::string sizedText(std::size_t longest);
  std::string terminatedText(std::size_t size, std::size_t longest);
  void limit(std::size_t size, std::size_t longest);
  void takeTerminator();
  void unknown(const char* what, unsigned number);
  void wrong(std::string what);
  std::string sizeProblem() const;

  /// Makes the record one of this kind; one that is of it already keeps the room that it has.
  template <typename Body>
  Body& become() {
    Body* const body = std::get_if<Body>(&m_record.body);
    return body == nullptr ? m_record.body.emplace<Body>() : *body;
  }

  RecordFields m_fields;
  PwrRecord& m_record;
  std::string m_problem;
};

std::string Decoder::run() {
  m_record.size.reset();
  m_record.type.reset();
  takeRecord();
  // A field that is missing is told before what came of reading it as nothing.
  if (m_fields.fellShort() || (m_problem.empty() && m_fields.left() != 0)) {
    return sizeProblem();
  }
  return std::move(m_problem);
}

void Decoder::takeRecord() {
  switch (m_fields.u32()) {
    case kPwrHeaderWord:
      return takeHeaderRecord();
    case kPwrTimedWord:
      return takeTimedRecord();
    case kPwrWakelockWord:
      return takeWakelockRecord();
    case kPwrProcessWord:
      return take(become<PwrProcess>());
    case kPwrThreadWord:
      return take(become<PwrThread>());
    case kPwrHeadMarkerWord:
      return take(become<PwrHeadMarker>());
    default:
      return take(become<PwrMagic>());
  }
}

void Decoder::takeHeaderRecord() {
  takeSizeAndType();
  switch (*m_record.type) {
    case kHardware:
      return take(become<PwrHardware>());
    case kCollection:
      return take(become<PwrCollection>());
    case kSystem:
      return take(become<PwrSystem>());
    case kPowerThreshold:
      return take(become<PwrPowerThreshold>());
    default:
      unknown("type of a header record", *m_record.type);
  }
}

void Decoder::takeTimedRecord() {
  const std::uint64_t tsc = m_fields.u64();
  takeSizeAndType();
  switch (*m_record.type) {
    case kPackage: {
      auto& package = become<PwrPackage>();
      package.tsc = tsc;
      return take(package);
    }
    case kSample:
      return takeSampleRecord(tsc);
    case kMetadata:
      return takeMetadataRecord(tsc);
    default:
      unknown("type of a record with a time", *m_record.type);
  }
}

void Decoder::takeSampleRecord(std::uint64_t tsc) {
  auto& sample = become<PwrSample>();
  sample.tsc = tsc;
  sample.subType = m_fields.u16();
  sample.version = m_fields.u16();
  if (sample.subType != kSampleSubType) {
    return unknown("sub-type of a sample", sample.subType);
  }
  take(sample);
}

void Decoder::takeMetadataRecord(std::uint64_t tsc) {
  const std::uint16_t subType = m_fields.u16();
  const std::uint16_t version = m_fields.u16();
  const auto fill = [&](auto& metadata) {
    metadata.tsc = tsc;
    metadata.subType = subType;
    metadata.version = version;
    take(metadata);
  };
  switch (subType) {
    case kInfoSubType:
      return fill(become<PwrInfo>());
    case kMetricSubType:
      return fill(become<PwrMetric>());
    default:
      unknown("sub-type of metadata", subType);
  }
}

void Decoder::takeWakelockRecord() {
  const std::uint32_t tid = m_fields.u32();
  const std::uint32_t pid = m_fields.u32();
  const std::uint64_t tsc = m_fields.u64();
  const auto fill = [&](auto& wakelock) {
    wakelock.tid = tid;
    wakelock.pid = pid;
    wakelock.tsc = tsc;
    take(wakelock);
  };
  takeSizeAndType();
  switch (*m_record.type) {
    case kKernelWakelock:
      return fill(become<PwrKernelWakelock>());
    case kUserWakelock:
      return fill(become<PwrUserWakelock>());
    default:
      unknown("type of a wakelock record", *m_record.type);
  }
}

void Decoder::take(PwrMagic& magic) {
  magic.constant4 = m_fields.u32();
  if (magic.constant4 != kMagicNumber) {
    wrong("a magic record without its number");
  }
}

void Decoder::take(PwrCollection& collection) {
  collection.constant8 = m_fields.u32();
  collection.versionMajor = m_fields.u16();
  collection.versionMinor = m_fields.u16();
  collection.versionPatch = m_fields.u32();
  collection.constant20 = m_fields.u64();
  // The only text without a terminating zero.
  collection.name = m_fields.bytes(m_fields.u8());
}

void Decoder::take(PwrSystem& system) {
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

void Decoder::take(PwrHardware& hardware) {
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

void Decoder::take(PwrHeadMarker& marker) {
  marker.constant4 = m_fields.u32();
  marker.constant8 = m_fields.u8();
  marker.firstTsc = m_fields.u64();
  marker.timerResolutionDiv100 = m_fields.u64();
  if (marker.constant4 != kHeadMarkerNumber || marker.constant8 != kHeadMarkerLevel) {
    wrong("a head marker does not begin as all do");
  }
}

void Decoder::take(PwrPowerThreshold& threshold) {
  threshold.constant8 = m_fields.u32();
  threshold.constant12 = m_fields.u16();
  threshold.constant14 = m_fields.bytes(kReservedSize);
  threshold.cpuFrequencyMHz = m_fields.u32();
}

void Decoder::take(PwrProcess& process) {
  process.event = m_fields.u32();
  process.constant8 = m_fields.u32();
  process.pid = m_fields.u32();
  process.constant16 = m_fields.u32();
  process.tsc = m_fields.u64();
  takeSizeAndType();
  if (*m_record.type != kProcess) {
    return unknown("type of a process record", *m_record.type);
  }
  process.path = terminatedText(m_fields.left(), kLongestProcessPath);
}

void Decoder::take(PwrThread& thread) {
  thread.event = m_fields.u32();
  thread.constant8 = m_fields.u32();
  thread.pid = m_fields.u32();
  thread.tid = m_fields.u32();
  thread.tsc = m_fields.u64();
}

void Decoder::take(PwrInfo& info) {
  if (info.version != kVersion && info.version != kPwrLegacyVersion) {
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

void Decoder::take(PwrMetric& metric) {
  if (metric.version != kVersion && metric.version != kPwrLegacyVersion) {
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

void Decoder::take(PwrSample& sample) {
  if (sample.version != kVersion && sample.version != kPwrLegacyVersion) {
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

void Decoder::take(PwrKernelWakelock& wakelock) {
  wakelock.action = PwrWakelockAction{m_fields.u8()};
  wakelock.timeout = m_fields.u64();
  wakelock.name = sizedText(kLongestWakelockName);
}

void Decoder::take(PwrUserWakelock& wakelock) {
  wakelock.action = PwrWakelockAction{m_fields.u8()};
  wakelock.flag = m_fields.u8();
  wakelock.uid = m_fields.u32();
  wakelock.constant30 = m_fields.u32();
  wakelock.name = sizedText(kLongestWakelockName);
}

void Decoder::take(PwrPackage& package) {
  package.uid = m_fields.u32();
  package.name = sizedText(kLongestWakelockName);
}

void Decoder::takeSizeAndType() {
  m_record.size = m_fields.u16();
  m_record.type = m_fields.u16();
}

std::string Decoder::sizedText(std::size_t longest) {
  const std::size_t size = m_fields.u16();
  return terminatedText(size, longest);
}

std::string Decoder::terminatedText(std::size_t size, std::size_t longest) {
  limit(size, longest);
  if (size == 0) {
    wrong("a text has no terminating zero");
    return {};
  }
  std::string text = m_fields.bytes(size - 1);
  takeTerminator();
  return text;
}

void Decoder::limit(std::size_t size, std::size_t longest) {
  if (size > longest) {
    wrong("a text of " + std::to_string(size) + " bytes where at most " + std::to_string(longest) +
          " may be");
  }
}

void Decoder::takeTerminator() {
  if (m_fields.u8() != 0) {
    wrong("a text has no terminating zero");
  }
}

void Decoder::unknown(const char* what, unsigned number) {
  wrong("unknown " + (what + (' ' + std::to_string(number))));
}

void Decoder::wrong(std::string what) {
  if (m_problem.empty()) {
    m_problem = std::move(what);
  }
}

std::string Decoder::sizeProblem() const {
  const std::string size = "the size " + std::to_string(m_record.size.value_or(0));
  return m_fields.fellShort()
             ? size + " is too small for what the record holds"
             : size + " leaves " + std::to_string(m_fields.left()) + " bytes of the record over";
}

}  // namespace

std::string decodePwrRecord(RecordFields fields, PwrRecord& record) {
  return Decoder(fields, record).run();
}

}  // namespace qumetra
