#include "qumetra/readers/qmbin_reader.h"

#include <utility>

#include "qumetra/readers/byte_source.h"
#include "qumetra/readers/record_fields.h"

namespace qumetra {
namespace {

constexpr std::size_t kHeadSize = 3;

/// The types of records as they stand in files.
enum RecordType : std::uint8_t {
  kText = 0,
  kSystem = 1,
  kDescriptor = 2,
  kMetric = 3,
  kSample = 4
};

// What payloads have, the parts of variable length not counted.
constexpr std::size_t kTextSize = 4;
constexpr std::size_t kSystemSize = 64;
constexpr std::size_t kDescriptorSize = 6;
constexpr std::size_t kMetricSize = 20;
constexpr std::size_t kSampleSize = 24;
constexpr std::size_t kColumnSize = 4;
constexpr std::size_t kMetadataSize = 2;

// Where a payload tells how much more there is.
constexpr std::size_t kTextLengthPlace = 2;
constexpr std::size_t kColumnCountPlace = 16;
constexpr std::size_t kMetadataCountPlace = 18;

const std::string kNoText;

std::string numbered(const char* what, std::uint64_t number) {
  return what + (' ' + std::to_string(number));
}

}  // namespace

QmbinVisitor::~QmbinVisitor() = default;
void QmbinVisitor::text(std::uint16_t /*index*/, const std::string& /*text*/) {}
void QmbinVisitor::system(const QmbinSystem& /*system*/) {}
void QmbinVisitor::descriptor(const QmbinDescriptor& /*descriptor*/) {}
void QmbinVisitor::metric(const QmbinMetric& /*metric*/) {}
void QmbinVisitor::sample(const QmbinSample& /*sample*/) {}
void QmbinVisitor::fault(std::uint64_t /*offset*/, const std::string& /*what*/) {}

QmbinReader::QmbinReader(QmbinVisitor& visitor) : m_visitor(visitor), m_payload() {}

QmbinReader::~QmbinReader() = default;

QmbinCounts QmbinReader::read(ByteSource& source) {
  m_counts = {};
  m_offset = 0;
  while (readRecord(source)) {
  }
  m_counts.end = m_offset;
  return m_counts;
}

bool QmbinReader::readRecord(ByteSource& source) {
  char head[kHeadSize];
  const std::size_t headSize = source.read(head, kHeadSize);
  if (headSize == 0) {
    return false;
  }
  if (headSize < kHeadSize) {
    fault("the file ends in the head of a record");
    return false;
  }
  const std::size_t size = RecordFields(head, kHeadSize).u16();
  const std::size_t got = source.read(m_payload.data(), size);
  if (got < size) {
    fault("the file ends in a record: " + std::to_string(got) + " of " + std::to_string(size) +
          " bytes are there");
    return false;
  }
  RecordFields payload(m_payload.data(), size);
  takeRecord(static_cast<std::uint8_t>(head[2]), payload);
  m_offset += kHeadSize + size;
  return true;
}

void QmbinReader::takeRecord(std::uint8_t type, RecordFields& payload) {
  switch (type) {
    case kText:
      return takeText(payload);
    case kSystem:
      return takeSystem(payload);
    case kDescriptor:
      return takeDescriptor(payload);
    case kMetric:
      return takeMetric(payload);
    case kSample:
      return takeSample(payload);
    default:
      fault(numbered("unknown type of record", type));
  }
}

void QmbinReader::takeText(RecordFields& payload) {
  const std::size_t length = payload.peekU16(kTextLengthPlace);
  if (!hasSize(payload, kTextSize + length, "text")) {
    return;
  }
  const std::uint16_t index = payload.u16();
  payload.u16();
  const auto [place, isNew] = m_texts.insert_or_assign(index, payload.bytes(length));
  if (index == 0) {
    fault(numbered("a text has the number", index));
  } else if (!isNew) {
    retold("text", index);
  }
  ++m_counts.texts;
  m_visitor.text(index, place->second);
}

void QmbinReader::takeSystem(RecordFields& payload) {
  if (!hasSize(payload, kSystemSize, "system")) {
    return;
  }
  QmbinSystem system;
  system.firstTimestamp = payload.u64();
  system.lastTimestamp = payload.u64();
  system.durationSeconds = payload.f32();
  system.highFrequencyMHz = payload.f32();
  system.lowFrequencyMHz = payload.f32();
  system.cpuFrequencyMHz = payload.f32();
  system.busFrequencyMHz = payload.f32();
  system.platformId = payload.u32();
  system.platformName = textOf(payload, "platform name");
  system.cpuCodeName = textOf(payload, "CPU code name");
  system.nativeModelName = textOf(payload, "native model name");
  system.controllerHubs = textOf(payload, "controller hubs");
  system.hostName = textOf(payload, "host name");
  system.packages = payload.u16();
  system.modules = payload.u16();
  system.cores = payload.u16();
  system.threads = payload.u16();
  system.osType = textOf(payload, "OS type");
  system.osName = textOf(payload, "OS name");
  if (textOf(payload, "OS name") != system.osName) {
    fault("the two OS names differ");
  }
  ++m_counts.systems;
  m_visitor.system(system);
}

void QmbinReader::takeDescriptor(RecordFields& payload) {
  if (!hasSize(payload, kDescriptorSize, "descriptor")) {
    return;
  }
  QmbinDescriptor descriptor;
  descriptor.index = payload.u16();
  descriptor.attribute = textOf(payload, "descriptor's attribute");
  descriptor.name = textOf(payload, "descriptor's name");
  const std::uint16_t index = descriptor.index;
  const auto [place, isNew] = m_descriptors.insert_or_assign(index, std::move(descriptor));
  if (index == 0) {
    fault(numbered("a descriptor has the number", index));
  } else if (!isNew) {
    retold("descriptor", index);
  }
  ++m_counts.descriptors;
  m_visitor.descriptor(place->second);
}

QmbinMetric QmbinReader::metricHead(RecordFields& payload) {
  QmbinMetric metric;
  metric.id = payload.u32();
  metric.group = textOf(payload, "metric's group");
  metric.name = textOf(payload, "metric's name");
  metric.type = textOf(payload, "metric's type");
  const std::uint16_t quantity = payload.u16();
  const std::uint16_t units = payload.u16();
  metric.hasQuantity = payload.u16() == 1;
  if (metric.hasQuantity) {
    const std::string* const quantityText = findText(quantity, "metric's quantity");
    const std::string* const unitsText = findText(units, "metric's units");
    metric.quantity = quantityText == nullptr ? kNoText : *quantityText;
    metric.units = unitsText == nullptr ? kNoText : *unitsText;
  }
  return metric;
}

void QmbinReader::takeMetric(RecordFields& payload) {
  const std::size_t columns = payload.peekU16(kColumnCountPlace);
  const std::size_t items = payload.peekU16(kMetadataCountPlace);
  if (!hasSize(payload, kMetricSize + kColumnSize * columns + kMetadataSize * items, "metric")) {
    return;
  }
  QmbinMetric metric = metricHead(payload);
  payload.u32();  // The two counts.
  for (std::size_t i = 0; i < columns; ++i) {
    QmbinMetric::Column& column = metric.columns.emplace_back();
    const std::uint16_t entity = payload.u16();
    const std::string* const name = entity == 0 ? nullptr : findText(entity, "column's entity");
    column.descriptor = payload.u16();
    findDescriptor(column.descriptor);
    if (name != nullptr) {
      column.entity = *name;
    }
  }
  for (std::size_t i = 0; i < items; ++i) {
    metric.metadata.push_back(textOf(payload, "metric's metadata"));
  }
  const std::uint32_t id = metric.id;
  const auto [place, isNew] = m_metrics.insert_or_assign(id, std::move(metric));
  if (!isNew) {
    retold("metric", id);
  }
  ++m_counts.metrics;
  m_visitor.metric(place->second);
}

void QmbinReader::takeSample(RecordFields& payload) {
  if (!hasSize(payload, kSampleSize, "sample")) {
    return;
  }
  QmbinSample sample;
  sample.timestamp = payload.u64();
  sample.durationMicroseconds = payload.f32();
  sample.metricId = payload.u32();
  const auto metric = m_metrics.find(sample.metricId);
  if (metric == m_metrics.end()) {
    untold(numbered("a sample of a metric that was not told:", sample.metricId));
  } else {
    sample.metric = &metric->second;
  }
  sample.name = &textOf(payload, "sample's name");
  sample.descriptor = findDescriptor(payload.u16());
  sample.value = payload.f32();
  ++m_counts.samples;
  m_visitor.sample(sample);
}

bool QmbinReader::hasSize(const RecordFields& payload, std::size_t wanted, const char* record) {
  if (payload.size() == wanted) {
    return true;
  }
  fault(std::string("a ") + record + " record of " + std::to_string(payload.size()) +
        " bytes should have " + std::to_string(wanted));
  return false;
}

const std::string& QmbinReader::textOf(RecordFields& payload, const char* what) {
  const std::string* const text = findText(payload.u16(), what);
  return text == nullptr ? kNoText : *text;
}

const std::string* QmbinReader::findText(std::uint16_t index, const char* what) {
  const auto found = m_texts.find(index);
  if (found == m_texts.end()) {
    untold(std::string("the ") + what + " is a text that was not told: " + std::to_string(index));
    return nullptr;
  }
  return &found->second;
}

const QmbinDescriptor* QmbinReader::findDescriptor(std::uint16_t index) {
  if (index == 0) {
    return nullptr;
  }
  const auto found = m_descriptors.find(index);
  if (found == m_descriptors.end()) {
    untold(numbered("a descriptor that was not told:", index));
    return nullptr;
  }
  return &found->second;
}

void QmbinReader::fault(const std::string& what) {
  ++m_counts.faults;
  m_visitor.fault(m_offset, what);
}

void QmbinReader::retold(const char* kind, std::uint64_t number) {
  ++m_counts.retold;
  fault(std::string("told once more: ") + numbered(kind, number));
}

void QmbinReader::untold(const std::string& what) {
  ++m_counts.untold;
  fault(what);
}

}  // namespace qumetra
