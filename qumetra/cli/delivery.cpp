#include "qumetra/cli/delivery.h"

#include <chrono>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "qumetra/cli/command.h"
#include "qumetra/cli/console.h"
#include "qumetra/cli/progress.h"
#include "qumetra/collect/stop_signal.h"
#include "qumetra/model/environment.h"
#include "qumetra/recording/recording_reader.h"
#include "qumetra/run/output_check.h"
#include "qumetra/run/run.h"
#include "qumetra/run/writer_library.h"

namespace qumetra::cli {
namespace {

constexpr double kBytesPerMiB = 1024.0 * 1024.0;

/// How far the reader is. A pipe has no size to compare with.
std::string describe(const RecordingReader& reader) {
  const auto read = static_cast<double>(reader.bytesRead());
  if (reader.sizeBytes() == 0) {
    return fmt::format("replaying: {:.1f} MiB", read / kBytesPerMiB);
  }
  const auto size = static_cast<double>(reader.sizeBytes());
  return fmt::format("replaying: {:.0f} % of {:.1f} MiB", 100.0 * read / size, size / kBytesPerMiB);
}

/// Reads to the end, or to the first stop request where that ends it. Throws `RecordingError`.
void readRecording(RecordingReader& reader, const StopSignal& stop, OnStop onStop,
                   Progress& progress) {
  while (onStop == OnStop::GoOn || !stop.stopRequested()) {
    if (!reader.readLine()) {
      return;
    }
    if (progress.due()) {
      progress.show(describe(reader));
    }
  }
}

}  // namespace

void addDeliveryOptions(CLI::App& command, DeliveryOptions& options) {
  command
      .add_option("-r,--results", options.writers,
                  "Writers of results, as `qumetra writers` lists them; all for every one "
                  "[default: sum, or auto without it]")
      ->type_name("NAME[,NAME]")
      ->delimiter(',')
      ->allow_extra_args(false);
  command
      .add_option("-o,--output", options.base,
                  "Path and beginning of the names of the result files")
      ->type_name("BASE")
      ->capture_default_str();
  command
      .add_option("--order", options.orderFile,
                  "The order of features and metrics in reports, in place of the usual one")
      ->type_name("FILE");
}

std::vector<std::string> chosenWriters(const DeliveryOptions& options,
                                       const WriterLibrary& library) {
  if (!options.writers.empty()) {
    return options.writers;
  }
  return {library.find("sum") != nullptr ? "sum" : "auto"};
}

void requireBaseName(const DeliveryOptions& options) {
  if (options.base.empty() || options.base.back() == '/') {
    throw UsageError(fmt::format("-o \"{}\" has no name for the result files; give DIRECTORY/NAME",
                                 options.base));
  }
}

void requireWritable(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    const std::string problem = checkOutputFile(file);
    if (!problem.empty()) {
      throw UsageError("cannot write results: " + problem);
    }
  }
}

int deliverRecording(RecordingReader& reader, Run& run, const StopSignal& stop, OnStop onStop,
                     const CommonOptions& common) {
  Progress progress(common.verbosity > 0, std::chrono::seconds(1));
  reader.setWarningHandler([&](const std::string& text) {
    if (common.verbosity > 0) {
      progress.clear();
      printNote(text);
    }
  });
  int status = kDone;
  run.start();
  try {
    readRecording(reader, stop, onStop, progress);
  } catch (const RecordingError& error) {
    progress.clear();
    printNote(error.what());
    status = kWrongInput;
  }
  const int writerStatus = run.finish();
  return status != kDone ? status : writerStatus;
}

void printSummary(const Run& run, Environment& environment, const CommonOptions& common) {
  if (common.verbosity == 0) {
    return;
  }
  for (const std::string& problem : run.problems()) {
    printError(problem);
  }
  for (const std::string& note : environment.plugin().notes) {
    printNote(note);
  }
  if (common.verbosity >= 2) {
    printError(fmt::format("{} samples delivered to {}", run.samplesDelivered(),
                           fmt::join(run.writerNames(), ", ")));
  }
}

}  // namespace qumetra::cli
