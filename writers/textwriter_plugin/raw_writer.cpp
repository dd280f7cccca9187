#include "writers/textwriter_plugin/raw_writer.h"

#include <cstdio>
#include <utility>

#include "client/src/common/pw_log.h"
#include "host/data.h"
#include "host/handles.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "writers/capability.h"
#include "writers/textwriter_plugin/time_line_columns.h"

namespace {

constexpr const char* kGuid = "2e820d9e-2f9e-4cdb-a81d-056273a7a391";
constexpr const char* kSuffix = ".txt";
constexpr const char* kMissing = "N/A";
constexpr std::uint16_t kTimestampColumn = 0;

std::string columnTitle(const pwr::EntityHandle& entity, const pwr::DataDescriptor* descriptor,
                        const pwr::Quantity* quantity) {
  std::string title = entity.getQualifiedName();
  if (descriptor != nullptr) {
    title += ' ' + descriptor->getName();
  }
  return title + bracketedUnits(quantity);
}

}  // namespace

RawWriterV2::RawWriterV2() : WriterPlugin(kGuid) {
  declareCapability(*this, {.option = "raw",
                            .description = "Print raw text data to *.txt file",
                            .suffix = kSuffix,
                            .flags = pwr::PluginCapability::kFlagHostInterpreted});
}

RawWriterV2::~RawWriterV2() = default;

int RawWriterV2::init(const std::string& name, bool /*continuous*/) {
  m_outputPath = name + kSuffix;
  m_outputFile = createResultFile(m_outputPath);
  if (m_outputFile == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag, "WARNING: Could not create %s\n",
                          m_outputPath.c_str());
    return 1;
  }
  return 0;
}

int RawWriterV2::fini() {
  if (m_outputFile == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Output file %s does not exist\n", m_outputPath.c_str());
    return 1;
  }
  for (auto& [metricId, table] : m_stores) {
    table.store->flush(m_outputFile.get(), ",", false);  // What went wrong is in the log.
  }
  closeResultFile(m_outputFile, m_outputPath);
  return 0;
}

int RawWriterV2::writeMessage(const pwr::TextMessage& message) {
  if (m_outputFile != nullptr) {
    std::fprintf(m_outputFile.get(), "%s\n\n", message.m_message.c_str());
  }
  return 0;
}

int RawWriterV2::writeMessage(const pwr::Metric& metric) {
  Table* table = findOrMakeTable(metric.name, metric.metricId);
  if (table == nullptr) {
    return 1;
  }
  if (!table->isSetUp) {
    setUpColumns(*table, metric);
  }
  const pwr::SampleData& sample = metric.getData();
  pwr::Data(static_cast<unsigned long>(sample.timestamp)).toFormattedString(m_cellText);
  table->store->pushCell(m_cellText, kTimestampColumn);
  for (std::size_t i = 0; i < sample.elements.size(); ++i) {
    const pwr::DataElement& element = *sample.elements[i];
    const std::uint16_t column = columnOf(*table, metric, element, i);
    element.getValue()->toFormattedString(m_cellText);
    table->store->pushCell(m_cellText, column);
  }
  table->store->rowComplete();
  return 0;
}

BackingStoreWrapper* RawWriterV2::getStore(const std::string& name, std::uint32_t metricId) {
  const Table* table = findOrMakeTable(name, metricId);
  return table == nullptr ? nullptr : table->store.get();
}

RawWriterV2::Table* RawWriterV2::findOrMakeTable(const std::string& name, std::uint32_t metricId) {
  const auto found = m_stores.find(metricId);
  if (found != m_stores.end()) {
    return &found->second;
  }
  try {
    Table table;
    table.store = std::make_unique<BackingStoreWrapper>(name, kMissing);
    return &m_stores.emplace(metricId, std::move(table)).first->second;
  } catch (...) {  // The byte store throws a character pointer, which no narrower clause names.
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Failed to initialize buffer.\n");
    return nullptr;
  }
}

void RawWriterV2::setUpColumns(Table& table, const pwr::Metric& metric) {
  table.store->addColumn("Timestamp");
  for (const auto& [entity, descriptor] : metric.entities) {
    if (entity == nullptr) {
      continue;  // Every value belongs to an entity: none could ever stand in such a column.
    }
    const CellKey key = cellKey(entity->getId(), idOf(descriptor));
    if (!table.columnIndex.contains(key)) {
      const std::string title = columnTitle(*entity, descriptor, metric.quantity);
      table.columnIndex.emplace(key, table.store->addColumn(title));
    }
  }
  table.isSetUp = true;
}

std::uint16_t RawWriterV2::columnOf(Table& table, const pwr::Metric& metric,
                                    const pwr::DataElement& element, std::size_t position) {
  const CellKey key = cellKey(element.getEntity()->getId(), idOf(element.getDescriptor()));
  if (position < table.lastRow.size() && table.lastRow[position].key == key) {
    return table.lastRow[position].column;
  }
  const KeyedColumn found{key, findOrAddColumn(table, metric, element, key)};
  if (position < table.lastRow.size()) {
    table.lastRow[position] = found;
  } else {
    table.lastRow.push_back(found);
  }
  return found.column;
}

std::uint16_t RawWriterV2::findOrAddColumn(Table& table, const pwr::Metric& metric,
                                           const pwr::DataElement& element, CellKey key) {
  const auto found = table.columnIndex.find(key);
  if (found != table.columnIndex.end()) {
    return found->second;
  }
  // A plain copy of the entity: late columns bear the entity's own qualified name, also where its
  // class has another.
  const pwr::EntityHandle entity(*element.getEntity());
  const std::uint16_t column =
      table.store->addColumn(columnTitle(entity, element.getDescriptor(), metric.quantity));
  table.columnIndex.emplace(key, column);
  return column;
}
