#include "qumetra/collect/collection.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/configuration.h"
#include "host/messages.h"
#include "qumetra/collect/child_process.h"
#include "qumetra/collect/clock.h"
#include "qumetra/collect/collector.h"
#include "qumetra/collect/measurement.h"
#include "qumetra/collect/measurement_clock.h"
#include "qumetra/collect/report_texts.h"
#include "qumetra/collect/summary_from_samples.h"
#include "qumetra/collect/system_scan.h"
#include "qumetra/collect/tee_sink.h"
#include "qumetra/collect/topology_scan.h"
#include "qumetra/collect/wake_up.h"
#include "qumetra/model/model.h"
#include "qumetra/recording/recording_writer.h"

namespace qumetra {
namespace {

constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();
/// How long a command may take to end by itself after a stop request.
constexpr std::uint64_t kGraceTicks = kTicksPerSecond;

std::uint64_t ticksOf(std::chrono::nanoseconds time) {
  return static_cast<std::uint64_t>(std::max(time.count(), std::chrono::nanoseconds::rep{0}));
}

bool isChosen(const std::vector<std::string>& names, const std::string& name) {
  return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
}

void checkNames(const std::vector<std::string>& names) {
  std::vector<std::string> known;
  for (const SourceInfo& info : Collection::allSources()) {
    known.push_back(info.name);
  }
  for (const std::string& name : names) {
    if (std::find(known.begin(), known.end(), name) == known.end()) {
      throw CollectionError(
          fmt::format("unknown source \"{}\"; known are: {}", name, fmt::join(known, ", ")));
    }
  }
}

void deliverText(MessageSink& sink, const std::string& line) {
  pwr::TextMessage message;
  message.setMessage(line);
  sink.text(message);
}

void deliverHeaderTexts(MessageSink& sink, const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    pwr::HeaderTextMessage message;
    message.setMessage(line);
    sink.text(message);
  }
}

/// The order of metrics in reports, as the collectors stand.
pwr::MetricOrder orderOf(const std::vector<std::unique_ptr<Collector>>& collectors) {
  pwr::MetricOrder order;
  for (const auto& collector : collectors) {
    const std::string feature = collector->info().name;
    order.featureOrder.push_back(feature);
    for (const auto& metric : collector->metrics()) {
      order.metricOrder[feature].push_back(metric->spec().name);
    }
  }
  return order;
}

}  // namespace

struct Collection::State {
  using Teller = std::function<void(const std::string& line)>;

  State(CollectionOptions chosen, Model& world, StopSignal& signal)
      : options(std::move(chosen)), model(world), stop(signal) {}

  void checkOptions() const;
  void openCollectors();
  void openCollector(std::unique_ptr<Collector> collector);
  /// Keeps the line for the results and tells it.
  void notice(const std::string& line, const Teller& tell);
  void noteDoubts(const CollectionOutcome& outcome);

  CollectionSetup setup() const;
  /// Takes the first reading and starts the command.
  void start();
  std::unique_ptr<RecordingWriter> startRecording();
  void deliverOpening(MessageSink& sink);
  MeasurementEnd measure(TeeSink& sink, RecordingWriter* recording, bool isLive);
  void deliverClosing(MessageSink& sink, const CollectionOutcome& outcome);
  void noteEnd(const MeasurementEnd& end, RecordingWriter* recording, MessageSink* live);
  pwr::SystemMessage systemMessage() const;

  CollectionOptions options;
  Model& model;
  StopSignal& stop;
  pwr::SystemMetadata* metadata = nullptr;
  std::unique_ptr<MachineEntities> entities;
  std::unique_ptr<CollectorContext> context;
  std::vector<std::unique_ptr<Collector>> collectors;
  /// A line for each source that is left out.
  std::vector<std::string> missingSources;
  std::vector<std::string> notices;
  std::optional<ChildProcess> command;
};

Collection::Collection(CollectionOptions options, Model& model, StopSignal& stop)
    : m_state(std::make_unique<State>(std::move(options), model, stop)) {}

Collection::~Collection() = default;

std::vector<SourceInfo> Collection::allSources() {
  std::vector<SourceInfo> sources;
  for (const auto& collector : makeCollectors()) {
    sources.push_back(collector->info());
  }
  return sources;
}

void Collection::open() {
  State& state = *m_state;
  state.checkOptions();
  const CollectionOptions& options = state.options;
  const auto topology = scanTopology(options.procfs, options.sysfs);
  SystemScanOptions scan;
  scan.procfs = options.procfs;
  scan.sysfs = options.sysfs;
  scan.commandLine = options.commandLine;
  state.metadata = &scanSystem(state.model, scan, identifyCpu(), topology);
  state.entities = std::make_unique<MachineEntities>(state.model, options.sysfs, topology);
  state.openCollectors();
}

CollectionResult Collection::run(MessageSink* live) {
  State& state = *m_state;
  if (state.collectors.empty()) {
    throw CollectionError("a collection has to be opened before it runs");
  }
  if (live == nullptr && state.options.recordPath.empty()) {
    throw CollectionError("a collection needs a recording or a sink to deliver to");
  }
  state.start();
  const std::unique_ptr<RecordingWriter> recording = state.startRecording();
  TeeSink sink{recording.get(), live};
  state.deliverOpening(sink);
  const MeasurementEnd end = state.measure(sink, recording.get(), live != nullptr);
  state.noteEnd(end, recording.get(), live);
  state.deliverClosing(sink, end.outcome);
  if (const std::string error = recording ? recording->close() : ""; !error.empty()) {
    throw CollectionError(error);
  }
  const std::uint64_t elapsed = end.time - state.metadata->m_firstTimestamp;
  return {.progress = {.elapsed = std::chrono::nanoseconds(elapsed), .samples = sink.samples()},
          .stopped = end.outcome.stopped,
          .commandStatus = end.outcome.commandStatus};
}

bool Collection::commandRuns() { return m_state->command && !m_state->command->poll(); }

int Collection::waitForCommand() {
  State& state = *m_state;
  if (!state.command) {
    return 0;
  }
  ChildProcess& command = *state.command;
  std::uint64_t deadline = kNever;
  bool isTold = false;
  while (!command.poll()) {
    if (state.stop.stopRequested() && deadline == kNever && !isTold) {
      deadline = monotonicTicks() + kGraceTicks;
    }
    waitFor(deadline, state.stop, &command);
    if (monotonicTicks() >= deadline) {
      command.terminate();
      isTold = true;
      deadline = kNever;
    }
  }
  return *command.poll();
}

void Collection::State::checkOptions() const {
  if (options.interval.count() <= 0) {
    throw CollectionError("the interval between samples must be above 0");
  }
  if (options.duration && options.duration->count() < 0) {
    throw CollectionError("the time to collect must not be below 0");
  }
  checkNames(options.sources);
}

void Collection::State::openCollectors() {
  context = std::make_unique<CollectorContext>(CollectorContext{
      .model = model,
      .entities = *entities,
      .procfs = options.procfs,
      .sysfs = options.sysfs,
      .intervalTicks = ticksOf(options.interval),
      .notice = [this](const std::string& line) { notice(line, options.notice); }});
  for (auto& collector : makeCollectors()) {
    if (isChosen(options.sources, collector->info().name)) {
      openCollector(std::move(collector));
    }
  }
  if (collectors.empty()) {
    throw CollectionError(
        fmt::format("nothing to collect on this machine: {}", fmt::join(missingSources, "; ")));
  }
  for (const std::string& missing : missingSources) {
    notice(missing, options.notice);
  }
}

void Collection::State::openCollector(std::unique_ptr<Collector> collector) {
  const std::string name = collector->info().name;
  try {
    collector->open(*context);
    collectors.push_back(std::move(collector));
  } catch (const SourceMissing& missing) {
    if (!options.sources.empty()) {
      throw CollectionError(fmt::format("source {}: {}", name, missing.what()));
    }
    missingSources.push_back(fmt::format("source {} is left out: {}", name, missing.what()));
  }
}

void Collection::State::notice(const std::string& line, const Teller& tell) {
  notices.push_back(line);
  if (tell) {
    tell(line);
  }
}

void Collection::State::noteDoubts(const CollectionOutcome& outcome) {
  const bool wasShortCommand = outcome.commandStatus.has_value();
  if (const auto doubt = fewSamplesLine(outcome)) {
    notice(*doubt, wasShortCommand ? options.remark : options.notice);
  }
  for (const auto& doubt :
       {missedSamplesLine(outcome), leftOutValuesLine(outcome), joinedFlushesLine(outcome)}) {
    if (doubt) {
      notice(*doubt, options.notice);
    }
  }
}

CollectionSetup Collection::State::setup() const {
  CollectionSetup result;
  result.intervalTicks = ticksOf(options.interval);
  result.command = options.command;
  for (const auto& collector : collectors) {
    result.sources.push_back(collector->info().name);
  }
  return result;
}

void Collection::State::start() {
  metadata->m_collectionStartTime = utcNowText();
  const std::uint64_t now = monotonicTicks();
  metadata->m_firstTimestamp = now;
  metadata->m_lastTimestamp = now;
  for (const auto& collector : collectors) {
    collector->start(now);
  }
  // After the first reading, so that the whole of the command is measured.
  if (!options.command.empty()) {
    const std::uint64_t begin = monotonicTicks();
    command.emplace(options.command, options.commandEnvironment, options.commandOpenFiles);
    for (const auto& collector : collectors) {
      collector->commandStarted(static_cast<std::uint32_t>(command->pid()), begin);
    }
  }
  pwr::WriterInterfaceConfigFileParser::instance()->setOrder(
      options.metricOrder ? *options.metricOrder : orderOf(collectors));
}

std::unique_ptr<RecordingWriter> Collection::State::startRecording() {
  if (options.recordPath.empty()) {
    return nullptr;
  }
  auto recording = std::make_unique<RecordingWriter>(options.recordPath);
  if (!recording->error().empty()) {
    if (command) {
      command->terminate();  // nothing will be measured of it
    }
    throw CollectionError(recording->error());
  }
  recording->note(std::string(kCollectionNote));
  recording->config();
  return recording;
}

pwr::SystemMessage Collection::State::systemMessage() const {
  pwr::SystemMessage message;
  message.m_metadata = metadata;
  return message;
}

void Collection::State::deliverOpening(MessageSink& sink) {
  sink.system(systemMessage());
  deliverHeaderTexts(sink, openingLines(*metadata, setup()));
  for (const auto& collector : collectors) {
    collector->announce(sink);
  }
}

MeasurementEnd Collection::State::measure(TeeSink& sink, RecordingWriter* recording, bool isLive) {
  MeasurementPlan plan;
  plan.start = metadata->m_firstTimestamp;
  plan.duration = options.duration ? std::optional(ticksOf(*options.duration)) : std::nullopt;
  plan.interval = ticksOf(options.interval);
  plan.flushPeriod = ticksOf(options.flushPeriod);
  plan.isLive = isLive;
  SystemClock clock;
  Measurement measurement(plan, collectors, *metadata, stop, clock);
  measurement.setProgress(options.progress);
  return measurement.run(sink, recording, command ? &*command : nullptr);
}

void Collection::State::noteEnd(const MeasurementEnd& end, RecordingWriter* recording,
                                MessageSink* live) {
  metadata->m_lastTimestamp = end.time;
  if (recording != nullptr && !recording->rewriteSystem(systemMessage())) {
    recording->metadataChanged(*metadata);
  }
  if (live != nullptr) {
    live->metadataChanged(*metadata);
  }
}

void Collection::State::deliverClosing(MessageSink& sink, const CollectionOutcome& outcome) {
  deliverHeaderTexts(sink, closingLines(*metadata, setup(), outcome));
  noteDoubts(outcome);
  for (const std::string& line : notices) {
    deliverText(sink, "Warning: " + line);
  }
  SummaryContext summary{.model = model, .sink = sink};
  for (const auto& collector : collectors) {
    collector->summarise(summary);
  }
}

}  // namespace qumetra
