// The end of a run in both JSON writers, next to a program that writes the same document from plain
// arrays through one RapidJSON Writer. Only `fini` is measured: the samples are there already. Both
// sides keep theirs from one round to the next.
//
// bytes_per_point, told before the table, is what the model of a run takes for each point.
#include <malloc.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "bench/support/ratio.h"
#include "bench/support/scratch.h"
#include "host/handles.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/platform_metadata.h"
#include "host/system_metadata.h"
#include "writers/json_plugin.h"
#include "writers/qmjson_plugin/qmjson_writer.h"

namespace {

using qumetra::bench::bytesOf;
using qumetra::bench::Scratch;

constexpr const char* kMetric = "Package Power";

/// One value per point.
double valueOf(std::size_t number) {
  return static_cast<double>(number * 6364136223846793005U >> 44U) / 7919;
}

/// What a host delivers, one element a message.
class Run {
 public:
  Run() {
    m_system.m_timestampFrequency = 1.0F;
    m_system.m_platformMetadata[pwr::SystemMetadata::kCpu] = &m_cpu;
    m_message.m_metadata = &m_system;
    m_metric.name = kMetric;
    m_metric.metricId = 7;
    m_metric.metricType = pwr::Metric::SAMPLED_VALUE;
  }

  void giveTo(WriterPlugin& writer, std::size_t elements) {
    writer.writeMessage(m_message);
    for (std::size_t i = 0; i < elements; ++i) {
      const pwr::DataElement element(&m_entity, nullptr, nullptr, pwr::Data(valueOf(i)), 0,
                                     nullptr);
      m_metric.setData({i + 1, {&element}});
      writer.writeMessage(m_metric);
    }
  }

 private:
  pwr::SystemMetadata m_system;
  pwr::CPUMetadata m_cpu;
  pwr::SystemMessage m_message;
  pwr::Metric m_metric;
  pwr::EntityHandle m_entity{100, {"Package 0", "", ""}, nullptr};
};

/// A writer that has all samples; one for each number of them.
template <typename Writer>
Writer& filledWriter(std::size_t elements, const std::string& base) {
  static std::map<std::size_t, std::unique_ptr<Writer>> filled;
  std::unique_ptr<Writer>& writer = filled[elements];
  if (writer == nullptr) {
    writer = std::make_unique<Writer>();
    writer->init(base, false);
    static Run run;  // The writers keep its system.
    run.giveTo(*writer, elements);
  }
  writer->init(base, false);
  return *writer;
}

// The floors.

struct PlainPoint {
  std::uint64_t start;
  std::uint64_t end;
  double value;
};

const std::vector<PlainPoint>& plainPoints(std::size_t elements) {
  static std::map<std::size_t, std::vector<PlainPoint>> filled;
  std::vector<PlainPoint>& points = filled[elements];
  for (std::size_t i = points.size(); i < elements; ++i) {
    const auto end = static_cast<std::uint64_t>(static_cast<float>(i + 1));
    points.push_back({end - 1, end, valueOf(i)});
  }
  return points;
}

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

void writeFile(const std::string& path, const rapidjson::StringBuffer& text) {
  std::ofstream file(path, std::ios::binary);
  file.write(text.GetString(), static_cast<std::streamsize>(text.GetSize()));
  file << '\n';
}

void writeTraceFloor(const std::string& path, std::size_t elements) {
  rapidjson::StringBuffer text;
  JsonWriter writer(text);
  const int process = getProcessId();
  const int thread = getThreadId();
  writer.StartObject();
  writer.Key("traceEvents");
  writer.StartArray();
  for (const PlainPoint& point : plainPoints(elements)) {
    writer.StartObject();
    writer.Key("name");
    writer.String("");
    writer.Key("cat");
    writer.String(kMetric);
    writer.Key("ph");
    writer.String("C");
    writer.Key("ts");
    writer.Uint64(point.start);
    writer.Key("pid");
    writer.Int(process);
    writer.Key("tid");
    writer.Int(thread);
    writer.Key("args");
    writer.StartObject();
    writer.Key("");
    writer.Double(point.value);
    writer.EndObject();
    writer.EndObject();
  }
  writer.EndArray();
  writer.EndObject();
  writeFile(path, text);
}

void writePoints(JsonWriter& writer, std::size_t elements) {
  writer.Key("points");
  writer.StartArray();
  for (const PlainPoint& point : plainPoints(elements)) {
    writer.StartObject();
    writer.Key("x");
    writer.Uint64(point.start);
    writer.Key("x1");
    writer.Uint64(point.end);
    writer.Key("y");
    writer.Double(point.value);
    writer.EndObject();
  }
  writer.EndArray();
}

/// All but the head, which does not grow with the points: what stands before them is copied from
/// the empty document.
void writeQmjsonFloor(const std::string& path, std::size_t elements) {
  rapidjson::StringBuffer text;
  JsonWriter writer(text);
  writer.StartObject();
  writer.Key("metaData");
  writer.StartObject();
  writer.Key("type");
  writer.String("SAMPLED_VALUE");
  writer.Key("altUnits");
  writer.StartArray();
  writer.EndArray();
  writer.EndObject();
  writer.Key("data");
  writer.StartObject();
  writer.Key("Package 0");
  writer.StartObject();
  writer.Key("name");
  writer.String("Package 0");
  writer.Key("friendlyName");
  writer.String("Package 0");
  writePoints(writer, elements);
  writer.EndObject();
  writer.EndObject();
  writer.EndObject();
  writeFile(path, text);
}

template <typename Writer>
void writeSubject(const std::string& path, const char* extension, std::size_t elements) {
  filledWriter<Writer>(elements, path.substr(0, path.size() - std::string(extension).size()))
      .fini();
}

/// A ratio means something only when both sides make the same bytes, the head apart.
bool sidesAgree() {
  constexpr std::size_t kElements = 20'000;
  const Scratch trace("check.json");
  const Scratch document("check.qmjson");
  const Scratch floor("check_floor");
  writeSubject<JSONWriter>(trace.path(), ".json", kElements);
  writeTraceFloor(floor.path(), kElements);
  if (bytesOf(trace.path()) != bytesOf(floor.path())) {
    return false;
  }
  writeSubject<QMJSONWriter>(document.path(), ".qmjson", kElements);
  writeQmjsonFloor(floor.path(), kElements);
  const std::string whole = bytesOf(document.path());
  std::string part = bytesOf(floor.path());
  part.insert(part.size() - 1, "}}");
  return whole.size() > part.size() && whole.ends_with(part);
}

void tellBytesPerPoint() {
  constexpr std::size_t kElements = 1'000'000;
  JSONWriter writer;
  writer.init("unused", false);
  Run run;
  const std::size_t before = ::mallinfo2().uordblks + ::mallinfo2().hblkhd;
  run.giveTo(writer, kElements);
  const std::size_t after = ::mallinfo2().uordblks + ::mallinfo2().hblkhd;
  std::printf("bytes_per_point: %zu of a point, %.1f with the room that vectors grow by\n",
              sizeof(Point), static_cast<double>(after - before) / kElements);
}

template <typename Writer>
void addWriter(const std::string& name, const char* extension,
               void (*floor)(const std::string&, std::size_t)) {
  const auto subject = [extension](std::size_t elements) {
    const Scratch file(std::string("subject") + extension);
    writeSubject<Writer>(file.path(), extension, elements);
  };
  const auto floorSide = [floor](std::size_t elements) {
    const Scratch file("floor");
    floor(file.path(), elements);
  };
  qumetra::bench::addContest({name, 500'000, subject, floorSide});
}

}  // namespace

int main(int argc, char** argv) {
  if (!sidesAgree()) {
    std::fprintf(stderr, "json_bench: a floor makes other bytes than the writer\n");
    return 1;
  }
  if (argc == 1) {
    tellBytesPerPoint();
  }
  addWriter<JSONWriter>("json", ".json", &writeTraceFloor);
  addWriter<QMJSONWriter>("qmjson", ".qmjson", &writeQmjsonFloor);
  return qumetra::bench::runContests(argc, argv);
}
