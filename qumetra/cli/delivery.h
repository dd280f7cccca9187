// Options and steps that replaying and collecting share: which writers, where to, and how it went.
#pragma once

#include <string>
#include <vector>

#include "qumetra/run/output_check.h"

namespace CLI {
class App;
}

namespace qumetra {
class Environment;
class RecordingReader;
class Run;
class StopSignal;
class SummaryFromSamples;
class WriterLibrary;
}  // namespace qumetra

namespace qumetra::cli {

struct CommonOptions;

/// Which writers get the messages, and the output base name.
struct DeliveryOptions {
  /// Lists of names as they were given; empty for the default.
  std::vector<std::string> writers;
  std::string base = "qumetra";
  /// The file that tells the order of metrics; empty for the default.
  std::string orderFile;
};

/// The names of lists such as "a,b", one behind the other. Throws `UsageError`, which names the
/// option, when one of them is empty.
std::vector<std::string> splitNames(const std::vector<std::string>& lists,
                                    const std::string& option);

void addDeliveryOptions(CLI::App& command, DeliveryOptions& options);

/// The names that were given or, without any, the summary where the library has it, else the
/// automation summary.
std::vector<std::string> chosenWriters(const DeliveryOptions& options,
                                       const WriterLibrary& library);

/// Throws `UsageError` when the base has no name behind its directory.
void requireBaseName(const DeliveryOptions& options);

/// Throws `UsageError` when one of the files cannot be made or written over, or when two of them,
/// or one and `input`, are the same file. Makes and changes nothing. `input` is empty for none.
void requireWritable(const std::vector<OutputFile>& files, const std::string& input);

/// Tells, unless the user wants silence, when not one of these writers serves continuous runs.
void noteLackOfContinuous(const std::vector<std::string>& writers, const WriterLibrary& library,
                          const CommonOptions& common);

/// How a recording is delivered.
struct DeliveryManner {
  /// Whether a stop request ends it; otherwise it goes on to its end.
  bool endsOnStop = false;
  /// Whether a line on the terminal may tell how far it is.
  bool showsProgress = true;
};

/// Starts the run, delivers the recording to it and finishes it, whatever happens between. Returns
/// the exit status; a fault of the recording has been printed. A fault in its very first line
/// throws `RecordingError` before the run is started. REQUIRES: `reader` delivers to `summary`, and
/// that to `run`.
int deliverRecording(RecordingReader& reader, SummaryFromSamples& summary, Run& run,
                     const StopSignal& stop, const DeliveryManner& manner,
                     const CommonOptions& common);

/// Finishes the run where that is not done, and prints what went wrong in it and the remarks about
/// the platform, unless the user wants silence, and for those who want to know more what was
/// delivered and the result files that are there.
void printSummary(Run& run, Environment& environment, const CommonOptions& common);

}  // namespace qumetra::cli
