// The writer of raw text: every sample of every metric as a row of a table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "writers/textwriter_plugin/backing_store_wrapper.h"
#include "writers/textwriter_plugin/result_file.h"
#include "writers/writer_plugins.h"

namespace pwr {
class DataElement;
}

/// Writes `<output name>.txt`: texts as they come, and at the end one table per metric id with a
/// row per sample, in the order of their arrival. The order of the tables has no meaning.
///
///     CPU Temperature
///     Timestamp, CPU0 (C), CPU1 (C)
///           100,       42,      N/A
///           200,       43,       41
///
/// A table has a column per entity, or per entity and descriptor: those that the metric's first
/// sample declares, then others as values for them come. It is titled as its first sample was,
/// though several metrics may share an id. Tables outlive `fini`: a second pass of the same object
/// goes on with them.
///
/// Rows wait in a byte store per table, so memory does not grow with their number. One thread at a
/// time.
class RawWriterV2 final : public WriterPlugin {
 public:
  RawWriterV2();
  ~RawWriterV2() override;

  /// Opens the file. `continuous` makes no difference. Returns 1, after warnings, when it cannot be
  /// opened.
  int init(const std::string& name, bool continuous) override;

  /// Writes the tables and closes the file. Returns 1, after a warning, when there is no open file,
  /// as in a second call, and otherwise 0: a file that takes no more bytes is an error in the log.
  int fini() override;

  using WriterPlugin::writeMessage;
  /// Writes the text and an empty line. Without an open file the text is dropped. Returns 0.
  int writeMessage(const pwr::TextMessage& message) override;
  /// Adds a row to the metric's table. Returns 1 when there can be no table.
  int writeMessage(const pwr::Metric& metric) override;

  /// The table of `metricId`, made with the title `name` when there is none. Null, after a warning,
  /// when it cannot be made. The writer owns it.
  BackingStoreWrapper* getStore(const std::string& name, std::uint32_t metricId);

 private:
  /// From `cellKey`.
  using CellKey = std::uint64_t;

  struct KeyedColumn {
    CellKey key;
    std::uint16_t column;
  };

  struct Table {
    std::unique_ptr<BackingStoreWrapper> store;
    std::unordered_map<CellKey, std::uint16_t> columnIndex;
    /// The columns of the last sample's elements, in their order: the next sample's are most often
    /// the same.
    std::vector<KeyedColumn> lastRow;
    /// The first sample's declared columns are there.
    bool isSetUp = false;
  };

  static void setUpColumns(Table& table, const pwr::Metric& metric);
  /// The column of the sample's element number `position`; a new one when its key is new.
  static std::uint16_t columnOf(Table& table, const pwr::Metric& metric,
                                const pwr::DataElement& element, std::size_t position);
  static std::uint16_t findOrAddColumn(Table& table, const pwr::Metric& metric,
                                       const pwr::DataElement& element, CellKey key);
  /// Null when the table cannot be made.
  Table* findOrMakeTable(const std::string& name, std::uint32_t metricId);

  std::string m_outputPath;
  /// Null before `init` and after `fini`.
  ResultFile m_outputFile;
  /// A hash map from the metric id: the order of the tables in the file is its order.
  std::unordered_map<std::uint32_t, Table> m_stores;
  /// The text of one cell; a member to keep its memory.
  std::string m_cellText;
};
