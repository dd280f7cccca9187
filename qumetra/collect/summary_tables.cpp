#include "qumetra/collect/summary_tables.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "client/src/common/number_text.h"
#include "host/handles.h"
#include "host/quantity.h"
#include "host/table.h"
#include "qumetra/collect/clock.h"
#include "qumetra/collect/named.h"
#include "qumetra/model/message_sink.h"
#include "qumetra/model/model.h"

namespace qumetra {
namespace {

using Cell = pwr::TableMessage::Cell;
using Column = SampledMetric::Column;

constexpr int kPercentDecimals = 2;
constexpr int kRateDecimals = 2;
constexpr int kSecondsDecimals = 3;

/// A table whose rows are delivered one by one: key columns, then field columns.
class RowTable {
 public:
  RowTable(const MetricSpec& spec, const std::string& title, SummaryContext& context)
      : m_context(context) {
    m_table.m_id = context.nextTableId++;
    m_table.m_metricId = spec.metricId;
    m_table.setTitle(spec.name + title);
  }

  void addKey(const std::string& name) {
    m_columns.push_back(makeHandle(name));
    m_table.addSharedHandle(m_columns.back());
  }
  void addField(const std::string& name) {
    m_columns.push_back(makeHandle(name));
    m_table.addFieldHandle(m_columns.back());
  }
  /// A remark that stands behind the table.
  void setRemark(const std::string& text) {
    constexpr std::uint32_t kAfterTable = 1;
    m_table.setTextNotes(&m_context.model.addNotes({{kAfterTable, {text}}}));
  }

  void deliverTitle() {
    m_table.setTableMessageType(pwr::TableMessage::kTitleTable);
    m_context.sink.table(m_table);
    m_table.setTableMessageType(pwr::TableMessage::kValueTable);
  }
  /// REQUIRES: as many cells as there are columns, keys first.
  void deliverRow(const std::vector<Cell>& cells) {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      m_table.setCell(nullptr, m_columns[i], cells[i]);
    }
    m_context.sink.table(m_table);
  }

 private:
  const pwr::DataHandle* makeHandle(const std::string& name) {
    HandleSpec spec = named(name);
    const pwr::DataHandle* handle = nullptr;
    while (handle == nullptr) {
      spec.id = m_context.nextHandleId;
      handle = tryHandle(spec);
    }
    return handle;
  }
  /// Null when the id of the context, which is used up by then, was taken.
  const pwr::DataHandle* tryHandle(const HandleSpec& spec) {
    if (m_context.nextHandleId) {
      ++*m_context.nextHandleId;
    }
    try {
      return &m_context.model.addColumnHandle(spec, pwr::DataHandle::kOtherType);
    } catch (const IdError&) {
      if (!spec.id) {
        throw;
      }
      return nullptr;
    }
  }

  SummaryContext& m_context;
  pwr::TableMessage m_table;
  std::vector<const pwr::DataHandle*> m_columns;
};

Cell present(std::string text) { return {Cell::State::Present, std::move(text)}; }
Cell absent() { return {Cell::State::Absent, {}}; }

/// A factor of a recording's quantity may be anything; what is no finite number is no cell.
Cell fixed(double value, int decimals) {
  if (!std::isfinite(value)) {
    return absent();
  }
  std::string text;
  pwr::appendFixed(text, value, decimals);
  return present(std::move(text));
}

double seconds(std::uint64_t ticks) {
  return static_cast<double>(ticks) / static_cast<double>(kTicksPerSecond);
}

/// The columns of a metric as a grid of entities and states, both in the order of their first
/// appearance.
class Grid {
 public:
  explicit Grid(const std::vector<Column>& columns) {
    for (const Column& column : columns) {
      addOnce(m_entities, column.entity);
      addOnce(m_states, column.state);
      m_columns[{column.entity, column.state}] = &column;
    }
  }

  const std::vector<const pwr::EntityHandle*>& entities() const { return m_entities; }
  const std::vector<const pwr::DataDescriptor*>& states() const { return m_states; }
  /// Null when the entity does not have the state or was never measured in it.
  const Column* find(const pwr::EntityHandle* entity, const pwr::DataDescriptor* state) const {
    const auto found = m_columns.find({entity, state});
    return found != m_columns.end() && found->second->totalDuration > 0 ? found->second : nullptr;
  }
  /// The columns of one entity by state, null where there is nothing.
  std::vector<const Column*> row(const pwr::EntityHandle* entity) const {
    std::vector<const Column*> result;
    for (const pwr::DataDescriptor* state : m_states) {
      result.push_back(find(entity, state));
    }
    return result;
  }

 private:
  template <typename Handle>
  static void addOnce(std::vector<const Handle*>& handles, const Handle* handle) {
    if (std::find(handles.begin(), handles.end(), handle) == handles.end()) {
      handles.push_back(handle);
    }
  }

  std::vector<const pwr::EntityHandle*> m_entities;
  std::vector<const pwr::DataDescriptor*> m_states;
  std::map<std::pair<const pwr::EntityHandle*, const pwr::DataDescriptor*>, const Column*>
      m_columns;
};

// Residencies.

void addResidencyFields(RowTable& table, const Grid& grid) {
  for (const char* unit : {" (%)", " (s)"}) {
    for (const pwr::DataDescriptor* state : grid.states()) {
      table.addField(state->getName() + unit);
    }
  }
}

std::vector<Cell> residencyRow(const std::string& name, const std::vector<const Column*>& columns) {
  std::vector<Cell> cells{present(name)};
  for (const Column* column : columns) {
    cells.push_back(column == nullptr ? absent()
                                      : fixed(100.0 * static_cast<double>(column->totalValue) /
                                                  static_cast<double>(column->totalDuration),
                                              kPercentDecimals));
  }
  for (const Column* column : columns) {
    cells.push_back(column == nullptr ? absent()
                                      : fixed(seconds(column->totalValue), kSecondsDecimals));
  }
  return cells;
}

/// The sums over all entities, whose quotient is the average share.
Column residencyTotal(const Grid& grid, const pwr::DataDescriptor* state) {
  Column total{.entity = nullptr, .state = state};
  for (const pwr::EntityHandle* entity : grid.entities()) {
    if (const Column* column = grid.find(entity, state)) {
      total.add(column->totalValue, column->totalDuration);
    }
  }
  return total;
}

std::vector<Column> residencyTotals(const Grid& grid) {
  std::vector<Column> totals;
  for (const pwr::DataDescriptor* state : grid.states()) {
    totals.push_back(residencyTotal(grid, state));
  }
  return totals;
}

std::vector<Cell> residencyTotalsRow(const std::string& name, const Grid& grid) {
  const std::vector<Column> totals = residencyTotals(grid);
  std::vector<const Column*> columns;
  columns.reserve(totals.size());
  for (const Column& total : totals) {
    columns.push_back(total.totalDuration > 0 ? &total : nullptr);
  }
  return residencyRow(name, columns);
}

void deliverResidency(const MetricSpec& spec, const Grid& grid, SummaryContext& context) {
  RowTable table(spec, " Summary: Residency (Percentage and Time)", context);
  table.addKey(spec.entityTitle);
  addResidencyFields(table, grid);
  if (!spec.totalsName.empty()) {
    table.setRemark(spec.totalsName + ": average percentages and total times.");
  }
  table.deliverTitle();
  for (const pwr::EntityHandle* entity : grid.entities()) {
    table.deliverRow(residencyRow(entity->getName(), grid.row(entity)));
  }
  if (!spec.totalsName.empty()) {
    table.deliverRow(residencyTotalsRow(spec.totalsName, grid));
  }
}

// Counters.

/// A counter's rate per second and total.
struct CounterSum {
  double rate = 0;
  std::uint64_t total = 0;
  bool measured = false;

  void add(const Column* column) {
    if (column == nullptr) {
      return;
    }
    measured = true;
    rate += static_cast<double>(column->totalValue) / seconds(column->totalDuration);
    total += column->totalValue;
  }
};

std::string withUnits(const std::string& name, const pwr::Quantity* quantity) {
  std::string units;
  return pwr::TableMessage::quantityToUnits(quantity, units, " (", ")") ? name + units : name;
}

/// The fields of a counter, and the factor that scales a value per second into the rate's units.
double addCounterFields(RowTable& table, const pwr::Quantity* quantity) {
  const pwr::Quantity* rate = nullptr;
  double factor = 1;
  if (quantity != nullptr) {
    quantity->getRateConversion(rate, factor);
  }
  table.addField(withUnits("Average Rate", rate));
  table.addField(withUnits("Total", quantity));
  return factor;
}

/// Delivers the rows of one entity or of the totals: one per state.
class CounterRows {
 public:
  CounterRows(RowTable& table, const Grid& grid, double factor)
      : m_table(table), m_grid(grid), m_factor(factor) {}

  void deliver(const std::string& name, const std::vector<const pwr::EntityHandle*>& entities) {
    for (const pwr::DataDescriptor* state : m_grid.states()) {
      CounterSum sum;
      for (const pwr::EntityHandle* entity : entities) {
        sum.add(m_grid.find(entity, state));
      }
      deliverRow(name, *state, sum);
    }
  }

 private:
  void deliverRow(const std::string& name, const pwr::DataDescriptor& state,
                  const CounterSum& sum) {
    std::vector<Cell> cells{present(name)};
    if (m_grid.states().size() > 1) {
      cells.push_back(present(state.getName()));
    }
    cells.push_back(sum.measured ? fixed(sum.rate * m_factor, kRateDecimals) : absent());
    cells.push_back(sum.measured ? present(pwr::to_string(sum.total)) : absent());
    m_table.deliverRow(cells);
  }

  RowTable& m_table;
  const Grid& m_grid;
  double m_factor;
};

void deliverCounter(const MetricSpec& spec, const Grid& grid, SummaryContext& context) {
  RowTable table(spec, " Summary: Average Rate and Total", context);
  table.addKey(spec.entityTitle);
  if (grid.states().size() > 1) {
    table.addKey(spec.stateTitle);
  }
  CounterRows rows(table, grid, addCounterFields(table, spec.quantity));
  table.deliverTitle();
  for (const pwr::EntityHandle* entity : grid.entities()) {
    rows.deliver(entity->getName(), {entity});
  }
  if (!spec.totalsName.empty()) {
    rows.deliver(spec.totalsName, grid.entities());
  }
}

}  // namespace

void deliverSummary(const MetricSpec& spec, const std::vector<Column>& columns,
                    SummaryContext& context) {
  if (columns.empty()) {
    return;
  }
  const Grid grid(columns);
  if (spec.type == pwr::Metric::SAMPLED_RESIDENCY) {
    deliverResidency(spec, grid, context);
  } else {
    deliverCounter(spec, grid, context);
  }
}

}  // namespace qumetra
