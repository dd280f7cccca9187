// The tables at the end of a collection: what a metric came to over the whole time.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "qumetra/collect/sampled_metric.h"

namespace qumetra {

class MessageSink;
class Model;

/// Where summary tables go.
struct SummaryContext {
  Model& model;
  MessageSink& sink;
  /// Unique over all metrics, since readers keep the notes of tables by this id alone.
  std::uint32_t nextTableId = 1;
  /// The ids of column handles count up from here, those that are taken being left out. Without it
  /// the model gives them, which fails in a model whose objects were read from a recording.
  std::optional<std::uint64_t> nextHandleId = std::nullopt;
};

/// Delivers the summary of a metric: a title table, which announces the columns, and one value
/// table per row, all under one table id. Nothing for a metric without columns.
///
/// A residency gives "<name> Summary: Residency (Percentage and Time)": a row per entity, the
/// entity's name as the key column, and for every state its share of the time in percent, then for
/// every state its time in seconds. The row of totals has the average share and the sum of times.
///
/// A counter gives "<name> Summary: Average Rate and Total": a row per entity and state, with the
/// names of both as key columns (the state's only where there are several), the rate per second and
/// the total. The row of totals has the sums of both.
///
/// What was never measured, or is no finite number, is an empty cell.
void deliverSummary(const MetricSpec& spec, const std::vector<SampledMetric::Column>& columns,
                    SummaryContext& context);

}  // namespace qumetra
