// What a source of measurements is to a collection.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "qumetra/collect/collection.h"
#include "qumetra/collect/machine_entities.h"
#include "qumetra/collect/sampled_metric.h"
#include "qumetra/collect/summary_tables.h"

namespace qumetra {

class MessageSink;
class Model;

/// This machine does not have what a collector reads. `what()` is one line: path, reason, what
/// would help.
class SourceMissing : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What collectors get from their collection. Lives longer than they do.
struct CollectorContext {
  Model& model;
  MachineEntities& entities;
  std::string procfs;
  std::string sysfs;
  /// The time between samples.
  std::uint64_t intervalTicks = 0;
  /// Takes a line, without its end, about what makes numbers doubtful or incomplete.
  std::function<void(const std::string& line)> notice;
  /// The id for the next metric. 0 is the system message's.
  std::uint32_t nextMetricId = 1;
};

/// Reads one source and delivers its metrics. To add a collector, derive from this class, make the
/// metrics in `open`, and add a line to `makeCollectors`.
///
/// A collector is opened, started and then sampled at growing times; whatever changes or vanishes
/// in between, it delivers the rest and never throws. Reading must be cheap, since it is the
/// measured machine that pays for it: files stay open, and nothing is allocated that can be kept.
class Collector {
 public:
  Collector();
  Collector(const Collector&) = delete;
  Collector& operator=(const Collector&) = delete;
  virtual ~Collector();

  virtual SourceInfo info() const = 0;

  /// Finds what there is and describes it in the model: entities, states, metrics with all columns
  /// that are known. `context` is borrowed. Throws `SourceMissing` when there is nothing to read.
  virtual void open(CollectorContext& context) = 0;

  /// Takes the first reading, which later ones are compared with.
  void start(std::uint64_t now) { read(now); }
  /// The command under measurement runs as process `pid`, since `ticks` or a little later. Comes,
  /// if there is a command, between `start` and `announce`. Here: nothing.
  virtual void commandStarted(std::uint32_t pid, std::uint64_t ticks);
  /// Tells the metrics to `sink`, before the samples.
  void announce(MessageSink& sink);
  /// Reads again. REQUIRES: started; `now` grows from call to call.
  void sample(std::uint64_t now) { read(now); }
  /// Delivers the reading of `now`, one sample for each metric that has a quantity, or for each
  /// that has none. All collectors deliver the latter first: a binary result describes a metric
  /// without a quantity by that of the metric before it, and would tell CPU time in interrupts.
  void deliver(std::uint64_t now, bool withQuantity, MessageSink& sink);
  /// Delivers the summary tables of all that was sampled.
  virtual void summarise(SummaryContext& context);

  const std::vector<std::unique_ptr<SampledMetric>>& metrics() const { return m_metrics; }

 protected:
  /// Reads the source at `now` and sets the values of the metrics for the time since the last
  /// reading; a thing read for the first time gets no value yet.
  virtual void read(std::uint64_t now) = 0;
  /// Tells `sink` of the processes whose end the last reading saw, after all its samples. Here:
  /// nothing.
  virtual void tellEnds(MessageSink& sink);

  /// Makes a metric, with the next id and this collector's name as its feature.
  SampledMetric& addMetric(CollectorContext& context, MetricSpec spec);

 private:
  std::vector<std::unique_ptr<SampledMetric>> m_metrics;
};

/// Every collector there is, not yet opened, in the order of the results.
std::vector<std::unique_ptr<Collector>> makeCollectors();

/// How far a counter came. Counters that step back, as some of the kernel's do, did not move.
constexpr std::uint64_t counterDelta(std::uint64_t before, std::uint64_t now) {
  return now > before ? now - before : 0;
}

}  // namespace qumetra
