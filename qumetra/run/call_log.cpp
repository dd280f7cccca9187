#include "qumetra/run/call_log.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "qumetra/model/environment.h"
#include "qumetra/model/parent_directory.h"
#include "qumetra/recording/json_text.h"

namespace qumetra {
namespace {

const char* nameOf(LogEvent::Sink sink) {
  switch (sink) {
    case LogEvent::Sink::Error:
      return "error";
    case LogEvent::Sink::Warning:
      return "warning";
    case LogEvent::Sink::Quiet:
      break;
  }
  return "quiet";
}

}  // namespace

CallLog::CallLog(std::string path) : m_path(std::move(path)) {}

CallLog::~CallLog() { close(); }

void CallLog::start(Environment& environment) {
  makeParentDirectory(m_path);
  m_file.reset(std::fopen(m_path.c_str(), "we"));
  if (m_file == nullptr) {
    fail();
    return;
  }
  m_environment = &environment;
  environment.setListener([this](const LogEvent& event) { log(event); });
}

void CallLog::call(std::string_view writer, std::string_view call, int status) {
  std::string line;
  JsonText json(line);
  json.beginObject();
  json.name("writer");
  json.text(writer);
  json.name("call");
  json.text(call);
  json.name("status");
  json.integer(status);
  json.endObject();
  writeLine(line);
}

void CallLog::log(const LogEvent& event) {
  std::string line;
  JsonText json(line);
  json.beginObject();
  json.name("log");
  json.beginObject();
  json.name("sink");
  json.text(nameOf(event.sink));
  json.name("level");
  event.level ? json.integer(*event.level) : json.null();
  json.name("text");
  json.text(event.text);
  json.endObject();
  json.endObject();
  writeLine(line);
}

std::string CallLog::close() {
  if (m_environment != nullptr) {
    m_environment->finishLines();
    m_environment->setListener(nullptr);
    m_environment = nullptr;
  }
  if (m_file != nullptr && std::fclose(m_file.release()) != 0) {
    fail();
  }
  return m_error;
}

void CallLog::writeLine(const std::string& line) {
  if (m_file == nullptr) {
    return;
  }
  const bool written = std::fwrite(line.data(), 1, line.size(), m_file.get()) == line.size() &&
                       std::fputc('\n', m_file.get()) != EOF && std::fflush(m_file.get()) == 0;
  if (!written) {
    fail();
    m_file.reset();
  }
}

void CallLog::fail() {
  if (m_error.empty()) {
    m_error = m_path + ": " + std::generic_category().message(errno);
  }
}

}  // namespace qumetra
