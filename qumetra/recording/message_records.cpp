#include "qumetra/recording/message_records.h"

#include <utility>

#include "host/table.h"
#include "qumetra/recording/metadata_record.h"
#include "qumetra/recording/record_values.h"
#include "qumetra/recording/table_record.h"

namespace qumetra {
namespace {

/// Lends its elements to a metric. The metric outlives the elements, so they are taken back.
class LentElements {
 public:
  LentElements(pwr::Metric& metric, std::uint64_t timestamp,
               const std::vector<pwr::DataElement>& elements)
      : m_metric(metric) {
    pwr::SampleData data;
    data.timestamp = timestamp;
    data.elements.reserve(elements.size());
    for (const pwr::DataElement& element : elements) {
      data.elements.push_back(&element);
    }
    m_metric.setData(std::move(data));
  }
  LentElements(const LentElements&) = delete;
  LentElements& operator=(const LentElements&) = delete;
  ~LentElements() { m_metric.setData({}); }

 private:
  pwr::Metric& m_metric;
};

}  // namespace

struct MessageRecords::Kind {
  std::string_view name;
  void (MessageRecords::*read)(RecordObject&);
  bool isMessage;
};

const MessageRecords::Kind MessageRecords::kKinds[] = {
    {"sample", &MessageRecords::sample, true},
    {"system", &MessageRecords::system, true},
    {"text", &MessageRecords::text, true},
    {"headerText", &MessageRecords::headerText, true},
    {"idMessage", &MessageRecords::idMessage, true},
    {"table", &MessageRecords::table, true},
    {"container", &MessageRecords::container, true},
    {"flush", &MessageRecords::flush, true},
    {"metadata", &MessageRecords::metadata, false},
};

MessageRecords::MessageRecords(Model& model, const Definitions& definitions, MessageSink& sink)
    : m_model(model), m_definitions(definitions), m_sink(sink) {}

bool MessageRecords::read(std::string_view kind, RecordObject& record) {
  for (const Kind& known : kKinds) {
    if (known.name == kind) {
      m_hasDelivered = m_hasDelivered || known.isMessage;
      (this->*known.read)(record);
      return true;
    }
  }
  return false;
}

void MessageRecords::sample(RecordObject& record) {
  pwr::Metric& metric = m_definitions.metric(record.require("metric"));
  const auto timestamp = record.integer<std::uint64_t>("timestamp");
  m_elements.clear();
  m_infos.clear();
  record.forEach("elements", [&](RecordValue element) { addElement(element); });
  record.finish();
  const LentElements lent(metric, timestamp, m_elements);
  ++m_samplesRead;
  m_sink.sample(metric);
}

void MessageRecords::addElement(RecordValue value) {
  RecordObject element(value);
  const pwr::EntityHandle& entity = m_definitions.entity(element.require("entity"));
  const auto* descriptor = m_definitions.descriptorOrNull(element.find("descriptor"));
  const auto* kelto = m_definitions.descriptorOrNull(element.find("keltoDescriptor"));
  pwr::Data data = readData(element, "value", m_definitions);
  const auto duration = element.integer<std::uint64_t>("duration");
  const auto info = element.findNotNull("info");
  const auto* manager = info ? readInfo(*info) : nullptr;
  element.finish();
  m_elements.emplace_back(&entity, descriptor, kelto, std::move(data), duration, manager);
}

const pwr::DynamicAttributeValueManager* MessageRecords::readInfo(RecordValue value) {
  pwr::DynamicAttributeValueManager::Map values;
  for (const RecordValue entry : value.list()) {
    const RecordList pair = entry.list(2);
    const RecordValue key = pair[0];
    if (!key.isString() && !key.isNumber()) {
      key.failType("an id or the ref of an object");
    }
    const std::uint64_t id = key.isNumber() ? key.integer<std::uint64_t>() : m_definitions.id(key);
    if (!values.emplace(id, readData(pair[1], m_definitions)).second) {
      key.fail("key " + std::to_string(id) + " given twice", "it once");
    }
  }
  return &m_infos.emplace_back(std::move(values));
}

void MessageRecords::system(RecordObject& record) {
  pwr::SystemMessage message;
  message.m_id = record.integer<std::uint32_t>("id");
  pwr::SystemMetadata& metadata = m_model.addSystemMetadata();
  if (const auto member = record.find("metadata")) {
    RecordObject members(*member);
    readMetadata(members, m_model, metadata);
  }
  record.finish();
  m_lastMetadata = &metadata;
  message.m_metadata = &metadata;
  m_sink.system(message);
}

void MessageRecords::text(RecordObject& record) {
  pwr::TextMessage message;
  message.m_id = record.integer<std::uint32_t>("id");
  message.setMessage(record.string("message"));
  record.finish();
  m_sink.text(message);
}

void MessageRecords::headerText(RecordObject& record) {
  pwr::HeaderTextMessage message;
  message.m_id = record.integer<std::uint32_t>("id");
  message.setMessage(record.string("message"));
  record.finish();
  m_sink.text(message);
}

void MessageRecords::idMessage(RecordObject& record) {
  pwr::IdMessage message;
  message.m_id = record.integer<std::uint32_t>("id");
  record.finish();
  m_sink.id(message);
}

void MessageRecords::table(RecordObject& record) {
  pwr::TableMessage table;
  readTable(record, m_model, m_definitions, table);
  m_sink.table(table);
}

void MessageRecords::container(RecordObject& record) {
  pwr::MetricContainerInfoMessage message;
  message.m_id = record.integer<std::uint32_t>("id");
  message.metricId = record.integer<std::uint32_t>("metricId");
  if (const auto notes = record.findNotNull("textNotes")) {
    message.textNotes = &m_model.addNotes(readNotes(*notes));
  }
  message.containerName = record.string("containerName");
  pwr::TableMessage table;
  if (const auto member = record.findNotNull("metricInfoTable")) {
    RecordObject members(*member);
    readTable(members, m_model, m_definitions, table);
    message.metricInfoTable = &table;
  }
  message.featureName = record.string("featureName");
  message.metricName = record.string("metricName");
  message.residencyView = record.integer<std::uint8_t>("residencyView");
  record.finish();
  m_sink.container(message);
}

void MessageRecords::flush(RecordObject& record) {
  const auto member = record.findNotNull("metadata");
  record.finish();
  if (member) {
    pwr::SystemMetadata& metadata = m_model.addSystemMetadata();
    RecordObject members(*member);
    readMetadata(members, m_model, metadata);
    m_sink.flush(metadata);
    return;
  }
  if (m_lastMetadata == nullptr) {
    record.value().fail("no metadata", "metadata, or a system record before");
  }
  m_sink.flush(*m_lastMetadata);
}

void MessageRecords::metadata(RecordObject& record) {
  if (m_lastMetadata == nullptr) {
    record.value().fail("nothing to change", "a system record before");
  }
  readMetadata(record, m_model, *m_lastMetadata);
  m_sink.metadataChanged(*m_lastMetadata);
}

}  // namespace qumetra
