#include "writers/json_plugin.h"

#include <pthread.h>
#include <unistd.h>

#include <cstddef>
#include <string>
#include <vector>

#include "client/src/common/number_text.h"
#include "writers/json_plugin_helper/json_file.h"

namespace {

constexpr SeriesWriterForm kForm = {
    .guid = "58166e5e-e927-4154-8614-fdee7f772f54",
    .option = "json",
    .description =
        "Write data trace file (.json) in JSON trace event format for visualization in Perfetto",
    .extension = ".json",
    .flags = pwr::PluginCapability::kFlagContinuous | pwr::PluginCapability::kFlagHostInterpreted,
    .keepsStateNames = true,
};

/// The members that all events of a file have in common: who wrote it, not who was measured.
struct Origin {
  int process = getProcessId();
  int thread = getThreadId();
};

/// The names of a series' numbers.
class ArgumentNames {
 public:
  explicit ArgumentNames(const Series& series) : m_names(series.getStates()) {
    for (const auto& [id, name] : series.getStateNames()) {
      if (id < m_names.size()) {
        m_names[id] = name;
      }
    }
  }

  void writeKey(JsonFile& file, unsigned int id) const {
    if (id < m_names.size()) {
      file.key(m_names[id]);
    } else {
      file.key("state_" + pwr::toString(id));
    }
  }

 private:
  std::vector<std::string> m_names;
};

void writeEvent(JsonFile& file, const Series& series, const Point& point,
                const ArgumentNames& names, const Origin& origin) {
  file.startObject();
  file.textMember("name", "");
  file.textMember("cat", series.categoryText());
  file.textMember("ph", "C");
  file.unsignedMember("ts", point.getStartTimestamp());
  file.key("pid");
  file.signedNumber(origin.process);
  file.key("tid");
  file.signedNumber(origin.thread);
  file.key("args");
  file.startObject();
  const Value& value = point.getValue();
  for (std::size_t i = 0; i < value.size(); ++i) {
    names.writeKey(file, value.id(i));
    file.number(value.number(i));
  }
  file.endObject();
  file.endObject();
}

void writeSeries(JsonFile& file, const Series& series, const Origin& origin) {
  const ArgumentNames names(series);
  for (const Point& point : series.allPoints()) {
    writeEvent(file, series, point, names, origin);
    file.drain();
  }
}

}  // namespace

int getProcessId() { return ::getpid(); }

int getThreadId() { return static_cast<int>(::pthread_self()); }

JSONWriter::JSONWriter() : SeriesWriter(kForm) {}

JSONWriter::~JSONWriter() = default;

int JSONWriter::fini() {
  return finish([this] { writeDocument(); });
}

void JSONWriter::writeDocument() const {
  const Origin origin;
  JsonFile file(fileName);
  file.startObject();
  file.key("traceEvents");
  file.startArray();
  for (const auto& [name, members] : seriesByCategory()) {
    for (const Series* one : members) {
      writeSeries(file, *one, origin);
    }
  }
  file.endArray();
  file.endObject();
  file.finish();
}
