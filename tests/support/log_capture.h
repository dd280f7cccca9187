// An environment for tests whose log can be looked at.
#pragma once

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "host/environment.h"

namespace qumetra::test {

/// A sink that keeps what it gets: whole texts with their levels, streamed text as one string.
class RecordingSink : public LogSink {
 public:
  RecordingSink() : LogSink(nullptr) { rdbuf(&m_streamed); }
  void log(int level, const char* text) override { m_texts.emplace_back(level, text); }

  using Texts = std::vector<std::pair<int, std::string>>;
  const Texts& texts() const { return m_texts; }
  std::string streamed() const { return m_streamed.str(); }

 private:
  Texts m_texts;
  std::stringbuf m_streamed;
};

/// Sets `g_pluginEnvironment` to one whose sinks keep what they get, as long as it lives.
class LogCapture {
 public:
  explicit LogCapture(std::uint32_t verbosity = PluginEnvironment::kWarnings);
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  ~LogCapture();

  /// What the sinks got, by `log`.
  const RecordingSink::Texts& errors() const { return m_error.texts(); }
  const RecordingSink::Texts& warnings() const { return m_warning.texts(); }
  /// What was inserted into them.
  std::string streamedErrors() const { return m_error.streamed(); }
  std::string streamedWarnings() const { return m_warning.streamed(); }
  std::string quiet() const { return m_quiet.str(); }

  PluginEnvironment& environment() { return m_environment; }

 private:
  RecordingSink m_error;
  RecordingSink m_warning;
  std::ostringstream m_quiet;
  PluginEnvironment m_environment;
  PluginEnvironment* m_former;
};

}  // namespace qumetra::test
