#include "writers/textwriter_plugin/text_writer_impl.h"

#include <algorithm>
#include <cstdio>
#include <deque>
#include <limits>

#include "client/src/common/deliberate_stop.h"
#include "client/src/common/pw_log.h"
#include "client/src/common/text_parsing.h"
#include "host/configuration.h"
#include "host/handles.h"
#include "host/table.h"
#include "writers/textwriter_plugin/report_text.h"

namespace {

/// Hands the cells of one row to a manager, column after column.
class Row {
 public:
  Row(TempFileManager& manager, const pwr::EntityHandle* entity, std::uint32_t startColumn)
      : m_manager(manager), m_entity(entity), m_column(startColumn) {}

  // A manager without a file takes no cells; that was said when the file could not be made.
  void push(std::string_view text) { m_manager.pushString(m_entity, text, m_column++); }

 private:
  TempFileManager& m_manager;
  const pwr::EntityHandle* m_entity;
  std::size_t m_column;
};

template <typename Action>
void forEachShared(const pwr::TableMessage& table, Action&& action) {
  const auto end = table.sharedHandlesEnd();
  for (auto handle = table.sharedHandlesBegin(); handle != end; ++handle) {
    action(*handle);
  }
}

template <typename Action>
void forEachField(const pwr::TableMessage& table, Action&& action) {
  const auto end = table.fieldHandlesEnd();
  for (auto handle = table.fieldHandlesBegin(); handle != end; ++handle) {
    action(*handle);
  }
}

template <typename Action>
void forEachEntity(const pwr::TableMessage& table, Action&& action) {
  const auto end = table.entitiesEnd();
  for (auto entity = table.entitiesBegin(); entity != end; ++entity) {
    action(entity->second);
  }
}

std::string headerOf(const pwr::DataHandle* handle) {
  return handle != nullptr ? handle->getHeader() : std::string();
}

std::string fieldNameOf(const pwr::DataHandle* handle) {
  return handle != nullptr ? handle->getFieldName() : std::string();
}

std::string qualifiedNameOf(const pwr::EntityHandle* entity) {
  return entity != nullptr ? entity->getQualifiedName() : std::string();
}

// The names of the columns, in the order of the cells of a row.
std::deque<std::string> columnNames(const pwr::TableMessage& table) {
  std::deque<std::string> names;
  forEachShared(table,
                [&](const pwr::DataHandle* handle) { names.push_back(fieldNameOf(handle)); });
  forEachField(table, [&](const pwr::DataHandle* field) {
    if (table.getEntityCount() == 0) {
      names.push_back(fieldNameOf(field));
    }
    forEachEntity(table, [&](const pwr::EntityHandle* entity) {
      names.push_back(qualifiedNameOf(entity) + " " + fieldNameOf(field));
    });
  });
  return names;
}

bool isOverflown(std::uint64_t count) {
  return count > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
}

}  // namespace

std::uint64_t TextWriterImpl::combineIds(std::uint32_t metricId, std::uint32_t tableId) {
  return std::uint64_t{metricId} << 32 | tableId;
}

std::uint32_t TextWriterImpl::extractMetricIdFromCombinedId(std::uint64_t key) {
  return static_cast<std::uint32_t>(key >> 32);
}

std::uint32_t TextWriterImpl::extractTableIdFromCombinedId(std::uint64_t key) {
  return static_cast<std::uint32_t>(key);
}

std::int32_t TextWriterImpl::countColumns(const pwr::TableMessage& table,
                                          std::uint32_t startColumn) {
  return countColumns(table.getSharedHandleCount(), table.getHandleCount(), table.getEntityCount(),
                      startColumn);
}

std::int32_t TextWriterImpl::countColumns(std::uint32_t shared, std::uint32_t fields,
                                          std::uint32_t entities, std::uint32_t startColumn) {
  // Three numbers of 32 bits cannot overflow 64.
  const std::uint64_t fieldColumns = std::uint64_t{fields} * std::max(entities, 1U);
  if (isOverflown(fieldColumns) || isOverflown(fieldColumns + shared + startColumn)) {
    pwr::stopDeliberately("writers/textwriter_plugin/text_writer_impl",
                          "the number of columns fits 32 bits");
  }
  return static_cast<std::int32_t>(fieldColumns + shared + startColumn);
}

TextWriterImpl::TextWriterImpl(std::string delimiter, std::string suffix)
    : m_delimiter(std::move(delimiter)),
      m_suffix(std::move(suffix)),
      m_doTimelineTsc(pwr::check_env("PW_DO_TIMELINE_TSC")),
      m_configParser(pwr::WriterInterfaceConfigFileParser::instance()) {}

TextWriterImpl::~TextWriterImpl() = default;

int TextWriterImpl::init(const std::string& name) {
  resetCollectionState_i();
  m_outputFile.reset();
  m_outputPath = name + m_suffix;
  m_outputFile = createResultFile(m_outputPath);
  if (m_outputFile == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag, "WARNING: Could not create %s\n",
                          m_outputPath.c_str());
    return 1;
  }
  return 0;
}

void TextWriterImpl::resetCollectionState_i() {
  m_tables.clear();
  m_metricInfoTables.clear();
  m_tableNotes.clear();
  m_containerNotes.clear();
  m_containerNames.clear();
}

TempFileManager& TextWriterImpl::getTempFile(std::uint64_t key, bool& isNew,
                                             std::int32_t columnCount) {
  return findOrMake_i(m_tables, key, isNew, columnCount);
}

TempFileManager& TextWriterImpl::getTempMetricInfoFile(const pwr::TableMessage& table, bool& isNew,
                                                       std::uint32_t startColumn) {
  return findOrMake_i(m_metricInfoTables, combineIds(table.m_metricId, table.m_id), isNew,
                      countColumns(table, startColumn));
}

TempFileManager& TextWriterImpl::findOrMake_i(Managers& managers, std::uint64_t key, bool& isNew,
                                              std::int32_t columnCount) {
  std::unique_ptr<TempFileManager>& manager = managers[key];
  isNew = manager == nullptr;
  if (isNew) {
    manager = std::make_unique<TempFileManager>(columnCount);
  }
  return *manager;
}

int TextWriterImpl::handleTitle(const pwr::TableMessage& table, TempFileManager& manager) {
  manager.m_title = table.getTitle();
  std::string units;
  if (pwr::TableMessage::quantityToUnits(table.getQuantity(), units, " (units = ", ")")) {
    manager.m_title += units;
  }
  manager.m_rowCounter = 0;
  manager.m_cellCounter = 0;
  return 0;
}

int TextWriterImpl::handleFieldHeaders(const pwr::TableMessage& table, TempFileManager& manager,
                                       std::uint32_t startColumn) {
  if (!table.hasFieldHeaders()) {
    return 0;
  }
  Row row(manager, nullptr, 0);
  for (std::uint32_t column = 0; column < startColumn; ++column) {
    row.push("");
  }
  const auto pushHeader = [&](const pwr::DataHandle* handle) { row.push(headerOf(handle)); };
  forEachShared(table, pushHeader);
  if (table.getEntityCount() == 0) {
    forEachField(table, pushHeader);
  }
  // Entity by entity, while names and cells stand field by field: with several of both, a header
  // does not stand above its own column. Readers of the report rely on this layout.
  forEachEntity(table, [&](const pwr::EntityHandle*) { forEachField(table, pushHeader); });
  return 0;
}

int TextWriterImpl::handleFieldMetadata(const pwr::TableMessage& table, TempFileManager& manager,
                                        std::uint32_t startColumn) {
  const std::deque<std::string> names = columnNames(table);
  Row nameRow(manager, nullptr, startColumn);
  for (const std::string& name : names) {
    nameRow.push(name);
  }
  Row ruleRow(manager, nullptr, startColumn);
  for (const std::string& name : names) {
    ruleRow.push(getDelimiter(name.size()));
  }
  return 0;
}

int TextWriterImpl::handlePerTableTextNotes(const pwr::TableMessage& table) {
  m_tableNotes[table.m_id] = table.getTextNotes();
  return 0;
}

int TextWriterImpl::handleData(const pwr::TableMessage& table, const pwr::EntityHandle* entity,
                               TempFileManager& manager, std::uint32_t startColumn) {
  int result = 0;
  Row row(manager, entity, startColumn);
  std::string text;
  bool present = false;
  const auto pushCell = [&](int status) {
    if (status != 0) {
      row.push("Invalid");
      result = 1;
    } else {
      row.push(present ? std::string_view(text) : std::string_view());
    }
    present = false;
  };
  const auto pushPlain = [&](const pwr::DataHandle* handle) {
    pushCell(table.getFieldAsString(handle, text, present));
  };
  forEachShared(table, pushPlain);
  if (table.getEntityCount() == 0) {
    forEachField(table, pushPlain);
  }
  forEachField(table, [&](const pwr::DataHandle* field) {
    forEachEntity(table, [&](const pwr::EntityHandle* column) {
      pushCell(table.getFieldAsString(column, field, text, present));
    });
  });
  return result;
}

std::string TextWriterImpl::getDelimiter(std::size_t count) { return std::string(count, '-'); }

int TextWriterImpl::fini() {
  if (m_outputFile == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Output file does not exist!\n");
    return 1;
  }
  if (m_metricOrder == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Metric ordering information does not exist. Cannot proceed!\n");
    return 1;
  }
  setMetricOrder_i();
  processTextBlock_i(kHeaderTextKey);
  processTextBlock_i(kTextKey);
  auto previous = std::numeric_limits<std::uint32_t>::max();
  for (const std::uint32_t metric : *m_metricOrder) {
    processPerMetricTables(metric, previous);
    previous = metric;
  }
  closeOutput_i();
  return 0;
}

// Configured metrics come first, in the configured order; the others keep the order of their first
// appearance.
void TextWriterImpl::setMetricOrder_i() {
  std::deque<std::string> features;
  if (!m_configParser->getFeatureOrder(features) &&
      !m_configParser->getAllFeaturePrefixes(features)) {
    pwr::logError(
        "ERROR: No entries present for metrics in the output config file. Shouldn't happen!\n");
  }
  MetricOrder configured;
  for (const std::string& feature : features) {
    std::deque<std::string> metrics;
    if (!m_configParser->getMetricOrderForFeature(metrics, feature)) {
      continue;
    }
    for (const std::string& metric : metrics) {
      // A pair that is not known stands for metric id 0, which is moved to the front too.
      const std::uint32_t id = (*m_featureMetrics)[feature][metric];
      const auto found = std::find(m_metricOrder->begin(), m_metricOrder->end(), id);
      if (found != m_metricOrder->end()) {
        configured.splice(configured.end(), *m_metricOrder, found);
      }
    }
  }
  m_metricOrder->splice(m_metricOrder->begin(), configured);
}

void TextWriterImpl::processTextBlock_i(std::uint64_t key) {
  const auto found = m_tables.find(key);
  if (found != m_tables.end()) {
    found->second->flush(m_outputFile.get(), m_delimiter);
  }
}

void TextWriterImpl::processPerMetricTables(std::uint32_t metric, std::uint32_t previous) {
  const auto name = m_containerNames.find(metric);
  const auto found = m_containerNotes.find(metric);
  const NotesEntry notes(metric, found != m_containerNotes.end() ? found->second : nullptr);
  // Remarks before the tables, and tables about the metric, stand with a heading only; the remarks
  // behind the tables stand in any case.
  if (metric != previous && name != m_containerNames.end()) {
    processMetricContainerHeader(m_outputFile.get(), name->second);
    processPreTableTextNotes(m_outputFile.get(), notes);
    processMetricInfoTables_i(metric);
  }
  processPreMetricTextNotes(m_outputFile.get(), notes);
  processTables_i(metric);
  processPostMetricTextNotes(m_outputFile.get(), notes);
  processPostTableTextNotes(m_outputFile.get(), notes);
}

void TextWriterImpl::processMetricInfoTables_i(std::uint32_t metric) {
  const auto end =
      m_metricInfoTables.upper_bound(combineIds(metric, std::numeric_limits<std::uint32_t>::max()));
  for (auto entry = m_metricInfoTables.lower_bound(combineIds(metric, 0)); entry != end; ++entry) {
    entry->second->flush(m_outputFile.get(), m_delimiter);
  }
}

void TextWriterImpl::processTables_i(std::uint32_t metric) {
  const auto end =
      m_tables.upper_bound(combineIds(metric, std::numeric_limits<std::uint32_t>::max()));
  for (auto entry = m_tables.lower_bound(combineIds(metric, 0)); entry != end; ++entry) {
    const std::uint32_t tableId = extractTableIdFromCombinedId(entry->first);
    const auto found = m_tableNotes.find(tableId);
    const NotesEntry notes(tableId, found != m_tableNotes.end() ? found->second : nullptr);
    processPreTableTextNotes(m_outputFile.get(), notes);
    entry->second->flush(m_outputFile.get(), m_delimiter);
    processPostTableTextNotes(m_outputFile.get(), notes);
  }
}

void TextWriterImpl::closeOutput_i() {
  std::FILE* file = m_outputFile.release();
  const bool flushed = std::fflush(file) == 0 && std::ferror(file) == 0;
  const bool closed = std::fclose(file) == 0;
  if (!flushed || !closed) {
    pwr::logError("ERROR: Could not write all of the results to %s\n", m_outputPath.c_str());
  }
}
