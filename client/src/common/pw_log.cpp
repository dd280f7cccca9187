#include "client/src/common/pw_log.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "client/src/common/errno_keeper.h"
#include "client/src/common/error_text.h"
#include "client/src/common/number_text.h"

namespace pwr {
namespace {

bool shows(std::uint32_t level) {
  return g_pluginEnvironment != nullptr && g_pluginEnvironment->verbosity >= level;
}

/// Where text goes that has nowhere to go.
std::ostream& droppingStream() {
  static std::ostream s_stream(nullptr);
  return s_stream;
}

bool showsOrTagged(std::uint32_t level, const char* tag) {
  return shows(level) ||
         (g_pluginEnvironment != nullptr && g_pluginEnvironment->enabledTags.contains(tag));
}

__attribute__((format(printf, 3, 0))) void logTo(LogSink& sink, int level, const char* format,
                                                 std::va_list arguments) {
  const ErrnoKeeper keeper;
  sink.log(level, formatText(format, arguments).c_str());
}

std::string errnoLine(const std::string& label, int number) {
  std::string line = label + ": errnum=";
  appendInt(line, number);
  return line + ": " + errorText(number) + "\n";
}

}  // namespace

std::string formatText(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  std::string text;
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  if (length > 0) {
    // The terminator's place is the string's own.
    text.resize(static_cast<std::size_t>(length));
    std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
  va_end(again);
  return text;
}

bool plainWarningsShow() { return shows(PluginEnvironment::kWarnings); }

void logNote(const char* format, ...) {
  if (!shows(PluginEnvironment::kQuiet)) {
    return;
  }
  std::va_list arguments;
  va_start(arguments, format);
  logTo(g_pluginEnvironment->warningLog, LogSink::kNote, format, arguments);
  va_end(arguments);
}

void logFatal(const char* format, ...) {
  if (!shows(PluginEnvironment::kQuiet)) {
    return;
  }
  std::va_list arguments;
  va_start(arguments, format);
  logTo(g_pluginEnvironment->errorLog, LogSink::kNote, format, arguments);
  va_end(arguments);
}

void logError(const char* format, ...) {
  if (!shows(PluginEnvironment::kErrors)) {
    return;
  }
  std::va_list arguments;
  va_start(arguments, format);
  logTo(g_pluginEnvironment->errorLog, LogSink::kError, format, arguments);
  va_end(arguments);
}

void logPlainWarning(const char* format, ...) {
  if (!shows(PluginEnvironment::kWarnings)) {
    return;
  }
  std::va_list arguments;
  va_start(arguments, format);
  logTo(g_pluginEnvironment->warningLog, LogSink::kWarning, format, arguments);
  va_end(arguments);
}

void logTaggedWarning(const char* tag, const char* format, ...) {
  if (!showsOrTagged(PluginEnvironment::kWarnings, tag)) {
    return;
  }
  std::va_list arguments;
  va_start(arguments, format);
  logTo(g_pluginEnvironment->warningLog, LogSink::kWarning, format, arguments);
  va_end(arguments);
}

void logTaggedError(const char* tag, const char* format, ...) {
  if (!showsOrTagged(PluginEnvironment::kErrors, tag)) {
    return;
  }
  std::va_list arguments;
  va_start(arguments, format);
  logTo(g_pluginEnvironment->errorLog, LogSink::kError, format, arguments);
  va_end(arguments);
}

void logPlatformNote(const std::string& text) {
  if (g_pluginEnvironment == nullptr) {
    return;
  }
  const ErrnoKeeper keeper;
  g_pluginEnvironment->warningLog.log(LogSink::kNote, (text + "\n").c_str());
  g_pluginEnvironment->notes.push_back(text);
}

std::ostream& quietStream() {
  return g_pluginEnvironment != nullptr ? g_pluginEnvironment->quietLog : droppingStream();
}

// The number in front of a streamed line is the level; readers of the log expect it there.
std::ostream& warningStream() {
  if (!shows(PluginEnvironment::kWarnings)) {
    return quietStream();
  }
  return g_pluginEnvironment->warningLog << "2WARNING: ";
}

std::ostream& errorStream() {
  if (!shows(PluginEnvironment::kErrors)) {
    return quietStream();
  }
  return g_pluginEnvironment->errorLog << "1ERROR: ";
}

void streamErrnoWarning(const std::string& label) {
  const ErrnoKeeper keeper;
  const std::string line = errnoLine(label, errno);
  warningStream() << line;
}

void streamErrnoError(const std::string& label) {
  const ErrnoKeeper keeper;
  const std::string line = errnoLine(label, errno);
  errorStream() << line;
}

}  // namespace pwr
