#include "qumetra/cli/delivery.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "qumetra/cli/argument_checks.h"
#include "qumetra/cli/command.h"
#include "qumetra/cli/console.h"
#include "qumetra/cli/progress.h"
#include "qumetra/collect/stop_signal.h"
#include "qumetra/collect/summary_from_samples.h"
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

/// Reads to the end, or to the first stop request where that ends it. Returns whether it was read
/// to the end. Throws `RecordingError`.
bool readRecording(RecordingReader& reader, const StopSignal& stop, const DeliveryManner& manner,
                   Progress& progress) {
  while (!manner.endsOnStop || !stop.stopRequested()) {
    if (!reader.readLine()) {
      return true;
    }
    if (progress.due()) {
      progress.show(describe(reader));
    }
  }
  return false;
}

/// Some results stand elsewhere than beside the others, hence whole paths.
void printResultFiles(const std::vector<OutputFile>& files) {
  for (const OutputFile& file : files) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file.path, error);
    if (!error) {
      printError(
          fmt::format("result: {}, {} bytes", std::filesystem::absolute(file.path).string(), size));
    }
  }
}

}  // namespace

std::vector<std::string> splitNames(const std::vector<std::string>& lists,
                                    const std::string& option) {
  std::vector<std::string> names;
  for (const std::string& list : lists) {
    // The comma behind it lets an empty last name be seen.
    for (const std::string& name : CLI::detail::split(list + ',', ',')) {
      if (name.empty()) {
        throw UsageError(fmt::format("{} \"{}\" has an empty name in it", option, list));
      }
      names.push_back(name);
    }
  }
  return names;
}

void addDeliveryOptions(CLI::App& command, DeliveryOptions& options) {
  command
      .add_option("-r,--results", options.writers,
                  "Writers of results, as `qumetra writers` lists them; all for every one "
                  "[default: sum, or auto without it]")
      ->type_name("NAME[,NAME]")
      ->allow_extra_args(false);
  command
      .add_option("-o,--output", options.base,
                  "Path and beginning of the names of the result files")
      ->type_name("BASE")
      ->capture_default_str();
  command
      .add_option("--order", options.orderFile,
                  "The order of features and metrics in reports, in place of the usual one")
      ->type_name("FILE")
      ->check(nonEmpty());
}

std::vector<std::string> chosenWriters(const DeliveryOptions& options,
                                       const WriterLibrary& library) {
  if (!options.writers.empty()) {
    return splitNames(options.writers, "-r");
  }
  return {library.find("sum") != nullptr ? "sum" : "auto"};
}

void requireBaseName(const DeliveryOptions& options) {
  const std::string name = std::filesystem::path(options.base).filename().string();
  if (name.empty() || name == "." || name == "..") {
    throw UsageError(fmt::format("-o \"{}\" has no name for the result files; give DIRECTORY/NAME",
                                 options.base));
  }
}

void requireWritable(const std::vector<OutputFile>& files, const std::string& input) {
  for (auto file = files.begin(); file != files.end(); ++file) {
    const std::string problem = checkOutputFile(*file);
    if (!problem.empty()) {
      throw UsageError("cannot write results: " + problem);
    }
    if (!input.empty() && isSameFile(file->path, input)) {
      throw UsageError(fmt::format("{} would be written over while it is read", input));
    }
    const auto twin = std::find_if(files.begin(), file, [&](const OutputFile& other) {
      return isSameFile(other.path, file->path);
    });
    if (twin != file) {
      throw UsageError(fmt::format("{} would be written as two results at once", file->path));
    }
  }
}

void noteLackOfContinuous(const std::vector<std::string>& writers, const WriterLibrary& library,
                          const CommonOptions& common) {
  const bool isServed =
      std::any_of(writers.begin(), writers.end(), [&library](const std::string& name) {
        const LoadedWriter* writer = library.find(name);
        return writer != nullptr && writer->continuous();
      });
  if (!isServed && common.verbosity > 0) {
    printError(
        fmt::format("--continuous: no chosen writer ({}) makes fresh files; they write their "
                    "results at the end",
                    fmt::join(writers, ", ")));
  }
}

int deliverRecording(RecordingReader& reader, SummaryFromSamples& summary, Run& run,
                     const StopSignal& stop, const DeliveryManner& manner,
                     const CommonOptions& common) {
  Progress progress(common.verbosity > 0 && manner.showsProgress, std::chrono::seconds(1));
  const auto unlessQuiet = [&](void (*print)(const std::string&)) {
    return [&progress, &common, print](const std::string& text) {
      if (common.verbosity > 0) {
        progress.clear();
        print(text);
      }
    };
  };
  reader.setWarningHandler(unlessQuiet(printNote));
  reader.setNoteHandler([&summary](std::string_view text) { summary.note(text); });
  int status = kDone;
  bool isWhole = true;
  // What is no recording at all must not empty the results of an earlier one.
  reader.readFirst();
  run.start();
  try {
    isWhole = readRecording(reader, stop, manner, progress);
  } catch (const RecordingError& error) {
    progress.clear();
    printNote(error.what());
    status = kWrongInput;
  }
  if (isWhole) {
    summary.finish(unlessQuiet(printError));
  }
  const int writerStatus = run.finish();
  return status != kDone ? status : writerStatus;
}

void printSummary(Run& run, Environment& environment, const CommonOptions& common) {
  const bool hasFailed = run.finish() != 0;
  if (common.verbosity == 0) {
    return;
  }
  for (const std::string& problem : run.problems()) {
    printError(problem);
  }
  if (hasFailed && common.verbosity < PluginEnvironment::kWarnings) {
    printError("writers tell their reasons with -v");
  }
  for (const std::string& note : environment.plugin().notes) {
    printNote(note);
  }
  if (common.verbosity >= 2) {
    printError(fmt::format("{} samples delivered to {}", run.samplesDelivered(),
                           fmt::join(run.writerNames(), ", ")));
    printResultFiles(run.resultFiles());
  }
}

}  // namespace qumetra::cli
