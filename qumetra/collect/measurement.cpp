#include "qumetra/collect/measurement.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "host/messages.h"
#include "qumetra/collect/child_process.h"
#include "qumetra/collect/clock.h"
#include "qumetra/collect/measurement_clock.h"
#include "qumetra/collect/tee_sink.h"
#include "qumetra/recording/recording_writer.h"

namespace qumetra {
namespace {

constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kSyncTicks = kTicksPerSecond;
/// More periods than these have not passed because a timer was late: the process was stopped, or
/// making files takes longer than the period.
constexpr std::uint64_t kMostLateFlushes = 10;

std::uint64_t limitOf(const MeasurementPlan& plan) {
  return plan.duration && *plan.duration < kNever - plan.start ? plan.start + *plan.duration
                                                               : kNever;
}

}  // namespace

Measurement::Measurement(MeasurementPlan plan,
                         const std::vector<std::unique_ptr<Collector>>& collectors,
                         pwr::SystemMetadata& metadata, StopSignal& stop, MeasurementClock& clock)
    : m_plan(plan),
      m_collectors(collectors),
      m_metadata(metadata),
      m_stop(stop),
      m_clock(clock),
      m_limit(limitOf(plan)),
      m_samples(plan.start, plan.interval),
      m_flushes(plan.start, plan.flushPeriod),
      m_syncs(plan.start, kSyncTicks) {
  m_end.time = plan.start;
}

void Measurement::setProgress(std::function<void(const CollectionProgress&)> progress) {
  m_progress = std::move(progress);
}

MeasurementEnd Measurement::run(TeeSink& sink, RecordingWriter* recording, ChildProcess* command) {
  for (bool over = false; !over;) {
    m_clock.waitUntil(nextDeadline(), m_stop, command);
    const std::uint64_t now = std::max(m_clock.now(), m_end.time + 1);
    over = isOver(now, command);
    flushLate(now, over, sink);
    if (over || now >= m_samples.next()) {
      takeSamples(now, sink);
      keepRecording(now, recording);
    }
    if (!over) {  // The end flushes once, by itself.
      flushWhenDue(now, sink);
    }
  }
  m_end.outcome.missed = m_samples.missed();
  m_end.outcome.joinedFlushes = m_flushes.missed();
  m_end.outcome.leftOutValues = sink.leftOutValues();
  if (m_plan.isLive) {
    flush(m_end.time, sink);
  }
  return m_end;
}

bool Measurement::isOver(std::uint64_t now, ChildProcess* command) {
  m_end.outcome.commandStatus = command != nullptr ? command->poll() : std::nullopt;
  const bool isDone = m_end.outcome.commandStatus.has_value() || now >= m_limit;
  m_end.outcome.stopped = !isDone && m_stop.stopRequested();
  return isDone || m_end.outcome.stopped;
}

void Measurement::takeSamples(std::uint64_t now, TeeSink& sink) {
  for (const auto& collector : m_collectors) {
    collector->sample(now);
  }
  for (const bool withQuantity : {false, true}) {
    for (const auto& collector : m_collectors) {
      collector->deliver(now, withQuantity, sink);
    }
  }
  m_end.time = now;
  ++m_end.outcome.moments;
  if (now >= m_samples.next()) {
    m_samples.advance(now);
  }
  if (m_progress) {
    m_progress(
        {.elapsed = std::chrono::nanoseconds(now - m_plan.start), .samples = sink.samples()});
  }
}

void Measurement::flush(std::uint64_t now, MessageSink& sink) {
  m_metadata.m_lastTimestamp = now;
  sink.flush(m_metadata);
}

std::uint64_t Measurement::dueFlushes(std::uint64_t now) const {
  const bool hasFlushes = m_plan.isLive && m_plan.flushPeriod > 0;
  return hasFlushes && m_limit > 0 ? m_flushes.due(std::min(now, m_limit - 1)) : 0;
}

void Measurement::flushLate(std::uint64_t now, bool isOver, MessageSink& sink) {
  const std::uint64_t due = dueFlushes(now);
  // The latest period gets the sample that is taken now, unless the end's own flush takes it.
  const std::uint64_t late = due > 0 && !isOver ? due - 1 : due;
  const std::uint64_t served = std::min(late, kMostLateFlushes);
  m_flushes.skip(late - served);
  for (std::uint64_t i = 0; i < served; ++i) {
    flush(m_flushes.next(), sink);
    m_flushes.step();
  }
}

void Measurement::flushWhenDue(std::uint64_t now, MessageSink& sink) {
  const bool isRequested = m_stop.takeFlushRequest();
  const bool isDue = dueFlushes(now) > 0;
  if (isDue) {
    m_flushes.step();
  }
  if (m_plan.isLive && (isRequested || isDue)) {
    flush(now, sink);
  }
}

void Measurement::keepRecording(std::uint64_t now, RecordingWriter* recording) {
  if (recording == nullptr) {
    return;
  }
  if (now >= m_syncs.next()) {
    m_syncs.advance(now);
    pwr::SystemMessage message;
    m_metadata.m_lastTimestamp = now;
    message.m_metadata = &m_metadata;
    recording->rewriteSystem(message);
    recording->sync();
  }
  if (!recording->error().empty()) {
    throw CollectionError(recording->error());
  }
}

std::uint64_t Measurement::nextDeadline() const {
  const bool hasFlushes = m_plan.isLive && m_plan.flushPeriod > 0;
  return std::min({m_samples.next(), m_limit, hasFlushes ? m_flushes.next() : kNever});
}

}  // namespace qumetra
