// The engine of the text reports: tables come in cell by cell and go out in the report's order.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

#include "host/text_notes.h"
#include "writers/textwriter_plugin/result_file.h"
#include "writers/textwriter_plugin/temp_file_manager.h"

namespace pwr {
class DataHandle;
class EntityHandle;
class TableMessage;
class WriterInterfaceConfigFileParser;
}  // namespace pwr

/// Opens the result file, keeps one `TempFileManager` per table, cuts tables into cells, and in
/// `fini` decides the order of the tables and joins them into the result. Nothing of a table stays
/// in memory but the widths of its columns. Not synchronised.
class TextWriterImpl {
 public:
  using MetricOrder = std::list<std::uint32_t>;
  using FeatureMetrics =
      std::unordered_map<std::string, std::unordered_map<std::string, std::uint32_t>>;

  // The keys of the text blocks among the tables.
  static constexpr std::uint64_t kHeaderTextKey = ~std::uint64_t{0};
  static constexpr std::uint64_t kTextKey = ~std::uint64_t{0} - 1;

  /// A table's key: its metric's id in the high half, its own in the low half. Ids are unique
  /// within their metric only.
  static std::uint64_t combineIds(std::uint32_t metricId, std::uint32_t tableId);
  static std::uint32_t extractMetricIdFromCombinedId(std::uint64_t key);
  static std::uint32_t extractTableIdFromCombinedId(std::uint64_t key);

  /// The columns of `table`, with `startColumn` more in front. Fields count once per entity, or
  /// once when there are no entities. A number beyond 32 bits ends the process.
  static std::int32_t countColumns(const pwr::TableMessage& table, std::uint32_t startColumn);
  static std::int32_t countColumns(std::uint32_t shared, std::uint32_t fields,
                                   std::uint32_t entities, std::uint32_t startColumn);

  /// `delimiter` stands between cells, `suffix` is added to the output name.
  TextWriterImpl(std::string delimiter, std::string suffix);
  TextWriterImpl(const TextWriterImpl&) = delete;
  TextWriterImpl& operator=(const TextWriterImpl&) = delete;
  /// Closes the result file, and unlinks all temp files.
  ~TextWriterImpl();

  /// Forgets everything and makes the result file. Returns 0, or 1 when it cannot be made.
  int init(const std::string& name);

  /// Assembles the report and closes it. Returns 1, with a warning, without a result file or
  /// without `m_metricOrder`; otherwise 0, also when a table could not be written as a whole. Temp
  /// files stay until the next `init`. REQUIRES: `m_featureMetrics` is set where `m_metricOrder`
  /// is.
  int fini();

  /// The manager of `key`, made with `columnCount` columns when `isNew` comes back true. It may be
  /// without an open file.
  TempFileManager& getTempFile(std::uint64_t key, bool& isNew, std::int32_t columnCount);
  /// The same for a table about a metric.
  TempFileManager& getTempMetricInfoFile(const pwr::TableMessage& table, bool& isNew,
                                         std::uint32_t startColumn);

  // The parts of a table; each returns 0, but `handleData` 1 when a cell could not be read. Where
  // there is no temp file they store nothing.
  int handleTitle(const pwr::TableMessage& table, TempFileManager& manager);
  /// One row, if the table has field headers.
  int handleFieldHeaders(const pwr::TableMessage& table, TempFileManager& manager,
                         std::uint32_t startColumn);
  /// The row of names, and the row of rules below it.
  int handleFieldMetadata(const pwr::TableMessage& table, TempFileManager& manager,
                          std::uint32_t startColumn);
  int handlePerTableTextNotes(const pwr::TableMessage& table);
  /// One row of cells. A non-null `entity` sends them to that entity's own temp file.
  int handleData(const pwr::TableMessage& table, const pwr::EntityHandle* entity,
                 TempFileManager& manager, std::uint32_t startColumn);

  /// `count` hyphens.
  static std::string getDelimiter(std::size_t count);

  const std::string m_delimiter;
  const std::string m_suffix;
  std::string m_outputPath;
  std::map<std::uint64_t, std::unique_ptr<TempFileManager>> m_tables;
  /// Tables that came with a `pwr::MetricContainerInfoMessage`.
  std::map<std::uint64_t, std::unique_ptr<TempFileManager>> m_metricInfoTables;
  /// Open between `init` and `fini`.
  ResultFile m_outputFile;
  // Not used by the report.
  float m_timestampFrequency = 1.0F;
  bool m_doTimelineTsc;
  /// By the id of the table alone.
  std::unordered_map<std::uint32_t, const pwr::TextNotes*> m_tableNotes;
  // By the id of the metric.
  std::unordered_map<std::uint32_t, const pwr::TextNotes*> m_containerNotes;
  std::unordered_map<std::uint32_t, std::string> m_containerNames;
  /// The metrics of the report. Borrowed; `fini` puts it into the configured order.
  MetricOrder* m_metricOrder = nullptr;
  /// Metric ids by feature and metric name. Borrowed; `fini` may add entries.
  FeatureMetrics* m_featureMetrics = nullptr;
  const pwr::WriterInterfaceConfigFileParser* m_configParser;

 private:
  using Managers = std::map<std::uint64_t, std::unique_ptr<TempFileManager>>;

  static TempFileManager& findOrMake_i(Managers& managers, std::uint64_t key, bool& isNew,
                                       std::int32_t columnCount);

  void resetCollectionState_i();
  void setMetricOrder_i();
  void processTextBlock_i(std::uint64_t key);
  void processPerMetricTables(std::uint32_t metric, std::uint32_t previous);
  void processMetricInfoTables_i(std::uint32_t metric);
  void processTables_i(std::uint32_t metric);
  void closeOutput_i();
};
