// The tables of the PHM form.
#include "client/src/common/pw_log.h"
#include "host/handles.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "writers/held_handle.h"
#include "writers/phmwriter_text_plugin/phm_writer.h"
#include "writers/textwriter_plugin/time_line_columns.h"

namespace {

constexpr const char* kNoValue = "n/a";

void warn(const char* text) { pwr::logPlainWarning("%s", text); }

/// The first line of a title, and the units in a second one.
std::string titleWithUnits(const std::string& title, const std::string& unitSuffix) {
  return title + "\nUnits:" + unitSuffix;
}

std::string lateColumnName(const pwr::DataElement& element) {
  std::string name = element.getEntity()->getQualifiedName();
  if (element.getDescriptor() != nullptr) {
    name += " " + element.getDescriptor()->getName();
  }
  return name;
}

}  // namespace

template <typename MakeTitle>
IntWriterV2::TableInfo& PhmTextWriter::openTable(const pwr::Metric& metric, std::uint64_t innerKey,
                                                 const std::string& defaultValue,
                                                 MakeTitle makeTitle) {
  const bool isNew = findTable(metric.metricId, innerKey) == nullptr;
  getStore(isNew ? makeTitle() : std::string(), metric.metricId, metric.groupName, innerKey,
           defaultValue);
  return *findTable(metric.metricId, innerKey);
}

int PhmTextWriter::writeSampledGeneric(const pwr::Metric& metric, unsigned long tableIndex,
                                       Calculations calculation, const pwr::Quantity* quantity,
                                       const std::string& titleSuffix,
                                       const std::string& defaultValue) {
  processMetaData(metric);
  TableInfo& table = openTable(metric, tableIndex, defaultValue, [&] {
    return titleWithUnits(metric.name + titleSuffix, unitSuffix(calculation, quantity));
  });
  Places& places = placesOf(metric, tableIndex);
  const pwr::SampleData& sample = metric.getData();
  // A row starts with a timestamp other than the last one. So one of 0 starts none, and such rows,
  // which have neither number nor time, are what tells readers of samples without a time.
  std::uint64_t lastTimestamp = 0;
  for (std::size_t i = 0; i < sample.elements.size(); ++i) {
    const pwr::DataElement& element = *sample.elements[i];
    if (!table.initialized) {
      setUpColumns(table, metric);
    }
    if (sample.timestamp != lastTimestamp) {
      startSampledRow(table, sample.timestamp);
      lastTimestamp = sample.timestamp;
    }
    const std::uint16_t column = columnOf(table, places, element, i);
    if (!pushSampledCells(table, column, metric, element, calculation, warn)) {
      return 1;
    }
  }
  table.store->rowComplete();
  return 0;
}

void PhmTextWriter::setUpColumns(TableInfo& table, const pwr::Metric& metric) const {
  addFixedColumns(table);
  for (const pwr::EntityHandle* entity : metric.entityList) {
    if (entity != nullptr) {
      addDeclaredColumns(table, metric, *entity);
    }
  }
  table.initialized = true;
  table.sampleCount = 0;
}

void PhmTextWriter::addDeclaredColumns(TableInfo& table, const pwr::Metric& metric,
                                       const pwr::EntityHandle& entity) {
  auto& columns = table.sampled.dataColumns;
  for (const auto& [declared, descriptor] : metric.entities) {
    if (declared == nullptr || declared->getId() != entity.getId()) {
      continue;
    }
    const std::uint64_t key = cellKey(entity.getId(), idOf(descriptor));
    if (!columns.contains(key)) {
      // A pair without a descriptor has a column without a name.
      const std::string name =
          descriptor == nullptr ? ""
                                : declared->getQualifiedName() + " " + descriptorTitle(*descriptor);
      columns.emplace(key, table.store->addColumn(name));
    }
  }
}

std::uint16_t PhmTextWriter::columnOf(TableInfo& table, Places& places,
                                      const pwr::DataElement& element, std::size_t index) {
  const std::uint64_t entityId = element.getEntity()->getId();
  const std::uint64_t descriptorId = idOf(element.getDescriptor());
  if (const Place* place = places.find(index, entityId, descriptorId)) {
    return place->column;
  }
  auto& columns = table.sampled.dataColumns;
  const std::uint64_t key = cellKey(entityId, descriptorId);
  auto column = columns.find(key);
  if (column == columns.end()) {
    column = columns.emplace(key, table.store->addColumn(lateColumnName(element))).first;
  }
  return places.set(index, {entityId, descriptorId, &table, column->second})->column;
}

int PhmTextWriter::writeTracedMetric(const pwr::Metric& metric) {
  processMetaData(metric);
  for (const pwr::DataElement* element : metric.getData().elements) {
    if (!writeTracedElement(metric, *element)) {
      return 1;
    }
  }
  return 0;
}

bool PhmTextWriter::writeTracedElement(const pwr::Metric& metric, const pwr::DataElement& element) {
  static constexpr TracedForm kForm{warn, true};
  const pwr::EntityHandle& entity = *element.getEntity();
  const std::uint64_t key = cellKey(entity.getId(), idOf(element.getDescriptor()));
  TableInfo& table = openTable(metric, key, kNoValue, [&] {
    return titleWithUnits(metric.name + " - " + entity.getQualifiedName(),
                          bracketedUnits(metric.quantity));
  });
  const pwr::DataDescriptor* valueDescriptor = descriptorIn(*element.getValue());
  if (valueDescriptor == nullptr) {
    warn("WARNING: PHM writer plugin: Unable to retrieve DataHandle\n");
    return false;
  }
  if (!table.initialized && !setUpTracedColumns(table, metric, element, valueDescriptor, kForm)) {
    return false;
  }
  return writeTracedRow(table, metric.getData().timestamp, element, valueDescriptor, kForm);
}
