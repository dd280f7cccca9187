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

/// Who gets what is logged.
struct Audience {
  Environment::Listener all;
  Environment::Listener errors;
  bool errorsAreHidden = false;

  /// Whether what has no level, or this one, stays between the sink and the error listener.
  bool hides(LogEvent::Sink sink, std::optional<int> level) const {
    return errorsAreHidden && sink == LogEvent::Sink::Error &&
           level.value_or(LogSink::kError) == LogSink::kError;
  }

  void give(const LogEvent& event) const {
    if (errors && event.sink == LogEvent::Sink::Error) {
      errors(event);
    }
    if (all && !hides(event.sink, event.level)) {
      all(event);
    }
  }
};

/// What takes the text that is inserted into one sink: shows it as it comes, and gives the audience
/// its lines.
class LineBuffer : public std::streambuf {
 public:
  /// `audience` is borrowed.
  LineBuffer(LogEvent::Sink sink, const Audience& audience) : m_sink(sink), m_audience(audience) {}

  /// Gives the audience what has no line end yet.
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
    if (m_sink != LogEvent::Sink::Quiet && !m_audience.hides(m_sink, std::nullopt)) {
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

  void giveLine() { m_audience.give({m_sink, std::nullopt, std::exchange(m_line, {})}); }

  LogEvent::Sink m_sink;
  const Audience& m_audience;
  std::string m_line;
};

/// A sink that shows each text and gives it to the audience whole.
class ListenedSink : public LogSink {
 public:
  ListenedSink(LogEvent::Sink sink, std::streambuf& inserted, const Audience& audience)
      : LogSink(&inserted), m_sink(sink), m_audience(audience) {}

  void log(int level, const char* text) override {
    if (!m_audience.hides(m_sink, level)) {
      writeToStandardError(text);
    }
    m_audience.give({m_sink, level, text});
  }

 private:
  LogEvent::Sink m_sink;
  const Audience& m_audience;
};

}  // namespace

struct Environment::Sinks {
  Audience audience;
  LineBuffer errorLines{LogEvent::Sink::Error, audience};
  LineBuffer warningLines{LogEvent::Sink::Warning, audience};
  LineBuffer quietLines{LogEvent::Sink::Quiet, audience};
  ListenedSink error{LogEvent::Sink::Error, errorLines, audience};
  ListenedSink warning{LogEvent::Sink::Warning, warningLines, audience};
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
  m_sinks->audience.all = std::move(listener);
}

void Environment::setErrorListener(Listener listener) {
  finishLines();
  m_sinks->audience.errors = std::move(listener);
}

void Environment::hideErrors() { m_sinks->audience.errorsAreHidden = true; }

void Environment::finishLines() {
  m_sinks->errorLines.finishLine();
  m_sinks->warningLines.finishLine();
  m_sinks->quietLines.finishLine();
}

}  // namespace qumetra
