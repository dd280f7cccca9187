#include "qumetra/cli/qmbin_dump.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "qumetra/cli/command.h"
#include "qumetra/cli/console.h"
#include "qumetra/cli/qmbin_text.h"
#include "qumetra/cli/reading_output.h"
#include "qumetra/cli/series_name.h"
#include "qumetra/readers/byte_source.h"
#include "qumetra/readers/qmbin_reader.h"
#include "qumetra/recording/json_text.h"

namespace qumetra::cli {
namespace {

/// Prints faults.
class FaultPrinter : public QmbinVisitor {
 public:
  void startFile(const std::string& file) { m_lines.startFile(file); }
  /// Ends with the file that was started, however far it was read.
  virtual void endFile() { m_lines.endFile(); }

  void fault(std::uint64_t offset, const std::string& what) override {
    m_lines.print(offset, what);
  }

 private:
  FaultLines m_lines;
};

/// A `FaultPrinter` that prints what else there is.
class Dumper : public FaultPrinter {
 public:
  void endFile() override {
    m_result.flush();
    FaultPrinter::endFile();
  }

 protected:
  /// Ends what was appended to `m_out`.
  void endLine() { m_result.endLine(); }

  ResultLines m_result;
  std::string& m_out = m_result.line();
};

class TextDumper : public Dumper {
 public:
  void system(const QmbinSystem& system) override { show(system); }
  void descriptor(const QmbinDescriptor& descriptor) override { show(descriptor); }
  void metric(const QmbinMetric& metric) override { show(metric); }
  void sample(const QmbinSample& sample) override { show(sample); }

 private:
  template <typename Record>
  void show(const Record& record) {
    appendText(m_out, record);
    endLine();
  }
};

/// One object per record, with the record's kind as its only member.
class JsonDumper : public Dumper {
 public:
  void system(const QmbinSystem& system) override {
    JsonText json = begin("system");
    number(json, "firstTimestamp", system.firstTimestamp);
    number(json, "lastTimestamp", system.lastTimestamp);
    real(json, "durationSeconds", system.durationSeconds);
    real(json, "highFrequencyMHz", system.highFrequencyMHz);
    real(json, "lowFrequencyMHz", system.lowFrequencyMHz);
    real(json, "cpuFrequencyMHz", system.cpuFrequencyMHz);
    real(json, "busFrequencyMHz", system.busFrequencyMHz);
    number(json, "platformId", system.platformId);
    text(json, "platformName", system.platformName);
    text(json, "cpuCodeName", system.cpuCodeName);
    text(json, "nativeModelName", system.nativeModelName);
    text(json, "controllerHubs", system.controllerHubs);
    text(json, "hostName", system.hostName);
    number(json, "packages", system.packages);
    number(json, "modules", system.modules);
    number(json, "cores", system.cores);
    number(json, "threads", system.threads);
    text(json, "osType", system.osType);
    text(json, "osName", system.osName);
    end(json);
  }

  void descriptor(const QmbinDescriptor& descriptor) override {
    JsonText json = begin("descriptor");
    number(json, "index", descriptor.index);
    text(json, "name", descriptor.name);
    text(json, "attribute", descriptor.attribute);
    end(json);
  }

  void metric(const QmbinMetric& metric) override {
    JsonText json = begin("metric");
    number(json, "id", metric.id);
    text(json, "name", metric.name);
    text(json, "group", metric.group);
    text(json, "type", metric.type);
    if (metric.hasQuantity) {
      text(json, "quantity", metric.quantity);
      text(json, "units", metric.units);
    }
    json.name("columns");
    json.beginList();
    for (const QmbinMetric::Column& column : metric.columns) {
      addColumn(json, column);
    }
    json.endList();
    json.name("metadata");
    json.beginList();
    for (const std::string& item : metric.metadata) {
      json.text(item);
    }
    json.endList();
    end(json);
  }

  void sample(const QmbinSample& sample) override {
    JsonText json = begin("sample");
    number(json, "timestamp", sample.timestamp);
    number(json, "metricId", sample.metricId);
    text(json, "name", *sample.name);
    if (sample.descriptor != nullptr) {
      number(json, "descriptor", sample.descriptor->index);
    }
    real(json, "durationMicroseconds", sample.durationMicroseconds);
    real(json, "value", sample.value);
    end(json);
  }

 private:
  JsonText begin(const char* kind) {
    JsonText json(m_out);
    json.beginObject();
    json.name(kind);
    json.beginObject();
    return json;
  }
  void end(JsonText& json) {
    json.endObject();
    json.endObject();
    endLine();
  }

  static void text(JsonText& json, const char* name, const std::string& value) {
    json.name(name);
    json.text(value);
  }
  static void number(JsonText& json, const char* name, std::uint64_t value) {
    json.name(name);
    json.unsignedInteger(value);
  }
  static void real(JsonText& json, const char* name, float value) {
    json.name(name);
    json.narrowReal(value);
  }
  static void addColumn(JsonText& json, const QmbinMetric::Column& column) {
    json.beginObject();
    if (column.entity) {
      text(json, "entity", *column.entity);
    }
    if (column.descriptor != 0) {
      number(json, "descriptor", column.descriptor);
    }
    json.endObject();
  }
};

/// What was decoded before the file cannot be read any further is printed.
QmbinCounts readFile(QmbinReader& reader, const std::string& file, FaultPrinter& printer) {
  FileSource source(file);
  try {
    const QmbinCounts counts = reader.read(source);
    printer.endFile();
    return counts;
  } catch (const ReadError&) {
    printer.endFile();
    throw;
  }
}

/// Tells what lacks when a file of a series was read without the one before it.
void hintAtSeries(const std::vector<std::string>& files, std::size_t index) {
  const std::optional<SeriesPlace> place = placeInSeries(files[index]);
  const auto end = files.begin() + static_cast<std::ptrdiff_t>(index);
  if (place && std::find(files.begin(), end, place->fileBefore) == end) {
    printNote(
        fmt::format("{}: seems to be one of a series, whose names stand in the file of their "
                    "first use; give all files in the order of their numbers, from {} on",
                    files[index], place->firstFile));
  }
}

/// Reads the files as one series; `afterFile` gets each file and what was in it.
template <typename AfterFile>
int readSeries(const std::vector<std::string>& files, FaultPrinter& printer, AfterFile afterFile) {
  QmbinReader reader(printer);
  int status = kDone;
  bool isHintDue = true;
  for (std::size_t i = 0; i < files.size(); ++i) {
    printer.startFile(files[i]);
    const QmbinCounts counts = readFile(reader, files[i], printer);
    status = counts.faults == 0 ? status : kFaulty;
    if (counts.end == 0 && counts.faults == 0) {
      printNote(files[i] + ": warning: the file is empty; no result was written to it");
    }
    if (counts.untold > 0 && std::exchange(isHintDue, false)) {
      hintAtSeries(files, i);
    }
    if (i > 0 && counts.retold > 0 && std::exchange(isHintDue, false)) {
      printNote(files[i] +
                ": seems to belong to another run than the files before it; several .qmbin files "
                "are read as one series");
    }
    afterFile(files[i], counts);
  }
  return status;
}

}  // namespace

int dumpQmbin(const std::vector<std::string>& files, bool asJson) {
  const std::unique_ptr<Dumper> dumper =
      asJson ? std::unique_ptr<Dumper>(std::make_unique<JsonDumper>())
             : std::make_unique<TextDumper>();
  return readSeries(files, *dumper, [](const std::string&, const QmbinCounts&) {});
}

int checkQmbin(const std::vector<std::string>& files) {
  FaultPrinter printer;
  return readSeries(files, printer, [](const std::string& file, const QmbinCounts& counts) {
    printResult(fmt::format(
        "{}: {} texts, {} system records, {} descriptors, {} metrics, {} samples, {} faults\n",
        file, counts.texts, counts.systems, counts.descriptors, counts.metrics, counts.samples,
        counts.faults));
  });
}

}  // namespace qumetra::cli
