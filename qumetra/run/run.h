// One run: the chosen writers of a plug-in library, driven from `init` to `fini`.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "qumetra/model/message_sink.h"
#include "qumetra/run/output_check.h"
#include "qumetra/run/run_error.h"

namespace qumetra {

class CallLog;
class WriterLibrary;

/// What a run is made from.
struct RunOptions {
  /// Option names; "all" stands for every writer.
  std::vector<std::string> writers;
  /// The output base name.
  std::string base;
  /// Passes true to `init` and makes flushes count.
  bool continuous = false;
};

/// Gives every message to every chosen writer, in the order in which the library lists them. A
/// writer whose `init` failed gets no messages, but its `fini`. Whatever a writer throws is caught
/// and counts as status 1. What `writeMessage` and `flushContinuousResults` return does not alter
/// the run.
///
/// A collection begins with the first system message: just before it, each writer is reset for a
/// new collection with its metadata, the first timestamp being the value.
///
///     WriterLibrary library(WriterLibrary::defaultPath());
///     Run run(library, {.writers = {"sum"}, .base = "result"});
///     run.start();
///     run.sample(metric);
///     int status = run.finish();
class Run : public MessageSink {
 public:
  /// Chooses the writers; throws `RunError` for an unknown name and lists the known ones. `library`
  /// and `callLog` are borrowed and must outlive the run; `callLog` may be null.
  Run(WriterLibrary& library, RunOptions options, CallLog* callLog = nullptr);
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;
  /// Finishes a run that was started and not finished.
  ~Run() override;

  /// Calls `init` of every writer. Returns 0, or 1 when one of them failed. Calling it twice is
  /// harmless. The first message starts the run when this has not.
  int start();
  void system(const pwr::SystemMessage& message) override;
  void text(const pwr::TextMessage& message) override;
  void id(const pwr::IdMessage& message) override;
  void sample(const pwr::Metric& metric) override;
  void table(const pwr::TableMessage& table) override;
  void container(const pwr::MetricContainerInfoMessage& message) override;
  /// Skipped unless the run is continuous.
  void flush(const pwr::SystemMetadata& metadata) override;
  /// A collector saw that a telemetry device was reset at `ticks`; the writers are told at once.
  void telemetryDeviceReset(std::uint32_t device, std::uint64_t ticks,
                            const pwr::SystemMetadata& metadata);
  /// Calls `fini` of every writer of a run that was started. Returns 0, or 1 when an `init` or
  /// `fini` failed. Calling it twice is harmless.
  int finish();

  /// The writers of the run by option name, in their order.
  std::vector<std::string> writerNames() const;
  /// The files that these writers are known to make.
  std::vector<OutputFile> resultFiles() const;
  std::uint64_t samplesDelivered() const;
  /// What went wrong so far, one line each, without a line end: every failed `init` and `fini`, a
  /// refused reset, and the first thing that each writer threw.
  const std::vector<std::string>& problems() const;

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace qumetra
