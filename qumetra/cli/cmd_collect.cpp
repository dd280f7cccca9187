// qumetra collect: measures this machine and delivers to writers.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/environment.h"
#include "qumetra/cli/argument_checks.h"
#include "qumetra/cli/command.h"
#include "qumetra/cli/console.h"
#include "qumetra/cli/delivery.h"
#include "qumetra/cli/error_watch.h"
#include "qumetra/cli/progress.h"
#include "qumetra/cli/session.h"
#include "qumetra/collect/collection.h"
#include "qumetra/collect/summary_from_samples.h"
#include "qumetra/recording/recording_reader.h"
#include "qumetra/run/order_file.h"
#include "qumetra/run/output_check.h"
#include "qumetra/run/run.h"

namespace qumetra::cli {
namespace {

struct CollectOptions {
  DeliveryOptions delivery;
  std::optional<double> seconds;
  double intervalMilliseconds = 100;
  /// Empty for a private one.
  std::string record;
  /// The seconds between two flushes of a continuous run; empty for a run that is none.
  std::optional<double> continuousSeconds;
  std::vector<std::string> sources;
  std::string procfs = "/proc";
  std::string sysfs = "/sys";
  std::vector<std::string> command;

  bool isLive() const { return continuousSeconds.has_value(); }
};

/// The longest time that is taken: 100 years, well within 64 bits of nanoseconds.
constexpr double kLongestSeconds = 100.0 * 366 * 86400;

std::chrono::nanoseconds fromSeconds(double seconds) {
  return std::chrono::nanoseconds(std::llround(seconds * 1e9));
}

/// Sees how far a collection is.
struct Watcher {
  Progress progress;
  bool hasSamples = false;

  void see(const CollectionProgress& state) {
    hasSamples = state.samples > 0;
    if (progress.due()) {
      progress.show(fmt::format("collecting: {:.1f} s, {} samples",
                                std::chrono::duration<double>(state.elapsed).count(),
                                state.samples));
    }
  }
};

/// The order that the user gave, else the one that is installed with the tool, if it is.
std::optional<pwr::MetricOrder> chosenOrder(const DeliveryOptions& options) {
  const std::string file = options.orderFile.empty() ? defaultOrderFile() : options.orderFile;
  if (file.empty()) {
    return std::nullopt;
  }
  return readOrderFile(file);
}

CollectionOptions collectionOptions(const CollectOptions& options, const CommonOptions& common,
                                    Session& session, Watcher& watcher) {
  CollectionOptions result;
  if (options.seconds) {
    result.duration = fromSeconds(*options.seconds);
  }
  result.interval = fromSeconds(options.intervalMilliseconds / 1e3);
  result.command = options.command;
  result.commandEnvironment = {{"TMPDIR", session.tempArea().formerTmpdir()}};
  result.commandOpenFiles = session.formerOpenFileLimit();
  result.recordPath = options.record;
  if (result.recordPath.empty() && !options.isLive()) {
    result.recordPath = (session.tempArea().path() / "recording.qmrec").string();
  }
  result.flushPeriod = fromSeconds(options.continuousSeconds.value_or(0));
  result.sources = splitNames(options.sources, "--source");
  result.metricOrder = chosenOrder(options.delivery);
  result.procfs = options.procfs;
  result.sysfs = options.sysfs;
  result.commandLine = common.commandLine;
  const auto tellFrom = [&](std::uint32_t verbosity) {
    return [&watcher, isTold = common.verbosity >= verbosity](const std::string& line) {
      if (isTold) {
        watcher.progress.clear();
        printError(line);
      }
    };
  };
  result.notice = tellFrom(PluginEnvironment::kErrors);
  result.remark = tellFrom(PluginEnvironment::kWarnings);
  result.progress = [&watcher](const CollectionProgress& state) { watcher.see(state); };
  return result;
}

/// What a process that leaves early tells. A recording can still be made into results.
std::string lastWords(const std::string& recordPath, const Session& session) {
  if (recordPath.empty()) {
    return "qumetra: left early; what was received so far is kept in " +
           session.tempArea().path().string();
  }
  return fmt::format("qumetra: left early; make results with: qumetra replay {}", recordPath);
}

/// Delivers live. The first message starts the writers, so that a command that cannot be run leaves
/// no trace.
int collectLive(Collection& collection, Run& run, Session& session, Watcher& watcher) {
  const ErrorWatch errors(session.environment());
  collection.run(&run);
  watcher.progress.clear();
  run.start();
  const int status = run.finish();
  return std::max(status, errors.status());
}

/// What was measured cannot be had again, but its results can be made again.
void keepRecording(const std::string& path, Session& session, const CommonOptions& common) {
  const bool isPrivate = path.starts_with(session.tempArea().path().string());
  if (isPrivate) {
    session.tempArea().keep();
  }
  if (isPrivate || common.verbosity > 0) {
    printError(fmt::format("what was measured is kept: qumetra replay {}", path));
  }
}

/// Whether the recording holds anything. One that broke off early may hold nothing.
bool isEmptyFile(const std::string& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  return error || size == 0;
}

/// Runs the collection and returns the exit status. A recording that broke off, say for want of
/// room, counts as far as it came; one that holds nothing is an error that is thrown.
int record(Collection& collection, const std::string& recordPath, Watcher& watcher) {
  int status = kDone;
  try {
    collection.run();
  } catch (const CommandError&) {
    throw;
  } catch (const CollectionError& error) {
    if (!watcher.hasSamples || isEmptyFile(recordPath)) {
      throw;
    }
    watcher.progress.clear();
    printError(error.what());
    status = kWrongInput;
  }
  watcher.progress.clear();
  return status;
}

/// Records first and delivers then.
int collectAndReplay(Collection& collection, const std::string& recordPath, Run& run,
                     Session& session, Watcher& watcher, const CommonOptions& common) {
  int status = record(collection, recordPath, watcher);
  const ErrorWatch errors(session.environment());
  Model& model = session.freshModel();
  SummaryFromSamples summary(model, run);
  RecordingReader reader(recordPath, model, summary);
  status = std::max(status, deliverRecording(reader, summary, run, session.stop(),
                                             {.showsProgress = !collection.commandRuns()}, common));
  status = std::max(status, errors.status());
  if (status != kDone) {
    keepRecording(recordPath, session, common);
  }
  return status;
}

int collect(const CollectOptions& options, const CommonOptions& common) {
  requireBaseName(options.delivery);
  Session session(common);
  Run run(session.library(), {.writers = chosenWriters(options.delivery, session.library()),
                              .base = options.delivery.base,
                              .continuous = options.isLive()});
  std::vector<OutputFile> outputs = run.resultFiles();
  if (!options.record.empty()) {
    outputs.push_back({.path = options.record, .mayBeLink = true, .mustBeRegular = true});
  }
  requireWritable(outputs, "");
  if (options.isLive()) {
    noteLackOfContinuous(run.writerNames(), session.library(), common);
  }
  // What a command prints has the terminal for itself.
  const bool showsProgress = common.verbosity > 0 && options.command.empty();
  Watcher watcher{.progress{showsProgress, std::chrono::milliseconds(0)}};
  CollectionOptions settings = collectionOptions(options, common, session, watcher);
  const std::string recordPath = settings.recordPath;
  session.signals().setLastWords(lastWords(recordPath, session));
  Collection collection(std::move(settings), session.freshModel(), session.stop());
  collection.open();
  const int status = options.isLive()
                         ? collectLive(collection, run, session, watcher)
                         : collectAndReplay(collection, recordPath, run, session, watcher, common);
  printSummary(run, session.environment(), common);
  const int commandStatus = collection.waitForCommand();
  return commandStatus != 0 ? commandStatus : status;
}

/// The command stands behind "--" only: a misspelt word would otherwise be taken for a program. And
/// behind "--" stands a command: an empty variable in a script would otherwise measure until
/// Ctrl-C.
void requireSeparator(const CollectOptions& options, const CommonOptions& common) {
  const auto& words = common.commandLine;
  const bool hasSeparator = std::find(words.begin(), words.end(), "--") != words.end();
  const bool hasWords = !options.command.empty();
  if (hasWords && !hasSeparator) {
    throw UsageError(fmt::format("unexpected argument \"{}\"; a command stands behind --",
                                 options.command.front()));
  }
  if (hasSeparator && (!hasWords || options.command.front().empty())) {
    throw UsageError("no command stands behind --; leave it out to measure without one");
  }
}

int runCollect(const CollectOptions& options, const CommonOptions& common) {
  requireSeparator(options, common);
  try {
    return collect(options, common);
  } catch (const CommandError& error) {
    printError(error.what());
    return error.status();
  } catch (const CollectionError& error) {
    printError(error.what());
    return kWrongInput;
  }
}

void addTimes(CLI::App& command, CollectOptions& options) {
  command
      .add_option("-t,--time", options.seconds,
                  "End measuring after this time [default: when the command ends, without one at "
                  "Ctrl-C]")
      ->type_name("SECONDS")
      ->check(numberBetween(1e-3, kLongestSeconds));
  command.add_option("-i,--interval", options.intervalMilliseconds, "Time between two samples")
      ->type_name("MILLISECONDS")
      ->check(numberBetween(1e-1, kLongestSeconds))
      ->capture_default_str();
  command
      .add_option("--continuous", options.continuousSeconds,
                  "Deliver while measuring and ask the writers for fresh files this often; 0 for "
                  "on SIGUSR1 only")
      ->type_name("SECONDS")
      ->check(numberBetween(0.0, kLongestSeconds));
}

void addPlaces(CLI::App& command, CollectOptions& options) {
  command.add_option("--record", options.record, "Keep the recording in FILE, for replay")
      ->type_name("FILE")
      ->check(nonEmpty());
  command
      .add_option("--source", options.sources,
                  "Collect from these sources only; each must be there [default: all there are]")
      ->type_name("NAME[,NAME]")
      ->allow_extra_args(false);
  command.add_option("--procfs", options.procfs, "Where the machine's /proc is mounted")
      ->type_name("DIR")
      ->check(nonEmpty())
      ->capture_default_str();
  command.add_option("--sysfs", options.sysfs, "Where the machine's /sys is mounted")
      ->type_name("DIR")
      ->check(nonEmpty())
      ->capture_default_str();
}

}  // namespace

void addCollectCommand(CLI::App& app, Action& action) {
  CLI::App* command = app.add_subcommand("collect", "Measure this machine");
  auto options = std::make_shared<CollectOptions>();
  addDeliveryOptions(*command, options->delivery);
  addTimes(*command, *options);
  addPlaces(*command, *options);
  command
      ->add_option("COMMAND", options->command, "A command to measure and its arguments, behind --")
      ->type_name("");
  command->callback([&action, options] {
    action = [options](const CommonOptions& common) { return runCollect(*options, common); };
  });
  command->footer(
      "Examples:\n"
      "  qumetra collect -t 10\n"
      "  qumetra collect -r sum,qmjson -o results/build -- make -j8\n"
      "  qumetra collect -r json,bin --continuous 60\n"
      "  qumetra collect -t 60 --record idle.qmrec\n"
      "\n"
      "With a command, the collection lasts as long as it runs and ends with its status (127 when\n"
      "it is not found, 126 when it cannot be run). With -t as well, measuring ends after that\n"
      "time and the results are written; the command goes on to its end, and its status counts.\n"
      "Without a command and without -t, measuring goes on until Ctrl-C.\n"
      "Process CPU Time is that of the command alone, without the processes that it starts.\n"
      "\n"
      "The first Ctrl-C, SIGTERM or SIGHUP ends a collection early and the results are still\n"
      "written; a command that has not ended a second later gets SIGTERM. The second leaves at\n"
      "once. SIGUSR1 asks for a flush in a continuous run.");
}

}  // namespace qumetra::cli
