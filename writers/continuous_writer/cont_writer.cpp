#include "writers/continuous_writer/cont_writer.h"

#include <array>
#include <utility>

#include "host/logger.h"
#include "host/platform_metadata.h"
#include "host/services.h"
#include "host/system_metadata.h"
#include "writers/continuous_writer/metric_description.h"
#include "writers/output_handle.h"
#include "writers/system_lookup.h"

namespace {

using JsonWriter = ContWriter::JsonWriter;

/// Longer file names are cut.
constexpr std::size_t kFileNameSize = 1024;
constexpr int kOnlyThread = 1;

// What a flush returns.
constexpr int kNothingWritten = 0;
constexpr int kNoFailure = 1;

/// An entry of a map that is there as long as this is.
template <typename Map>
class EntryForNow {
 public:
  EntryForNow(Map& map, const typename Map::key_type& key, typename Map::mapped_type value)
      : m_map(map), m_entry(map.emplace(key, std::move(value))) {}
  EntryForNow(const EntryForNow&) = delete;
  EntryForNow& operator=(const EntryForNow&) = delete;
  ~EntryForNow() { m_map.erase(m_entry); }

 private:
  Map& m_map;
  typename Map::iterator m_entry;
};

void member(JsonWriter& writer, const char* key, const std::string& text) {
  writer.Key(key);
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void member(JsonWriter& writer, const char* key, int number) {
  writer.Key(key);
  writer.Int(number);
}

void member(JsonWriter& writer, const char* key, unsigned long number) {
  writer.Key(key);
  writer.Uint64(number);
}

void member(JsonWriter& writer, const char* key, double number) {
  writer.Key(key);
  writer.Double(number);
}

void writeTraceEvent(JsonWriter& writer, const ContinuousWriter::Data& sample) {
  writer.StartObject();
  member(writer, "name", sample.entity);
  member(writer, "ph", std::string("X"));
  member(writer, "ts", sample.timestamp);
  member(writer, "dur", sample.duration);
  member(writer, "pid", sample.metricId);
  member(writer, "tid", kOnlyThread);
  writer.Key("args");
  writer.StartObject();
  member(writer, "power", sample.value);
  member(writer, "state", sample.state);
  writer.EndObject();
  writer.EndObject();
}

void writeSample(JsonWriter& writer, const ContinuousWriter::Data& sample) {
  writer.StartObject();
  member(writer, "ID", sample.metricId);
  member(writer, "Entity", sample.entity);
  member(writer, "Descriptor", sample.descriptor);
  member(writer, "State", sample.state);
  member(writer, "Timestamp", sample.timestamp);
  member(writer, "Duration", sample.duration);
  member(writer, "Value", sample.value);
  writer.EndObject();
}

void writeDescription(JsonWriter& writer, const std::string& name,
                      const ContinuousWriter::Metadata* node) {
  writer.StartObject();
  member(writer, "FeatureName", node->name);
  member(writer, "Name", name);
  member(writer, "ID", node->id);
  ContWriter::flushMetadata_i(node, writer);
  writer.EndObject();
}

void writeEntry(JsonWriter& writer, const ContinuousWriter::Metadata::Data& entry) {
  if (entry.child == nullptr) {
    writer.String(entry.value.data(), static_cast<rapidjson::SizeType>(entry.value.size()));
    return;
  }
  writer.StartObject();
  ContWriter::flushMetadata_i(entry.child.get(), writer);
  writer.EndObject();
}

}  // namespace

ContWriter::ContWriter() = default;

ContWriter::ContWriter(const std::string& base) : ContinuousWriter(base) {}

ContWriter::~ContWriter() = default;

int ContWriter::flushContinuousResults(const pwr::SystemMetadata& system) {
  const pwr::CPUMetadata* cpu = processorOf(&system);
  if (cpu == nullptr) {
    return kNothingWritten;
  }
  const bool isTrace = extension == ".json";
  if (!isTrace && extension != ".qmjson") {
    return kNoFailure;
  }
  if (!(isTrace ? flushTraceEvents_i() : flushQmjson_i(system, *cpu))) {
    return kNothingWritten;
  }
  metadata.clear();
  data.clear();
  return kNoFailure;
}

void ContWriter::flushMetadata_i(const ContinuousWriter::Metadata* node, JsonWriter& writer) {
  if (node == nullptr) {
    return;
  }
  for (const auto& [key, list] : node->entries) {
    if (list.empty()) {
      continue;
    }
    writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
    if (list.size() > 1) {
      writer.StartArray();
    }
    for (const auto& entry : list) {
      writeEntry(writer, *entry);
    }
    if (list.size() > 1) {
      writer.EndArray();
    }
  }
}

bool ContWriter::flushTraceEvents_i() {
  static int num = 0;
  return handOut_i(num, &ContWriter::writeTraceEvents_i);
}

bool ContWriter::flushQmjson_i(const pwr::SystemMetadata& system, const pwr::CPUMetadata& cpu) {
  static int num = 0;
  const EntryForNow described(metadata, "SystemMetadata", describeSystem(system, cpu));
  return handOut_i(num, &ContWriter::writeQmjson_i);
}

void ContWriter::writeTraceEvents_i(JsonWriter& writer) const {
  writer.StartObject();
  writer.Key("traceEvents");
  writer.StartArray();
  for (const Data& sample : data) {
    writeTraceEvent(writer, sample);
  }
  writer.EndArray();
  writer.EndObject();
}

void ContWriter::writeQmjson_i(JsonWriter& writer) const {
  writer.StartObject();
  if (!metadata.empty()) {
    writer.Key("Metadata");
    writer.StartArray();
    for (const auto& [name, node] : metadata) {
      writeDescription(writer, name, node.get());
    }
    writer.EndArray();
  }
  writer.Key("Data");
  writer.StartArray();
  for (const Data& sample : data) {
    writeSample(writer, sample);
  }
  writer.EndArray();
  writer.EndObject();
}

bool ContWriter::handOut_i(int& number, void (ContWriter::*write)(JsonWriter&) const) const {
  std::array<char, kFileNameSize> name{};
  pw_snprintf(name.data(), name.size(), "%s_%d%s", outputBase.c_str(), number, extension.c_str());
  pwr::Logger* const output = outputHandle(name.data());
  if (output == nullptr) {
    return false;
  }
  rapidjson::StringBuffer document;
  JsonWriter writer(document);
  (this->*write)(writer);
  output->m_buffer.insert(output->m_buffer.end(), document.GetString(),
                          document.GetString() + document.GetSize());
  ++number;
  return bringOut(*output);
}
