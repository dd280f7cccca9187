// Sampled metrics over time: a table per entity and view, a row per message.
#include <algorithm>

#include "host/handles.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "writers/textwriter_plugin/int_writer.h"
#include "writers/textwriter_plugin/time_line_columns.h"

namespace {

std::string entityTableTitle(const pwr::Metric& metric, const pwr::EntityHandle& entity,
                             const std::string& titleSuffix) {
  std::string title = metric.name;
  if (!entity.getName().empty()) {
    title += " - " + entity.getQualifiedName();
  }
  return title + titleSuffix;
}

/// The name of a column that was not declared. The title of a quantity brings its units itself, so
/// no suffix follows it; and it always is the metric's, also in a table of rates.
std::string lateColumnName(const pwr::Metric& metric, const pwr::DataElement& element,
                           const std::string& unitSuffix) {
  if (element.getDescriptor() != nullptr) {
    return descriptorTitle(*element.getDescriptor()) + unitSuffix;
  }
  if (metric.valueHandle != nullptr) {
    return metric.valueHandle->getName() + unitSuffix;
  }
  if (metric.quantity == nullptr) {
    return element.getEntity()->getQualifiedName() + unitSuffix;
  }
  std::string title;
  metric.quantity->toTitleString(title);
  return title;
}

}  // namespace

/// The arguments of one call of `writeSampledGeneric`.
struct IntWriterV2::SampledCall {
  const pwr::Metric& metric;
  unsigned long tableIndex;
  Calculations calculation;
  const pwr::Quantity* quantity;
  const std::string& titleSuffix;
  const std::string& defaultValue;
  Places& places;
};

const IntWriterV2::Place* IntWriterV2::Places::set(std::size_t index, const Place& place) {
  if (index == m_places.size()) {
    m_places.push_back(place);
  } else {
    m_places[index] = place;
  }
  return &m_places[index];
}

IntWriterV2::Places& IntWriterV2::placesOf(const pwr::Metric& metric, unsigned long tableIndex) {
  return m_places[{metric.metricId, tableIndex}];
}

int IntWriterV2::writeSampledGeneric(const pwr::Metric& metric, unsigned long tableIndex,
                                     Calculations calculation, const pwr::Quantity* quantity,
                                     const std::string& titleSuffix,
                                     const std::string& defaultValue) {
  const std::vector<const pwr::DataElement*>& elements = metric.getData().elements;
  const SampledCall call{metric,
                         tableIndex,
                         calculation,
                         quantity,
                         titleSuffix,
                         defaultValue,
                         placesOf(metric, tableIndex)};
  ++m_call;
  m_seenEntities.clear();
  for (std::size_t i = 0; i < elements.size(); ++i) {
    if (!writeSampledElement(call, *elements[i], i)) {
      // The rows that were started are not completed: what they have got so far waits in the
      // tables for the next row. Readers know such rows by the jump of their numbers.
      return 1;
    }
  }
  for (const SeenEntity& seen : m_seenEntities) {
    seen.store->rowComplete();
  }
  return 0;
}

bool IntWriterV2::writeSampledElement(const SampledCall& call, const pwr::DataElement& element,
                                      std::size_t index) {
  const Place* place = placeOf(call, element, index);
  if (place == nullptr) {
    return false;
  }
  TableInfo& table = *place->table;
  startRowOnce(table, place->entityId, call.metric.getData().timestamp);
  if (!pushSampledCells(table, place->column, call.metric, element, call.calculation,
                        warnWithTag)) {
    return false;
  }
  if (call.metric.writeEntityAttributes) {
    pushAttributes(table, table.sampled.attributeColumns, *element.getEntity());
  }
  return true;
}

const IntWriterV2::Place* IntWriterV2::placeOf(const SampledCall& call,
                                               const pwr::DataElement& element, std::size_t index) {
  const std::uint64_t entityId = element.getEntity()->getId();
  const std::uint64_t descriptorId = idOf(element.getDescriptor());
  if (const Place* place = call.places.find(index, entityId, descriptorId)) {
    return place;
  }
  TableInfo* table = sampledTable(call, *element.getEntity());
  if (table == nullptr) {
    return nullptr;
  }
  if (!table->initialized) {
    setUpSampledColumns(call, *element.getEntity(), *table);
  }
  auto& columns = table->sampled.dataColumns;
  const std::uint64_t key = cellKey(entityId, descriptorId);
  auto column = columns.find(key);
  if (column == columns.end()) {
    const std::string suffix = unitSuffix(call.calculation, call.quantity);
    const std::string name = lateColumnName(call.metric, element, suffix);
    column = columns.emplace(key, table->store->addColumn(name)).first;
  }
  return call.places.set(index, {entityId, descriptorId, table, column->second});
}

IntWriterV2::TableInfo* IntWriterV2::sampledTable(const SampledCall& call,
                                                  const pwr::EntityHandle& entity) {
  const std::uint64_t metricId = call.metric.metricId;
  const std::uint64_t outerKey = entity.getId() == 0 ? metricId : (metricId << 32) + entity.getId();
  TableInfo* table = findTable(outerKey, call.tableIndex);
  if (table == nullptr && getStore(entityTableTitle(call.metric, entity, call.titleSuffix),
                                   outerKey, call.tableIndex, call.defaultValue) != nullptr) {
    table = findTable(outerKey, call.tableIndex);
  }
  return table;
}

void IntWriterV2::setUpSampledColumns(const SampledCall& call, const pwr::EntityHandle& entity,
                                      TableInfo& table) const {
  addFixedColumns(table);
  if (call.metric.writeEntityAttributes) {
    for (const auto& [attribute, value] : entity) {
      addAttributeColumn(*table.store, table.sampled.attributeColumns, attribute);
    }
  }
  const std::string suffix = unitSuffix(call.calculation, call.quantity);
  for (const auto& [declared, descriptor] : call.metric.entities) {
    if (declared == nullptr || declared->getId() != entity.getId()) {
      continue;
    }
    const std::uint64_t key = cellKey(declared->getId(), idOf(descriptor));
    if (!table.sampled.dataColumns.contains(key)) {
      const std::string name = descriptor == nullptr ? "" : descriptorTitle(*descriptor);
      table.sampled.dataColumns.emplace(key, table.store->addColumn(name + suffix));
    }
  }
  table.initialized = true;
  table.sampleCount = 0;
}

void IntWriterV2::addFixedColumns(TableInfo& table) const {
  table.sampled.sampleColumn = table.store->addColumn("Sample #");
  table.sampled.timeColumn =
      table.store->addColumn(doTimelineTsc ? "Timestamp" : "Continuous Time (usec)");
  table.sampled.durationColumn = table.store->addColumn("Duration (ms)");
}

void IntWriterV2::startRowOnce(TableInfo& table, std::uint64_t entityId, std::uint64_t timestamp) {
  if (hasRow(table, entityId)) {
    return;
  }
  startSampledRow(table, timestamp);
  table.rowCall = m_call;
  table.rowEntity = entityId;
  m_seenEntities.push_back({entityId, table.store.get()});
}

bool IntWriterV2::hasRow(const TableInfo& table, std::uint64_t entityId) const {
  if (table.rowCall != m_call) {
    return false;
  }
  if (table.rowEntity == entityId) {
    return true;
  }
  // Two entities share a table only when the ids of metric and entity add up to the same key.
  return std::any_of(m_seenEntities.begin(), m_seenEntities.end(),
                     [entityId](const SeenEntity& seen) { return seen.id == entityId; });
}

void IntWriterV2::startSampledRow(TableInfo& table, std::uint64_t timestamp) {
  pushSampleNumber(table, table.sampled.sampleColumn);
  pushTime(table, table.sampled.timeColumn, timestamp, TimeConversion::ToMicroseconds);
}

bool IntWriterV2::pushSampledCells(TableInfo& table, std::uint16_t column,
                                   const pwr::Metric& metric, const pwr::DataElement& element,
                                   Calculations calculation, Warn warn) {
  if (!formatValue(metric, element, calculation, warn)) {
    return false;
  }
  table.store->pushCell(m_cellText, column);
  table.store->pushCell(tickText(element.getDuration(), TimeConversion::ToMilliseconds),
                        table.sampled.durationColumn);
  return true;
}
