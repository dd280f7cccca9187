// The loop that takes samples from the first reading to the stop.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "host/system_metadata.h"
#include "qumetra/collect/collection.h"
#include "qumetra/collect/collector.h"
#include "qumetra/collect/interval_schedule.h"
#include "qumetra/collect/report_texts.h"

namespace qumetra {

class ChildProcess;
class MeasurementClock;
class RecordingWriter;
class TeeSink;

/// When to measure; all in ticks.
struct MeasurementPlan {
  /// The time of the first reading, which has been taken.
  std::uint64_t start = 0;
  /// Without it the measuring lasts until the command ends or a stop is requested.
  std::optional<std::uint64_t> duration;
  std::uint64_t interval = 0;
  /// 0 for flushes on request only.
  std::uint64_t flushPeriod = 0;
  /// Whether flushes are asked for at all.
  bool isLive = false;
};

/// How a measurement ended.
struct MeasurementEnd {
  /// The time of the last reading.
  std::uint64_t time = 0;
  CollectionOutcome outcome;
};

/// Samples all collectors at every deadline and once more at the stop, so that the whole time is
/// covered: a run shorter than the interval has one sample. Everything given is borrowed.
///
/// A live measurement flushes at the end of every period and once more at its own end, which takes
/// the place of a period's that ends then. However late it is served, each period has a flush of
/// its own, so that the number of result files follows from the time alone; what is sampled late
/// comes behind the flushes that it is too late for. Only after a stall of many periods are the
/// oldest of them joined into one, and counted.
class Measurement {
 public:
  Measurement(MeasurementPlan plan, const std::vector<std::unique_ptr<Collector>>& collectors,
              pwr::SystemMetadata& metadata, StopSignal& stop, MeasurementClock& clock);

  void setProgress(std::function<void(const CollectionProgress&)> progress);

  /// Measures until it is over; a live one ends with a flush. About once a second the recording is
  /// brought up to date on disk, so that little is lost with a killed collection. Throws
  /// `CollectionError` once the recording cannot be written. `recording` and `command` may be null.
  MeasurementEnd run(TeeSink& sink, RecordingWriter* recording, ChildProcess* command);

 private:
  bool isOver(std::uint64_t now, ChildProcess* command);
  void takeSamples(std::uint64_t now, TeeSink& sink);
  void flush(std::uint64_t now, MessageSink& sink);
  /// How many flushes are due by `now`. That at the very end is not among them.
  std::uint64_t dueFlushes(std::uint64_t now) const;
  /// Flushes for the periods that ended before this sample could be taken.
  void flushLate(std::uint64_t now, bool isOver, MessageSink& sink);
  void flushWhenDue(std::uint64_t now, MessageSink& sink);
  void keepRecording(std::uint64_t now, RecordingWriter* recording);
  std::uint64_t nextDeadline() const;

  MeasurementPlan m_plan;
  const std::vector<std::unique_ptr<Collector>>& m_collectors;
  pwr::SystemMetadata& m_metadata;
  StopSignal& m_stop;
  MeasurementClock& m_clock;
  std::function<void(const CollectionProgress&)> m_progress;
  std::uint64_t m_limit;
  IntervalSchedule m_samples;
  IntervalSchedule m_flushes;
  IntervalSchedule m_syncs;
  MeasurementEnd m_end;
};

}  // namespace qumetra
