// qumetra replay: delivers a recording to writers.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/configuration.h"
#include "qumetra/cli/argument_checks.h"
#include "qumetra/cli/command.h"
#include "qumetra/cli/console.h"
#include "qumetra/cli/delivery.h"
#include "qumetra/cli/error_watch.h"
#include "qumetra/cli/session.h"
#include "qumetra/collect/summary_from_samples.h"
#include "qumetra/recording/recording_reader.h"
#include "qumetra/run/call_log.h"
#include "qumetra/run/order_file.h"
#include "qumetra/run/run.h"

namespace qumetra::cli {
namespace {

struct ReplayOptions {
  std::string recording;
  DeliveryOptions delivery;
  bool continuous = false;
  /// Empty for none.
  std::string callLog;
};

void startCallLog(CallLog& log, Environment& environment) {
  log.start(environment);
  if (!log.error().empty()) {
    throw UsageError("cannot write the call log: " + log.error());
  }
}

/// Ends the call log and returns the exit status that comes of it.
int closeCallLog(CallLog& log) {
  const std::string error = log.close();
  if (error.empty()) {
    return kDone;
  }
  printError("cannot write the call log: " + error);
  return kWrongInput;
}

/// A user's own order goes before the one that was recorded.
void useOrder(const std::string& orderFile, RecordingReader& reader) {
  if (!orderFile.empty()) {
    pwr::WriterInterfaceConfigFileParser::instance()->setOrder(readOrderFile(orderFile));
    reader.keepMetricOrder();
  }
}

int replay(const ReplayOptions& options, const CommonOptions& common) {
  requireBaseName(options.delivery);
  Session session(common);
  CallLog log(options.callLog);
  const bool isLogged = !options.callLog.empty();
  Run run(session.library(),
          {.writers = chosenWriters(options.delivery, session.library()),
           .base = options.delivery.base,
           .continuous = options.continuous},
          isLogged ? &log : nullptr);
  std::vector<OutputFile> outputs = run.resultFiles();
  if (isLogged) {
    outputs.push_back({.path = options.callLog, .mayBeLink = true});
  }
  requireWritable(outputs, options.recording);
  if (options.continuous) {
    noteLackOfContinuous(run.writerNames(), session.library(), common);
  }
  Model& model = session.freshModel();
  SummaryFromSamples summary(model, run);
  RecordingReader reader(options.recording, model, summary);
  useOrder(options.delivery.orderFile, reader);
  if (isLogged) {
    startCallLog(log, session.environment());
  }
  const ErrorWatch errors(session.environment());
  int status = deliverRecording(reader, summary, run, session.stop(), {.endsOnStop = true}, common);
  status = std::max(status, errors.status());
  const int logStatus = closeCallLog(log);
  printSummary(run, session.environment(), common);
  status = std::max(status, logStatus);
  const int signal = session.signals().stopSignalNumber();
  return signal != 0 && status == kDone ? 128 + signal : status;
}

}  // namespace

void addReplayCommand(CLI::App& app, Action& action) {
  CLI::App* command = app.add_subcommand("replay", "Deliver a recording to writers of results");
  auto options = std::make_shared<ReplayOptions>();
  command->add_option("RECORDING", options->recording, "The recording, a .qmrec file")
      ->type_name("")
      ->check(nonEmpty())
      ->required();
  addDeliveryOptions(*command, options->delivery);
  command->add_flag("--continuous", options->continuous,
                    "Run the writers in continuous mode: the recording's flushes count");
  command
      ->add_option("--call-log", options->callLog,
                   "Write every call of a writer and everything logged to FILE, as JSON lines")
      ->type_name("FILE")
      ->check(nonEmpty());
  command->callback([&action, options] {
    action = [options](const CommonOptions& common) { return replay(*options, common); };
  });
  command->footer(
      "Examples:\n"
      "  qumetra replay run.qmrec\n"
      "  qumetra replay run.qmrec -r sum,int -o results/run\n"
      "  qumetra replay run.qmrec -r all --call-log calls.jsonl\n"
      "\n"
      "A faulty recording is told as FILE:LINE: what was wrong; what came before is finished and "
      "kept.");
}

}  // namespace qumetra::cli
