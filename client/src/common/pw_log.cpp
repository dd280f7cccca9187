#include "client/src/common/pw_log.h"

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "client/src/common/error_text.h"
#include "client/src/common/number_text.h"

namespace pwr {
namespace {

/// Keeps `errno` over its life: callers tell their cases from it after they have logged.
class ErrnoKeeper {
 public:
  ErrnoKeeper() = default;
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;
  ~ErrnoKeeper() { errno = m_kept; }

 private:
  int m_kept = errno;
};

__attribute__((format(printf, 1, 0))) std::string formatText(const char* format,
                                                             std::va_list arguments) {
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

}  // namespace

void logError(const char* format, ...) {
  if (!shows(PluginEnvironment::kErrors)) {
    return;
  }
  const ErrnoKeeper keeper;
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = formatText(format, arguments);
  va_end(arguments);
  g_pluginEnvironment->errorLog.log(LogSink::kError, text.c_str());
}

void logPlainWarning(const char* format, ...) {
  if (!shows(PluginEnvironment::kWarnings)) {
    return;
  }
  const ErrnoKeeper keeper;
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = formatText(format, arguments);
  va_end(arguments);
  g_pluginEnvironment->warningLog.log(LogSink::kWarning, text.c_str());
}

void logTaggedWarning(const char* tag, const char* format, ...) {
  if (!showsOrTagged(PluginEnvironment::kWarnings, tag)) {
    return;
  }
  const ErrnoKeeper keeper;
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = formatText(format, arguments);
  va_end(arguments);
  g_pluginEnvironment->warningLog.log(LogSink::kWarning, text.c_str());
}

void logTaggedError(const char* tag, const char* format, ...) {
  if (!showsOrTagged(PluginEnvironment::kErrors, tag)) {
    return;
  }
  const ErrnoKeeper keeper;
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = formatText(format, arguments);
  va_end(arguments);
  g_pluginEnvironment->errorLog.log(LogSink::kError, text.c_str());
}

void logNote(const std::string& text) {
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
  const int number = errno;
  const ErrnoKeeper keeper;
  std::string line = label + ": errnum=";
  appendInt(line, number);
  line += ": " + errorText(number) + "\n";
  warningStream() << line;
}

}  // namespace pwr
