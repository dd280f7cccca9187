#include "qumetra/recording/recording_reader.h"

#include <utility>

#include "host/configuration.h"
#include "qumetra/model/message_sink.h"
#include "qumetra/model/model.h"
#include "qumetra/recording/config_record.h"
#include "qumetra/recording/definition_records.h"
#include "qumetra/recording/definitions.h"
#include "qumetra/recording/json_line.h"
#include "qumetra/recording/line_reader.h"
#include "qumetra/recording/message_records.h"
#include "qumetra/recording/record_object.h"

namespace qumetra {
namespace {

constexpr std::uint32_t kVersion = 1;
constexpr const char* kFirstRecord = "{\"recording\":{\"version\":1}} as the first record";

/// Faults quote names and texts of the recording, which may hold anything; a fault is one line.
std::string inOneLine(const std::string& text) {
  std::string line;
  for (const char c : text) {
    line += c >= 0 && c < ' ' ? '?' : c;
  }
  return line;
}

}  // namespace

struct RecordingReader::State {
  State(const std::string& path, Model& model, MessageSink& sink)
      : lines(path),
        definitionRecords(model, definitions, sink),
        messageRecords(model, definitions, sink) {}

  /// Reads one line. Faults of its content are `RecordFault`.
  void readLine(const TextLine& line);
  void readRecord();
  void readKind(std::string_view kind, RecordObject& record);
  void checkFirst(const RecordValue& value, std::string_view kind);
  void checkEnd();
  void version(RecordObject& record);
  void config(RecordObject& record);

  [[noreturn]] void fail(std::uint64_t lineNumber, const std::string& text) {
    throw RecordingError(located(lineNumber, text));
  }
  std::string located(std::uint64_t lineNumber, const std::string& text) const {
    return lines.path() + ':' + std::to_string(lineNumber) + ": " + inOneLine(text);
  }

  LineReader lines;
  JsonLine json;
  Definitions definitions;
  DefinitionRecords definitionRecords;
  MessageRecords messageRecords;
  WarningHandler warn = [](const std::string&) {};
  NoteHandler note = [](std::string_view) {};
  bool hasVersion = false;
  bool hasConfig = false;
  bool keepsOrder = false;
  bool wasInterrupted = false;
  bool hasEnded = false;
};

RecordingReader::RecordingReader(const std::string& path, Model& model, MessageSink& sink)
    : m_state(std::make_unique<State>(path, model, sink)) {}

RecordingReader::~RecordingReader() = default;

void RecordingReader::setWarningHandler(WarningHandler handler) {
  m_state->warn = std::move(handler);
}

void RecordingReader::setNoteHandler(NoteHandler handler) { m_state->note = std::move(handler); }

void RecordingReader::keepMetricOrder() { m_state->keepsOrder = true; }

bool RecordingReader::readLine() {
  if (m_state->hasEnded) {
    return false;
  }
  // Stays set when a fault leaves this function: reading cannot go on then.
  m_state->hasEnded = true;
  TextLine line;
  if (!m_state->lines.next(line)) {
    m_state->checkEnd();
    return false;
  }
  try {
    m_state->readLine(line);
  } catch (const RecordFault& fault) {
    m_state->fail(line.number, fault.what());
  }
  m_state->hasEnded = false;
  return true;
}

void RecordingReader::readFirst() {
  while (!m_state->hasVersion && readLine()) {
  }
}

void RecordingReader::readAll() {
  while (readLine()) {
  }
}

std::uint64_t RecordingReader::bytesRead() const { return m_state->lines.bytesRead(); }
std::uint64_t RecordingReader::sizeBytes() const { return m_state->lines.sizeBytes(); }
std::uint64_t RecordingReader::samplesRead() const { return m_state->messageRecords.samplesRead(); }

void RecordingReader::State::readLine(const TextLine& line) {
  if (line.size == 0) {
    return;
  }
  const JsonFaults faults = json.parse(line.text, line.size);
  if (!line.hasLineEnd && !faults.syntax.empty()) {
    wasInterrupted = true;
    warn(located(line.number, "the recording was interrupted here; all before it counts"));
    return;
  }
  if (!faults.encoding.empty()) {
    throw RecordFault(faults.encoding);
  }
  if (!faults.syntax.empty()) {
    throw RecordFault(faults.syntax);
  }
  readRecord();
}

void RecordingReader::State::readRecord() {
  const RecordObject whole(RecordValue(json, 0));
  if (whole.size() != 1) {
    throw RecordFault("an object of " + std::to_string(whole.size()) +
                      " members; expected exactly one, the record's kind");
  }
  const RecordValue value = whole.first();
  const std::string_view kind = json.node(value.index()).name;
  checkFirst(value, kind);
  RecordObject record(value);
  readKind(kind, record);
}

void RecordingReader::State::readKind(std::string_view kind, RecordObject& record) {
  if (messageRecords.read(kind, record) || definitionRecords.read(kind, record)) {
    return;
  }
  if (kind == "note") {
    const std::string text = record.string("text");
    record.finish();
    note(text);
  } else if (kind == "recording") {
    version(record);
  } else if (kind == "config") {
    config(record);
  } else {
    record.value().fail("an unknown kind of record", "a kind that this format has");
  }
}

/// Notes are skipped wherever they stand, so they do not count as the first record.
void RecordingReader::State::checkFirst(const RecordValue& value, std::string_view kind) {
  if (!hasVersion && kind != "recording" && kind != "note") {
    value.fail("a record before the first", kFirstRecord);
  }
}

void RecordingReader::State::checkEnd() {
  if (!hasVersion && !wasInterrupted) {
    fail(lines.lineCount() + 1, std::string("the end of the file; expected ") + kFirstRecord);
  }
}

void RecordingReader::State::version(RecordObject& record) {
  if (hasVersion) {
    record.value().fail("a record given twice", "it once, as the first");
  }
  const RecordValue member = record.require("version");
  const auto given = member.integer<std::uint32_t>();
  if (given != kVersion) {
    member.fail("unknown version " + std::to_string(given), std::to_string(kVersion));
  }
  record.finish();
  hasVersion = true;
}

void RecordingReader::State::config(RecordObject& record) {
  if (hasConfig) {
    record.value().fail("a record given twice", "it at most once");
  }
  if (messageRecords.hasDelivered()) {
    record.value().fail("a record behind the first message", "it before");
  }
  pwr::MetricOrder order = readConfig(record);
  if (!keepsOrder) {
    pwr::WriterInterfaceConfigFileParser::instance()->setOrder(std::move(order));
  }
  hasConfig = true;
}

}  // namespace qumetra
