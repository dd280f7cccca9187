// What surrounds a run of writers in the tool: log, temporary area, writers, signals.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "qumetra/collect/signals.h"
#include "qumetra/collect/stop_signal.h"
#include "qumetra/model/environment.h"
#include "qumetra/model/model.h"
#include "qumetra/run/temp_area.h"
#include "qumetra/run/writer_library.h"

namespace qumetra::cli {

struct CommonOptions;

/// Makes an environment for the writers and sets it up as the user wants it.
std::unique_ptr<Environment> makeEnvironment(const CommonOptions& common);

/// Loads the writers from their usual place and tells them the options that concern all of them.
std::unique_ptr<WriterLibrary> loadWriters(const CommonOptions& common);

/// Everything that a run needs, made in the order in which it is needed and taken down in reverse.
/// One lives at a time. Its constructor throws `RunError`.
class Session {
 public:
  explicit Session(const CommonOptions& common);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  Environment& environment() { return *m_environment; }
  TempArea& tempArea() { return m_tempArea; }
  const TempArea& tempArea() const { return m_tempArea; }
  WriterLibrary& library() { return *m_library; }
  StopSignal& stop() { return m_stop; }
  SignalWatch& signals() { return m_signals; }
  /// The limit of open files before it was raised, for programs that are started; 0 for unknown.
  std::uint64_t formerOpenFileLimit() const { return m_formerOpenFileLimit; }

  /// A new model in place of the last one. What writers got from the last one must not be used any
  /// more. The last model of a session outlives its writers.
  Model& freshModel();

 private:
  std::unique_ptr<Environment> m_environment;
  TempArea m_tempArea;
  std::unique_ptr<Model> m_model;
  std::unique_ptr<WriterLibrary> m_library;
  StopSignal m_stop;
  SignalWatch m_signals;
  std::uint64_t m_formerOpenFileLimit;
};

}  // namespace qumetra::cli
