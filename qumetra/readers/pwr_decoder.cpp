#include "qumetra/readers/pwr_decoder.h"

#include "qumetra/readers/pwr_body_decoder.h"

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

/// Takes one record: finds out its kind, and leaves the rest to the decoder of bodies.
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
  void takeProcessRecord();

  void takeSizeAndType();
  std::string sizeProblem() const;

  /// Makes the record one of this kind; one that is of it already keeps the room that it has.
  template <typename Body>
  Body& become() {
    Body* const body = std::get_if<Body>(&m_record.body);
    return body == nullptr ? m_record.body.emplace<Body>() : *body;
  }

  RecordFields m_fields;
  PwrRecord& m_record;
  PwrBodyDecoder m_body{m_fields};
};

std::string Decoder::run() {
  m_record.size.reset();
  m_record.type.reset();
  takeRecord();
  // A field that is missing is told before what came of reading it as nothing.
  if (m_fields.fellShort() || (m_body.problem().empty() && m_fields.left() != 0)) {
    return sizeProblem();
  }
  return m_body.problem();
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
      return takeProcessRecord();
    case kPwrThreadWord:
      return m_body.take(become<PwrThread>());
    case kPwrHeadMarkerWord:
      return m_body.take(become<PwrHeadMarker>());
    default:
      return m_body.take(become<PwrMagic>());
  }
}

void Decoder::takeHeaderRecord() {
  takeSizeAndType();
  switch (*m_record.type) {
    case kHardware:
      return m_body.take(become<PwrHardware>());
    case kCollection:
      return m_body.take(become<PwrCollection>());
    case kSystem:
      return m_body.take(become<PwrSystem>());
    case kPowerThreshold:
      return m_body.take(become<PwrPowerThreshold>());
    default:
      m_body.unknown("type of a header record", *m_record.type);
  }
}

void Decoder::takeTimedRecord() {
  const std::uint64_t tsc = m_fields.u64();
  takeSizeAndType();
  switch (*m_record.type) {
    case kPackage: {
      auto& package = become<PwrPackage>();
      package.tsc = tsc;
      return m_body.take(package);
    }
    case kSample:
      return takeSampleRecord(tsc);
    case kMetadata:
      return takeMetadataRecord(tsc);
    default:
      m_body.unknown("type of a record with a time", *m_record.type);
  }
}

void Decoder::takeSampleRecord(std::uint64_t tsc) {
  auto& sample = become<PwrSample>();
  sample.tsc = tsc;
  sample.subType = m_fields.u16();
  sample.version = m_fields.u16();
  if (sample.subType != kSampleSubType) {
    return m_body.unknown("sub-type of a sample", sample.subType);
  }
  m_body.take(sample);
}

void Decoder::takeMetadataRecord(std::uint64_t tsc) {
  const std::uint16_t subType = m_fields.u16();
  const std::uint16_t version = m_fields.u16();
  const auto fill = [&](auto& metadata) {
    metadata.tsc = tsc;
    metadata.subType = subType;
    metadata.version = version;
    m_body.take(metadata);
  };
  switch (subType) {
    case kInfoSubType:
      return fill(become<PwrInfo>());
    case kMetricSubType:
      return fill(become<PwrMetric>());
    default:
      m_body.unknown("sub-type of metadata", subType);
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
    m_body.take(wakelock);
  };
  takeSizeAndType();
  switch (*m_record.type) {
    case kKernelWakelock:
      return fill(become<PwrKernelWakelock>());
    case kUserWakelock:
      return fill(become<PwrUserWakelock>());
    default:
      m_body.unknown("type of a wakelock record", *m_record.type);
  }
}

void Decoder::takeProcessRecord() {
  auto& process = become<PwrProcess>();
  process.event = m_fields.u32();
  process.constant8 = m_fields.u32();
  process.pid = m_fields.u32();
  process.constant16 = m_fields.u32();
  process.tsc = m_fields.u64();
  takeSizeAndType();
  if (*m_record.type != kProcess) {
    return m_body.unknown("type of a process record", *m_record.type);
  }
  m_body.take(process);
}

void Decoder::takeSizeAndType() {
  m_record.size = m_fields.u16();
  m_record.type = m_fields.u16();
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
