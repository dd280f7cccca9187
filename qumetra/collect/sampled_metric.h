// One metric of a collector, from its description to its totals.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/metric.h"

namespace qumetra {

class MessageSink;
class Model;

/// What a metric is made from. Everything pointed at is borrowed and lives as long as the model.
struct MetricSpec {
  std::string name;
  std::uint32_t metricId = 0;
  pwr::Metric::MetricType type = pwr::Metric::SAMPLED_DELTA;
  const pwr::Quantity* quantity = nullptr;
  std::string featureName;
  /// What the values, the states and the entities are: "Residency", "State", "CPU".
  std::string valueTitle;
  std::string stateTitle;
  std::string entityTitle;
  /// The name of the summary's row over all entities; empty for a summary without one.
  std::string totalsName;
};

/// The totals' name of a metric over entities with this title: those over single CPUs have totals,
/// others have none. A recording does not tell it, so that it follows from what a recording tells.
std::string totalsNameFor(const std::string& entityTitle);

/// A metric whose values are unsigned numbers: counts, or ticks of a residency. A column is one
/// state of one entity. Columns are added at any time; those known before `announce` are told to
/// readers in advance.
///
///     const std::size_t column = metric.addColumn(cpu, idle);
///     metric.announce(sink);
///     metric.set(column, idleTicks, intervalTicks);
///     metric.deliver(now, sink);
class SampledMetric {
 public:
  /// A column with what was delivered for it so far.
  struct Column {
    const pwr::EntityHandle* entity;
    const pwr::DataDescriptor* state;
    std::uint64_t totalValue = 0;
    std::uint64_t totalDuration = 0;

    void add(std::uint64_t value, std::uint64_t duration) {
      totalValue += value;
      totalDuration += duration;
    }
  };

  /// The model is borrowed for the call; what is made lives in it.
  SampledMetric(Model& model, const MetricSpec& spec);
  SampledMetric(const SampledMetric&) = delete;
  SampledMetric& operator=(const SampledMetric&) = delete;
  ~SampledMetric();

  /// Appends a column and returns its index. The columns of one entity should stand together:
  /// readers join neighbours.
  std::size_t addColumn(const pwr::EntityHandle& entity, const pwr::DataDescriptor& state);

  /// Tells which metric this is and where it belongs. Comes before the samples.
  void announce(MessageSink& sink);

  /// Puts a value into the next sample. `duration` is the time that it covers, in ticks.
  void set(std::size_t column, std::uint64_t value, std::uint64_t duration);
  /// Delivers the values that were set since the last call, if any, as a sample of `now`.
  void deliver(std::uint64_t now, MessageSink& sink);

  const MetricSpec& spec() const { return m_spec; }
  const std::vector<Column>& columns() const { return m_columns; }

 private:
  MetricSpec m_spec;
  pwr::Metric& m_metric;
  bool m_announced = false;
  std::vector<Column> m_columns;
  std::vector<pwr::DataElement> m_elements;
};

}  // namespace qumetra
