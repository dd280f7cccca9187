#include "qumetra/recording/recording_writer.h"

#include <optional>
#include <utility>

#include "host/configuration.h"
#include "host/platform_metadata.h"
#include "qumetra/recording/block_file.h"
#include "qumetra/recording/definition_writer.h"
#include "qumetra/recording/json_text.h"
#include "qumetra/recording/metadata_writer.h"
#include "qumetra/recording/metric_writer.h"
#include "qumetra/recording/table_writer.h"

namespace qumetra {
namespace {

/// Blanks at the end of the first system record. What is known only at the end of a collection are
/// a few numbers and names.
constexpr std::size_t kRewriteRoom = 2048;

std::string systemRecord(const pwr::SystemMessage& message, const MetadataText* metadata) {
  std::string line;
  JsonText json(line);
  json.beginObject();
  json.name("system");
  json.beginObject();
  json.numberMember("id", message.m_id);
  if (metadata != nullptr) {
    json.rawMember("metadata", metadata->object());
  }
  json.endObject();
  json.endObject();
  return line;
}

std::optional<MetadataText> metadataOf(const pwr::SystemMessage& message) {
  return message.m_metadata == nullptr ? std::nullopt
                                       : std::optional<MetadataText>(*message.m_metadata);
}

const MetadataText* addressOf(const std::optional<MetadataText>& text) {
  return text ? &*text : nullptr;
}

template <typename Names>
void appendNames(JsonText& json, const Names& names) {
  json.beginList();
  for (const std::string& name : names) {
    json.text(name);
  }
  json.endList();
}

}  // namespace

struct RecordingWriter::State {
  explicit State(const std::string& path)
      : file(path), definitions(file), metrics(file, definitions) {
    file.append("{\"recording\":{\"version\":1}}\n");
  }

  /// Writes a record. `append` appends its members; definitions that these need come before.
  template <typename Append>
  void write(std::string_view kind, Append append) {
    line.clear();
    JsonText json(line);
    json.beginObject();
    json.name(kind);
    append(json);
    json.endObject();
    line += '\n';
    file.append(line);
  }

  void appendElement(JsonText& json, const pwr::DataElement& element);
  void appendInfo(JsonText& json, const pwr::DynamicAttributeValueManager& info);
  void writeChanges(const pwr::SystemMetadata& metadata);

  BlockFile file;
  DefinitionWriter definitions;
  MetricWriter metrics;
  /// The record that is being composed; kept for the storage.
  std::string line;

  /// The metadata of the last system message and what the recording says of it.
  const pwr::SystemMetadata* lastMetadata = nullptr;
  std::optional<MetadataText> lastText;
  /// Changes of metadata have been written.
  bool hasChanges = false;
  std::uint64_t systemCount = 0;
  /// Where the first system record stands, its line end left out.
  std::uint64_t firstSystemAt = 0;
  std::size_t firstSystemSize = 0;
};

RecordingWriter::RecordingWriter(const std::string& path)
    : m_state(std::make_unique<State>(path)) {}

RecordingWriter::~RecordingWriter() = default;

void RecordingWriter::system(const pwr::SystemMessage& message) {
  State& state = *m_state;
  state.lastMetadata = message.m_metadata;
  state.lastText = metadataOf(message);
  std::string record = systemRecord(message, addressOf(state.lastText));
  if (state.systemCount++ == 0) {
    record.append(kRewriteRoom, ' ');
    state.firstSystemAt = state.file.size();
    state.firstSystemSize = record.size();
  }
  state.file.append(record + '\n');
}

bool RecordingWriter::rewriteSystem(const pwr::SystemMessage& message) {
  State& state = *m_state;
  std::optional<MetadataText> text = metadataOf(message);
  std::string record = systemRecord(message, addressOf(text));
  if (record.size() > state.firstSystemSize) {
    return false;
  }
  record.resize(state.firstSystemSize, ' ');
  state.file.overwrite(state.firstSystemAt, record);
  if (state.systemCount > 1) {
    return true;
  }
  state.lastMetadata = message.m_metadata;
  if (state.hasChanges && message.m_metadata != nullptr) {
    // The changes stand behind the record and would undo it for a reader.
    state.writeChanges(*message.m_metadata);
  }
  state.lastText = std::move(text);
  return true;
}

void RecordingWriter::text(const pwr::TextMessage& message) {
  const bool isHeader = message.getMessageType() == pwr::WriterMessage::kHeaderText;
  m_state->write(isHeader ? "headerText" : "text", [&](JsonText& json) {
    json.beginObject();
    json.numberMember("id", message.m_id);
    json.textMember("message", message.m_message);
    json.endObject();
  });
}

void RecordingWriter::id(const pwr::IdMessage& message) {
  m_state->write("idMessage", [&](JsonText& json) {
    json.beginObject();
    json.numberMember("id", message.m_id);
    json.endObject();
  });
}

void RecordingWriter::sample(const pwr::Metric& metric) {
  m_state->write("sample", [&](JsonText& json) {
    const pwr::SampleData& data = metric.getData();
    json.beginObject();
    json.rawMember("metric", m_state->metrics.metric(metric));
    json.numberMember("timestamp", data.timestamp);
    if (!data.elements.empty()) {
      json.name("elements");
      json.beginList();
      for (const pwr::DataElement* element : data.elements) {
        m_state->appendElement(json, *element);
      }
      json.endList();
    }
    json.endObject();
  });
}

void RecordingWriter::State::appendElement(JsonText& json, const pwr::DataElement& element) {
  json.beginObject();
  json.rawMember("entity", definitions.handleOrNothing(element.getEntity()));
  json.rawMember("descriptor", definitions.handleOrNothing(element.getDescriptor()));
  json.rawMember("keltoDescriptor", definitions.handleOrNothing(element.getKeltoDescriptor()));
  if (element.getValue()->m_tag != pwr::Data::kNone) {
    json.name("value");
    definitions.appendData(json, *element.getValue());
  }
  json.numberMember("duration", element.getDuration());
  if (element.getAdditionalInfo() != nullptr) {
    json.name("info");
    appendInfo(json, *element.getAdditionalInfo());
  }
  json.endObject();
}

void RecordingWriter::State::appendInfo(JsonText& json,
                                        const pwr::DynamicAttributeValueManager& info) {
  json.beginList();
  for (const auto& [id, value] : info) {
    json.beginList();
    definitions.appendKey(json, id);
    definitions.appendData(json, value);
    json.endList();
  }
  json.endList();
}

void RecordingWriter::table(const pwr::TableMessage& table) {
  m_state->write("table", [&](JsonText& json) { appendTable(json, m_state->definitions, table); });
}

void RecordingWriter::container(const pwr::MetricContainerInfoMessage& message) {
  m_state->write("container", [&](JsonText& json) {
    json.beginObject();
    json.numberMember("id", message.m_id);
    json.numberMember("metricId", message.metricId);
    if (message.textNotes != nullptr) {
      json.name("textNotes");
      appendNotes(json, *message.textNotes);
    }
    json.textMember("containerName", message.containerName);
    if (message.metricInfoTable != nullptr) {
      json.name("metricInfoTable");
      appendTable(json, m_state->definitions, *message.metricInfoTable);
    }
    json.textMember("featureName", message.featureName);
    json.textMember("metricName", message.metricName);
    json.numberMember("residencyView", message.residencyView);
    json.endObject();
  });
}

void RecordingWriter::flush(const pwr::SystemMetadata& metadata) {
  if (&metadata == m_state->lastMetadata) {
    m_state->writeChanges(metadata);
    m_state->file.append("{\"flush\":{}}\n");
    return;
  }
  m_state->write("flush", [&](JsonText& json) {
    json.beginObject();
    json.rawMember("metadata", MetadataText(metadata).object());
    json.endObject();
  });
}

void RecordingWriter::metadataChanged(const pwr::SystemMetadata& metadata) {
  if (&metadata == m_state->lastMetadata) {
    m_state->writeChanges(metadata);
  }
}

/// Brings the recording up to what the last system message's metadata says now.
void RecordingWriter::State::writeChanges(const pwr::SystemMetadata& metadata) {
  MetadataText text(metadata);
  const std::string changes = text.changesFrom(*lastText);
  if (!changes.empty()) {
    write("metadata", [&](JsonText& json) { json.raw(changes); });
    hasChanges = true;
  }
  lastText = std::move(text);
}

void RecordingWriter::attributesChanged(const pwr::DataHandle& handle) {
  m_state->definitions.attributesChanged(handle);
}

void RecordingWriter::ended(const pwr::DataHandle& handle) { m_state->definitions.ended(handle); }

void RecordingWriter::config() {
  const pwr::MetricOrder& order = pwr::WriterInterfaceConfigFileParser::instance()->order();
  m_state->write("config", [&](JsonText& json) {
    json.beginObject();
    json.name("featureOrder");
    appendNames(json, order.featureOrder);
    json.name("featurePrefixes");
    appendNames(json, order.featurePrefixes);
    json.name("metricOrder");
    json.beginObject();
    for (const auto& [feature, metrics] : order.metricOrder) {
      json.name(feature);
      appendNames(json, metrics);
    }
    json.endObject();
    json.endObject();
  });
}

void RecordingWriter::note(const std::string& text) {
  m_state->write("note", [&](JsonText& json) {
    json.beginObject();
    json.textMember("text", text);
    json.endObject();
  });
}

void RecordingWriter::sync() { m_state->file.sync(); }

std::string RecordingWriter::close() {
  m_state->file.close();
  return m_state->file.error();
}

const std::string& RecordingWriter::error() const { return m_state->file.error(); }

}  // namespace qumetra
