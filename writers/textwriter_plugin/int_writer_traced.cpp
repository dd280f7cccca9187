// Traced metrics over time: a table per entity and descriptor, a row per element.
#include "host/attributes.h"
#include "host/data.h"
#include "host/handles.h"
#include "host/metric.h"
#include "writers/held_handle.h"
#include "writers/textwriter_plugin/int_writer.h"
#include "writers/textwriter_plugin/time_line_columns.h"

namespace {

constexpr const char* kNoValue = "n/a";

std::string entityTableTitle(const pwr::Metric& metric, const pwr::EntityHandle& entity) {
  return entity.getName().empty() ? metric.name : metric.name + " - " + entity.getQualifiedName();
}

}  // namespace

int IntWriterV2::writeTracedMetric(const pwr::Metric& metric) {
  for (const pwr::DataElement* element : metric.getData().elements) {
    if (!writeTracedElement(metric, *element)) {
      return 1;
    }
  }
  return 0;
}

bool IntWriterV2::writeTracedElement(const pwr::Metric& metric, const pwr::DataElement& element) {
  static constexpr TracedForm kForm{warnWithTag, false};
  TableInfo* table = tracedTable(metric, element);
  if (table == nullptr) {
    return false;
  }
  // The descriptor that the value itself is, which is not the element's.
  const pwr::DataDescriptor* valueDescriptor = descriptorIn(*element.getValue());
  if (!table->initialized && !setUpTracedColumns(*table, metric, element, valueDescriptor, kForm)) {
    return false;
  }
  return writeTracedRow(*table, metric.getData().timestamp, element, valueDescriptor, kForm);
}

IntWriterV2::TableInfo* IntWriterV2::tracedTable(const pwr::Metric& metric,
                                                 const pwr::DataElement& element) {
  const pwr::EntityHandle& entity = *element.getEntity();
  const std::uint64_t key = cellKey(entity.getId(), idOf(element.getDescriptor()));
  TableInfo* table = findTable(metric.metricId, key);
  if (table == nullptr &&
      getStore(entityTableTitle(metric, entity), metric.metricId, key, kNoValue) != nullptr) {
    table = findTable(metric.metricId, key);
  }
  return table;
}

bool IntWriterV2::setUpTracedColumns(TableInfo& table, const pwr::Metric& metric,
                                     const pwr::DataElement& element,
                                     const pwr::DataDescriptor* valueDescriptor,
                                     const TracedForm& form) const {
  BackingStoreWrapper& store = *table.store;
  TracedDataColumnIndices& columns = table.traced;
  columns.sampleColumn = store.addColumn("Sample #");
  columns.timeColumn = store.addColumn(doTimelineTsc ? "Timestamp" : "Continuous Time (ms)");
  if (form.hasEntityColumn) {
    columns.entityColumn = store.addColumn(nameOrEmpty(metric.entityTitleHandle));
  }
  if (element.getDescriptor() != nullptr) {
    columns.descriptorColumn = store.addColumn(nameOrEmpty(metric.descriptorTitleHandle));
  }
  columns.valueColumn = store.addColumn(nameOrEmpty(metric.valueHandle));
  if (const auto* expected =
          dynamic_cast<const pwr::ExpectedAttributeManager*>(metric.valueHandle)) {
    for (const pwr::Attribute* attribute : *expected) {
      addAttributeColumn(store, columns.attributeColumns, attribute);
    }
  }
  if (valueDescriptor != nullptr) {
    for (const auto& [attribute, value] : *valueDescriptor) {
      addAttributeColumn(store, columns.attributeColumns, attribute);
    }
  }
  if (!addInfoColumns(table, element.getAdditionalInfo(), form.warn)) {
    // The table is set up anew by its next element, and then has its first columns twice.
    return false;
  }
  columns.durationColumn = store.addColumn("Duration (ms)");
  table.initialized = true;
  table.sampleCount = 0;
  return true;
}

bool IntWriterV2::addInfoColumns(TableInfo& table, const pwr::DynamicAttributeValueManager* info,
                                 Warn warn) {
  if (info == nullptr) {
    return true;
  }
  for (const auto& [id, value] : *info) {
    const pwr::DataHandle* attribute = nullptr;
    if (pwr::DataHandle::get(id, attribute) != 0) {
      warn("WARNING: Failed to process info attribute\n");
      return false;
    }
    addAttributeColumn(*table.store, table.traced.attributeColumns, attribute);
  }
  return true;
}

bool IntWriterV2::writeTracedRow(TableInfo& table, std::uint64_t timestamp,
                                 const pwr::DataElement& element,
                                 const pwr::DataDescriptor* valueDescriptor,
                                 const TracedForm& form) {
  BackingStoreWrapper& store = *table.store;
  const TracedDataColumnIndices& columns = table.traced;
  pushSampleNumber(table, columns.sampleColumn);
  pushTime(table, columns.timeColumn, timestamp, TimeConversion::ToMilliseconds);
  if (form.hasEntityColumn) {
    store.pushCell(element.getEntity()->getQualifiedName(), columns.entityColumn);
  }
  if (element.getDescriptor() != nullptr) {
    store.pushCell(element.getDescriptor()->getName(), columns.descriptorColumn);
  }
  pushFormatted(table, columns.valueColumn, *element.getValue());
  if (valueDescriptor != nullptr) {
    pushAttributes(table, columns.attributeColumns, *valueDescriptor);
  }
  const pwr::DynamicAttributeValueManager* info = element.getAdditionalInfo();
  if (info != nullptr && !pushAdditionalInfo(table, *info, form.warn)) {
    return false;
  }
  store.pushCell(tickText(element.getDuration(), TimeConversion::ToMilliseconds),
                 columns.durationColumn);
  store.rowComplete();
  return true;
}

bool IntWriterV2::pushAdditionalInfo(TableInfo& table,
                                     const pwr::DynamicAttributeValueManager& info, Warn warn) {
  for (const auto& [id, value] : info) {
    const pwr::DataHandle* attribute = nullptr;
    if (pwr::DataHandle::get(id, attribute) != 0) {
      warn("WARNING: Failed to process dynamic attribute\n");
      return false;
    }
    const pwr::DataHandle* handle = nullptr;
    if (value.toHandle(handle) != 0) {
      return false;
    }
    if (handle == nullptr) {
      warn("WARNING: Failed to get handle for dynamic attribute\n");
      return false;
    }
    const auto* pair = dynamic_cast<const pwr::NameValuePair*>(handle);
    if (pair == nullptr) {
      // Users search their logs for this text, so its missing line end stays.
      warn("WARNING: Failed to retrieve name for dynamic attribute");
      return false;
    }
    table.store->pushCell(pair->getName(),
                          attributeColumn(table.traced.attributeColumns, attribute->getId()));
  }
  return true;
}
