// One collection of this machine: from the first reading to the summary tables.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/configuration.h"
#include "qumetra/collect/stop_signal.h"

namespace qumetra {

class MessageSink;
class Model;

/// Something that keeps a collection from starting, or that ends it without a result: an unknown
/// source, a source asked for by name that is missing, a recording that cannot be written. `what()`
/// is one line for the user.
class CollectionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The command cannot be run. Nothing was collected, delivered or written.
class CommandError : public CollectionError {
 public:
  /// As shells tell it: the command is not there, or it is there and cannot be run.
  static constexpr int kNotFound = 127;
  static constexpr int kCannotRun = 126;

  CommandError(const std::string& text, int status) : CollectionError(text), m_status(status) {}
  int status() const { return m_status; }

 private:
  int m_status;
};

/// How far a collection is.
struct CollectionProgress {
  std::chrono::nanoseconds elapsed{0};
  /// Messages with samples that were delivered so far.
  std::uint64_t samples = 0;
};

/// What to collect, for how long, and where to.
struct CollectionOptions {
  /// The time after which measuring ends. Without it a collection lasts until its command ends or a
  /// stop is requested. With a command it is an upper limit of the measuring only: the command goes
  /// on, see `Collection::waitForCommand`.
  std::optional<std::chrono::nanoseconds> duration;
  /// The time between samples. Shorter costs more of the measured machine's time. REQUIRES: above
  /// 0.
  std::chrono::nanoseconds interval = std::chrono::milliseconds(100);
  /// The program, searched in PATH, and its arguments. Empty for none.
  std::vector<std::string> command;
  /// Variables that the command gets other than this process has them; those without a value are
  /// left out.
  std::map<std::string, std::optional<std::string>> commandEnvironment;
  /// The limit of open files that the command gets; 0 for that of this process.
  std::uint64_t commandOpenFiles = 0;
  /// The file that the collection is recorded to. Without `live` in `Collection::run` it must not
  /// be empty.
  std::string recordPath;
  /// In a live collection, the time between two flushes; 0 for flushes on request only.
  std::chrono::nanoseconds flushPeriod{0};
  /// Names of collectors, in any order; empty for every one that this machine can serve. A missing
  /// source is an error only when its collector is named here.
  std::vector<std::string> sources;
  /// The order of features and metrics in reports. Without one: as the collectors stand.
  std::optional<pwr::MetricOrder> metricOrder;
  std::string procfs = "/proc";
  std::string sysfs = "/sys";
  /// The command line that the results name: program and arguments.
  std::vector<std::string> commandLine;
  /// Called with one line, without a line end, for each source that is missing and for whatever
  /// makes the numbers doubtful; the lines stand in the results too. May be empty.
  std::function<void(const std::string& line)> notice;
  /// The same for what only those who ask want to know: a command that simply was short.
  std::function<void(const std::string& line)> remark;
  /// Called after each sample. May be empty.
  std::function<void(const CollectionProgress& progress)> progress;
};

/// What came of a collection.
struct CollectionResult {
  CollectionProgress progress;
  /// The collection ended because of a stop request.
  bool stopped = false;
  /// The command's exit status, or 128 and the number of the signal that killed it. Empty without a
  /// command, and while it is still running.
  std::optional<int> commandStatus;
};

/// A source of data as users name it.
struct SourceInfo {
  std::string name;
  std::string description;
  /// The files that it reads, below the roots of procfs and sysfs.
  std::string reads;
};

/// Measures this machine once. Ticks are nanoseconds of CLOCK_MONOTONIC, 1000 per microsecond.
///
/// A collection is recorded while it measures, so that writers do not disturb it; the caller
/// replays the recording afterwards. Its system record carries the true stop time and duration. A
/// killed collection leaves a recording that can be replayed as far as it came. A live collection
/// delivers to a sink instead, or as well.
///
///     Model model;
///     Collection collection(options, model, stop);
///     collection.open();
///     CollectionResult result = collection.run();          // recorded to options.recordPath
///     ...replay the recording into the writers, with a model of its own...
///     int status = collection.waitForCommand();
///
/// Model and stop signal are borrowed: the model until `run` has returned, the signal as long as
/// the collection. One thread.
class Collection {
 public:
  Collection(CollectionOptions options, Model& model, StopSignal& stop);
  Collection(const Collection&) = delete;
  Collection& operator=(const Collection&) = delete;
  /// Leaves a command that is still running alone.
  ~Collection();

  /// Every collector there is, in the order of their results.
  static std::vector<SourceInfo> allSources();

  /// Finds what the machine has. Throws `CollectionError` for an unknown source, one asked for by
  /// name that is missing, or when there is nothing at all to collect. Writes nothing.
  void open();

  /// Starts the command, measures, delivers summary tables and texts, and closes the recording.
  /// `live` gets every message as it comes, and the flushes; null for a recording only.
  ///
  /// Throws `CommandError` before anything is made when the command cannot be run, and
  /// `CollectionError` when the recording cannot be written; what `live` got by then stays. A
  /// failed recording does not end the command. REQUIRES: `open` has returned; not called before.
  CollectionResult run(MessageSink* live = nullptr);

  /// Whether there is a command and it still runs.
  bool commandRuns();

  /// Waits for a command that outlives the measuring and returns its status as `CollectionResult`
  /// tells it; 0 without a command. After a stop request a command that does not end by itself
  /// within a second is sent SIGTERM.
  int waitForCommand();

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace qumetra
