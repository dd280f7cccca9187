// The writer of over-time tables in the PHM form: a table per metric, a file per group of metrics.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/data.h"
#include "writers/textwriter_plugin/int_writer.h"

/// Writes the samples that `IntWriterV2` takes, laid out otherwise. A sampled metric has one table
/// per view with the entities side by side; a traced one has a table per entity and descriptor, and
/// its values must be descriptors. Units stand in a second line of the title:
///
///     Core Residency : Residency Percentage
///     Units: (%)
///     Sample #, Continuous Time (usec), Duration (ms), CPU0 C1, CPU0 C6, CPU1 C1, CPU1 C6
///            1,              100000.00,        100.00,    5.00,   90.00,    7.50,   80.00
///
/// Each group of metrics has a file `<base>_<group>_phm.csv`, metrics without a group share
/// `<base>_phm.csv`, and `<base>_meta_phm.csv` tells what the columns of each metric are. All files
/// begin with the texts of the collection and are made in `fini`. Groups whose names differ in case
/// or by a leading "pmt-" share a path: the group opened last empties the file.
///
/// Warnings of this class show at verbosity 2, those of the base and of the tables with the tag
/// too. One thread at a time.
class PhmTextWriter final : public IntWriterV2 {
 public:
  PhmTextWriter();
  ~PhmTextWriter() override;

  /// Keeps the name; no file is made yet. Returns 0.
  int init(const std::string& base, bool continuous) override;

  /// Writes all files. Returns 1, after a message, when one could not be made, which leaves the
  /// tables from there on unwritten, or when a table's file did not take all bytes. A second call
  /// writes the same again.
  int fini() override;

  using IntWriterV2::writeMessage;
  /// Keeps the text for the head of all files. Returns 0.
  int writeMessage(const pwr::TextMessage& message) override;

  /// Adds a row to the metric's table number `tableIndex`; without elements the row is empty, with
  /// a timestamp of 0 it has neither number nor time. Returns 1, after a warning, at the first
  /// value that cannot be shown; its row then waits as in the base. Throws what the byte store
  /// throws when a new table cannot be made.
  int writeSampledGeneric(const pwr::Metric& metric, unsigned long tableIndex,
                          Calculations calculation, const pwr::Quantity* quantity,
                          const std::string& titleSuffix, const std::string& defaultValue) override;

  /// Adds a row per element. Returns 1 and throws as `writeSampledGeneric` does; a value that is
  /// not a descriptor is such a failure.
  int writeTracedMetric(const pwr::Metric& metric) override;

  /// Writes the metadata file. Returns 1, after a warning, when it cannot be made.
  int flushMetaData();
  /// `title` between two lines of dashes of its length.
  std::string getTitleString(const std::string& title) const;
  /// Keeps what the columns of a metric are, if its name is new: its metadata and the descriptors
  /// of its first entity.
  void processMetaData(const pwr::Metric& metric);

  /// As in the base, but the family of tables moves to the group `groupName` with every call, and a
  /// table that cannot be made throws what the byte store throws.
  BackingStoreWrapper* getStore(const std::string& title, unsigned long outerKey,
                                const std::string& groupName, unsigned long innerKey,
                                const std::string& defaultValue);

 private:
  void setUpColumns(TableInfo& table, const pwr::Metric& metric) const;
  /// Adds the columns of the metric's pairs with `entity` that the table does not have yet.
  static void addDeclaredColumns(TableInfo& table, const pwr::Metric& metric,
                                 const pwr::EntityHandle& entity);
  static std::uint16_t columnOf(TableInfo& table, Places& places, const pwr::DataElement& element,
                                std::size_t index);
  bool writeTracedElement(const pwr::Metric& metric, const pwr::DataElement& element);
  /// The table of the metric's family; `makeTitle` is asked for the title of a new one.
  template <typename MakeTitle>
  TableInfo& openTable(const pwr::Metric& metric, std::uint64_t innerKey,
                       const std::string& defaultValue, MakeTitle makeTitle);

  std::string basePath;
  /// The texts, each behind two line ends.
  std::string headerText;
  /// By the outer keys of the tables.
  std::map<std::uint64_t, std::string> metricGroups;
  /// By the names of metrics.
  std::map<std::string, std::vector<pwr::Data>> metricMetadata;
};
