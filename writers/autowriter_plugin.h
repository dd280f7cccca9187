// The writer of the automation summary: a whole run in one line of a growing CSV file.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "writers/writer_plugins.h"

/// Appends one line per run to `Automation_Summary.csv`, and a header line in front of it whenever
/// the columns differ from the last header in the file. Each value cell of each table of the run
/// becomes a column, titled by the table's title, the row's key cells and the column's title:
///
///     Output_Name,Collection_Time,Duration (sec),CPU Idle Summary_State_C6_Residency,
///     night-run,Tue May 5 2026,12.5,93.1,
///
/// Every entry has a comma behind it, and nothing is escaped. The file is touched by `fini` only.
/// Columns are kept from one `init` to the next: an object serves one run. One thread at a time.
class AutoWriter final : public WriterPlugin {
 public:
  AutoWriter();
  ~AutoWriter() override;

  /// Adds the column "Output_Name". `continuous` makes no difference. Returns 0.
  int init(const std::string& name, bool continuous) override;

  /// Appends to the file, which is made if need be. It stands in the directory of the output name,
  /// where only a backslash counts as the end of a directory; without one, in the current
  /// directory. Returns 1, after an error text, when the file cannot be opened or written.
  int fini() override;

  using WriterPlugin::writeMessage;
  /// A title table sets the columns that the value tables after it are read by. Returns 1 and takes
  /// nothing from a value table that has another number of columns.
  int writeMessage(const pwr::TableMessage& table) override;
  /// Adds the start and the duration of the collection. Returns 1 when there is no metadata.
  int writeMessage(const pwr::SystemMessage& message) override;
  /// Takes the table about the metric, if there is one, as any other table.
  int writeMessage(const pwr::MetricContainerInfoMessage& message) override;

  /// As in the base, but the title of an entity's column also has the entity's field name: in front
  /// of it with a "_", unless it is contained already.
  void getColumnTitles(const pwr::TableMessage& table,
                       std::deque<std::string>& titles) const override;

 private:
  int writeMessage_i(const pwr::TableMessage& table);
  void addColumn(std::string title, std::string value);
  /// REQUIRES: as many `cells` as `m_columnTitles`.
  void addRow(const std::string& tableTitle, const std::deque<std::string>& cells);

  std::string m_outputName;
  std::vector<std::string> m_titles;
  /// As long as `m_titles`.
  std::vector<std::string> m_values;
  /// The titles of the table being read.
  std::deque<std::string> m_columnTitles;
};
