#include "qumetra/run/call_log.h"

#include <cerrno>
#include <iterator>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "qumetra/model/environment.h"
#include "qumetra/run/json_text.h"

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
  m_file.reset(std::fopen(m_path.c_str(), "we"));
  if (m_file == nullptr) {
    fail();
    return;
  }
  m_environment = &environment;
  environment.setListener([this](const LogEvent& event) { log(event); });
}

void CallLog::call(std::string_view writer, std::string_view call, int status) {
  std::string line = R"({"writer":)";
  appendJsonText(line, writer);
  line += R"(,"call":)";
  appendJsonText(line, call);
  fmt::format_to(std::back_inserter(line), R"(,"status":{}}})", status);
  writeLine(line);
}

void CallLog::log(const LogEvent& event) {
  std::string line = R"({"log":{"sink":)";
  appendJsonText(line, nameOf(event.sink));
  line += R"(,"level":)";
  line += event.level ? fmt::to_string(*event.level) : "null";
  line += R"(,"text":)";
  appendJsonText(line, event.text);
  line += "}}";
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
