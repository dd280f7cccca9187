// Options and steps that replaying and collecting share: which writers, where to, and how it went.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qumetra {
class Environment;
class RecordingReader;
class Run;
class StopSignal;
class WriterLibrary;
}  // namespace qumetra

namespace qumetra::cli {

struct CommonOptions;

/// Which writers get the messages, and the output base name.
struct DeliveryOptions {
  /// Empty for the default.
  std::vector<std::string> writers;
  std::string base = "qumetra";
  /// The file that tells the order of metrics; empty for the default.
  std::string orderFile;
};

void addDeliveryOptions(CLI::App& command, DeliveryOptions& options);

/// The names that were given or, without any, the summary where the library has it, else the
/// automation summary.
std::vector<std::string> chosenWriters(const DeliveryOptions& options,
                                       const WriterLibrary& library);

/// Throws `UsageError` when the base has no name behind its directory.
void requireBaseName(const DeliveryOptions& options);

/// Throws `UsageError` when one of the files cannot be made or written over. Makes and changes
/// nothing.
void requireWritable(const std::vector<std::string>& files);

/// Whether the delivery of a recording ends with a stop request or goes on to its end.
enum class OnStop { End, GoOn };

/// Starts the run, delivers the recording to it and finishes it, whatever happens between. Returns
/// the exit status; a fault of the recording has been printed.
int deliverRecording(RecordingReader& reader, Run& run, const StopSignal& stop, OnStop onStop,
                     const CommonOptions& common);

/// Prints what went wrong in the run and the remarks about the platform, unless the user wants
/// silence, and for those who want to know more what was delivered.
void printSummary(const Run& run, Environment& environment, const CommonOptions& common);

}  // namespace qumetra::cli
