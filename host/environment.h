// The process-wide surroundings of the writers: the log, its level, and output handles.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

#include "host/pwset.h"

namespace pwr {
class Logger;
}

/// A log target: an output stream that also takes whole texts with their level. Not synchronised.
class LogSink : public std::ostream {
 public:
  /// The levels that `log` is called with.
  static constexpr int kNote = 0;
  static constexpr int kError = 1;
  static constexpr int kWarning = 2;

  /// Texts that are inserted into the stream go to `target`, which must outlive the sink; it may be
  /// null for a sink that takes nothing.
  explicit LogSink(std::streambuf* target);
  LogSink(const LogSink&) = delete;
  LogSink& operator=(const LogSink&) = delete;
  ~LogSink() override;

  /// Three slots that only the host uses.
  virtual void hostSlot1();
  virtual void hostSlot2();
  virtual void hostSlot3();
  /// Takes one text, which brings its own line end. Here: writes it to the stream, whatever the
  /// level. REQUIRES: `text` is not null.
  virtual void log(int level, const char* text);
};

/// What the host offers to every writer. The host makes one before it loads the writers and keeps
/// it until they are gone. Read-only to writers but for `notes`. Not synchronised.
class PluginEnvironment {
 public:
  static constexpr std::uint32_t kQuiet = 0;
  static constexpr std::uint32_t kErrors = 1;
  static constexpr std::uint32_t kWarnings = 2;

  /// The sinks are borrowed and must outlive this object.
  PluginEnvironment(LogSink& error, LogSink& warning, std::ostream& quiet);
  PluginEnvironment(const PluginEnvironment&) = delete;
  PluginEnvironment& operator=(const PluginEnvironment&) = delete;
  ~PluginEnvironment();

  /// The output handle for a file name, made at its first use. The environment owns it.
  pwr::Logger* getFileOutputHandle(const char* name) const;

  /// 0 quiet, 1 errors, 2 and above warnings.
  std::uint32_t verbosity = kErrors;
  LogSink& errorLog;
  LogSink& warningLog;
  /// Takes what is below the level.
  std::ostream& quietLog;
  /// The kinds of conditional warnings that show although the level is below 2.
  pwr::PWSet<std::string> enabledTags;
  /// Remarks about the platform that the host shows in its summary.
  std::deque<std::string> notes;

 private:
  mutable std::map<std::string, std::unique_ptr<pwr::Logger>> m_outputs;
};

/// Set by the host before any operation of a writer runs.
extern PluginEnvironment* g_pluginEnvironment;
