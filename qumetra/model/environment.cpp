#include "qumetra/model/environment.h"

#include <cstdio>
#include <ostream>
#include <streambuf>
#include <string_view>
#include <utility>

namespace qumetra {
namespace {

void writeToStandardError(std::string_view text) {
  // There is nowhere to tell that the log itself cannot be written.
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
  static_cast<void>(std::fflush(stderr));
}

/// What takes the text that is inserted into one sink: shows it as it comes, and gives the listener
/// its lines.
class LineBuffer : public std::streambuf {
 public:
  /// `listener` is borrowed and may be empty.
  LineBuffer(LogEvent::Sink sink, bool shown, const Environment::Listener& listener)
      : m_sink(sink), m_shown(shown), m_listener(listener) {}

  /// Gives the listener what has no line end yet.
  void finishLine() {
    if (!m_line.empty()) {
      giveLine();
    }
  }

 protected:
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    take({text, static_cast<std::size_t>(count)});
    return count;
  }

  int_type overflow(int_type character) override {
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
      const char byte = traits_type::to_char_type(character);
      take({&byte, 1});
    }
    return traits_type::not_eof(character);
  }

 private:
  void take(std::string_view text) {
    if (m_shown) {
      writeToStandardError(text);
    }
    std::size_t end = text.find('\n');
    while (end != std::string_view::npos) {
      m_line += text.substr(0, end);
      giveLine();
      text.remove_prefix(end + 1);
      end = text.find('\n');
    }
    m_line += text;
  }

  void giveLine() {
    const std::string line = std::exchange(m_line, {});
    if (m_listener) {
      m_listener({m_sink, std::nullopt, line});
    }
  }

  LogEvent::Sink m_sink;
  bool m_shown;
  const Environment::Listener& m_listener;
  std::string m_line;
};

/// A sink that shows each text and gives it to the listener whole.
class ListenedSink : public LogSink {
 public:
  ListenedSink(LogEvent::Sink sink, std::streambuf& inserted, const Environment::Listener& listener)
      : LogSink(&inserted), m_sink(sink), m_listener(listener) {}

  void log(int level, const char* text) override {
    writeToStandardError(text);
    if (m_listener) {
      m_listener({m_sink, level, text});
    }
  }

 private:
  LogEvent::Sink m_sink;
  const Environment::Listener& m_listener;
};

}  // namespace

struct Environment::Sinks {
  Listener listener;
  LineBuffer errorLines{LogEvent::Sink::Error, true, listener};
  LineBuffer warningLines{LogEvent::Sink::Warning, true, listener};
  LineBuffer quietLines{LogEvent::Sink::Quiet, false, listener};
  ListenedSink error{LogEvent::Sink::Error, errorLines, listener};
  ListenedSink warning{LogEvent::Sink::Warning, warningLines, listener};
  std::ostream quiet{&quietLines};
  PluginEnvironment plugin{error, warning, quiet};
  PluginEnvironment* former = nullptr;
};

Environment::Environment() : m_sinks(std::make_unique<Sinks>()) {
  m_sinks->former = std::exchange(g_pluginEnvironment, &m_sinks->plugin);
}

Environment::~Environment() {
  finishLines();
  g_pluginEnvironment = m_sinks->former;
}

PluginEnvironment& Environment::plugin() { return m_sinks->plugin; }

void Environment::setListener(Listener listener) {
  // Text from before belongs to the former listener.
  finishLines();
  m_sinks->listener = std::move(listener);
}

void Environment::finishLines() {
  m_sinks->errorLines.finishLine();
  m_sinks->warningLines.finishLine();
  m_sinks->quietLines.finishLine();
}

}  // namespace qumetra
