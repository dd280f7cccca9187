// The writer of over-time tables: what every metric was, sample by sample.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "writers/textwriter_plugin/backing_store_wrapper.h"
#include "writers/textwriter_plugin/result_file.h"
#include "writers/textwriter_plugin/time_line_columns.h"
#include "writers/writer_plugins.h"

namespace pwr {
class AttributeValueManager;
class Data;
class DataDescriptor;
class DataElement;
class DynamicAttributeValueManager;
class EntityHandle;
class Quantity;
}  // namespace pwr

/// Where the cells of a traced table stand. Columns that the table does not have are 0.
struct TracedDataColumnIndices {
  std::uint16_t sampleColumn = 0;
  std::uint16_t timeColumn = 0;
  /// In the PHM form only.
  std::uint16_t entityColumn = 0;
  /// In tables of elements with a descriptor only.
  std::uint16_t descriptorColumn = 0;
  std::uint16_t valueColumn = 0;
  std::uint16_t durationColumn = 0;
  AttributeColumns attributeColumns;
};

/// Writes `<base>_trace.csv`: texts as they come, and at the end one table per metric, entity and
/// view of its values. A sampled metric gives one row per message, a traced one a row per element.
///
///     Core Frequency - CPU0
///     Sample #, Continuous Time (usec), Duration (ms),  (MHz)
///            1,              100000.00,        100.00,   2400
///            2,              200000.00,        100.00,   1800
///
/// Times count from the start of the collection, which the system message brings: it must come
/// before the samples to make times meaningful. Divisions by zero show as inf and nan.
///
/// Rows wait in a byte store per table, so memory does not grow with their number. Tables outlive
/// `fini`: a second pass of the same object goes on with them. Warnings show at verbosity 2 or with
/// the tag of the text writers. One thread at a time.
class IntWriterV2 : public WriterPlugin {
 public:
  /// What the data cells of a sampled table show.
  enum class Calculations : std::uint32_t {
    NoCalculation = 0,        ///< the value
    InstantaneousRate = 1,    ///< the value per second of the sample's duration
    ResidencyPercentage = 2,  ///< the value's share of the sample's duration; both are ticks
    ResidencyTime = 3,        ///< the value, which is ticks, in microseconds
  };

  enum class TimeConversion : std::uint32_t { ToMilliseconds = 0, ToMicroseconds = 1 };

  /// Where the cells of a sampled table stand.
  struct SampledDataColumnIndices {
    std::uint16_t sampleColumn = 0;
    std::uint16_t timeColumn = 0;
    std::uint16_t durationColumn = 0;
    /// By the ids of entity and descriptor.
    std::unordered_map<std::uint64_t, std::uint16_t> dataColumns;
    AttributeColumns attributeColumns;
  };

  /// One table.
  struct TableInfo {
    std::unique_ptr<BackingStoreWrapper> store;
    /// What stands in the last row's "Sample #".
    std::uint64_t sampleCount = 0;
    /// The columns that are known in advance are there.
    bool initialized = false;
    SampledDataColumnIndices sampled;
    TracedDataColumnIndices traced;

    /// The last call that started a row here, and for which entity.
    std::uint64_t rowCall = 0;
    std::uint64_t rowEntity = 0;
  };

  IntWriterV2();
  ~IntWriterV2() override;

  /// Opens the file. `continuous` makes no difference. Returns 1, after warnings, when it cannot be
  /// made.
  int init(const std::string& base, bool continuous) override;

  /// Writes the tables in the order of their keys and closes the file. Returns 1, after a warning,
  /// when there is no open file, as in a second call, and otherwise 0: a file that takes no more
  /// bytes is an error in the log.
  int fini() override;

  using WriterPlugin::writeMessage;
  /// Writes the text as a line. Without an open file the text is dropped. Returns 0.
  int writeMessage(const pwr::TextMessage& message) override;
  /// Takes start and frequency of the clock. Returns 1 when there is no metadata and, after a
  /// warning, when the frequency is 0.
  int writeMessage(const pwr::SystemMessage& message) override;
  /// Adds the sample to the tables of its metric. Returns 1, after a warning, for a sample that was
  /// taken before the collection started; what else goes wrong shows in the log only.
  int writeMessage(const pwr::Metric& metric) override;
  /// Notes which views of a residency metric are wanted. Returns 0.
  int writeMessage(const pwr::MetricContainerInfoMessage& message) override;

  /// Adds the sample to the metric's tables number `tableIndex`. The first message decides their
  /// titles (`titleSuffix` stands behind names) and the text of cells without a value. `quantity`
  /// gives the units of column names; factors of rates come from the metric's own.
  ///
  /// Returns 1, after a warning, at the first value that cannot be shown. Cells of that message
  /// then wait in their tables, and stand in the next row where nothing replaces them.
  virtual int writeSampledGeneric(const pwr::Metric& metric, unsigned long tableIndex,
                                  Calculations calculation, const pwr::Quantity* quantity,
                                  const std::string& titleSuffix, const std::string& defaultValue);

  /// Adds a row per element of the sample. The first element of a table decides which columns it
  /// has. Returns 1, mostly after a warning, at the first element that cannot be shown; the cells
  /// that it got so far wait as in `writeSampledGeneric`.
  virtual int writeTracedMetric(const pwr::Metric& metric);

  /// The values as they are and, where the quantity has a rate form, as rates. Returns 0.
  int writeSampledDeltaMetric(const pwr::Metric& metric);
  /// The times and percentages, as far as they are wanted. Returns 0.
  int writeSampledResidencyMetric(const pwr::Metric& metric);

  /// Ticks as text: milliseconds with `durationPrecision` decimals, or microseconds with two.
  std::string convertTicksToTime(unsigned long ticks, TimeConversion conversion) const;

  /// The table of these keys, made with `title` and `defaultValue` when there is none. Null, after
  /// a warning, when it cannot be made. The writer owns it.
  BackingStoreWrapper* getStore(const std::string& title, unsigned long outerKey,
                                unsigned long innerKey, const std::string& defaultValue);

 protected:
  /// Tells the user of a failure.
  using Warn = void (*)(const char* text);

  /// In what the forms of traced tables differ.
  struct TracedForm {
    Warn warn;
    /// The entity's name has a column of its own.
    bool hasEntityColumn;
  };

  /// Where the value of an element went: in the next message the element in its place most often
  /// has the same ids. Tables never go away, so a place stays right for its ids.
  struct Place {
    std::uint64_t entityId;
    std::uint64_t descriptorId;
    TableInfo* table;
    std::uint16_t column;
  };

  /// The places of a message's elements, in their order.
  class Places {
   public:
    /// The place number `index` if it is for these ids, otherwise null.
    const Place* find(std::size_t index, std::uint64_t entityId, std::uint64_t descriptorId) const {
      if (index >= m_places.size() || m_places[index].entityId != entityId ||
          m_places[index].descriptorId != descriptorId) {
        return nullptr;
      }
      return &m_places[index];
    }
    /// Sets the place number `index`, which is at most the next new one.
    const Place* set(std::size_t index, const Place& place);

   private:
    std::vector<Place> m_places;
  };

  /// For writers that derive from this one: adds no capability and reads no switch.
  IntWriterV2(const std::string& pluginId, const std::string& suffix);

  /// Reads both switches from the environment.
  void readSwitches();

  static void warnWithTag(const char* text);

  /// Null when there is none.
  TableInfo* findTable(std::uint64_t outerKey, std::uint64_t innerKey);
  /// REQUIRES: there is no such table. Throws what the byte store throws; nothing has changed then.
  TableInfo& makeTable(const std::string& title, std::uint64_t outerKey, std::uint64_t innerKey,
                       const std::string& defaultValue);
  Places& placesOf(const pwr::Metric& metric, unsigned long tableIndex);

  // Steps of sampled tables.
  /// What stands behind the names of data columns.
  static std::string unitSuffix(Calculations calculation, const pwr::Quantity* quantity);
  void addFixedColumns(TableInfo& table) const;
  /// Counts the row, and pushes its number and time.
  void startSampledRow(TableInfo& table, std::uint64_t timestamp);
  /// Pushes value and duration of `element`. Returns false, after a warning, for a value that the
  /// calculation cannot be done with; nothing is pushed then.
  bool pushSampledCells(TableInfo& table, std::uint16_t column, const pwr::Metric& metric,
                        const pwr::DataElement& element, Calculations calculation, Warn warn);

  // Steps of traced tables.
  /// Adds the columns that `element` and the metric ask for. Returns false, after a warning, when
  /// an attribute is unknown; the columns so far stay.
  bool setUpTracedColumns(TableInfo& table, const pwr::Metric& metric,
                          const pwr::DataElement& element,
                          const pwr::DataDescriptor* valueDescriptor, const TracedForm& form) const;
  /// Adds the row of `element`. Returns false when its additional information cannot be shown; the
  /// cells so far wait for the next row then.
  bool writeTracedRow(TableInfo& table, std::uint64_t timestamp, const pwr::DataElement& element,
                      const pwr::DataDescriptor* valueDescriptor, const TracedForm& form);

  /// What is appended to the base name.
  std::string fileSuffix;
  std::string outputPath;
  /// Null before `init` and after `fini`.
  ResultFile outputFile;
  /// Ticks per microsecond; 0 until a system message came.
  double timestampFrequency = 0;
  /// Decimals of milliseconds.
  std::int32_t durationPrecision = 2;
  /// The collection's start, in ticks.
  std::uint64_t globalStartTimestamp = 0;
  /// By outer and inner key: their order is the order of the file.
  std::map<std::uint64_t, std::map<std::uint64_t, TableInfo>> tables;
  /// Times are shown in ticks, as they come.
  bool doTimelineTsc = false;
  /// Residency times are shown in ticks, as they come.
  bool doTimelineResidencyTicks = false;
  /// By metric id; a metric without an entry has view 0.
  std::map<std::uint32_t, std::uint8_t> residencyViews;

 private:
  struct SampledCall;

  /// An entity that has got its row in the current call.
  struct SeenEntity {
    std::uint64_t id;
    BackingStoreWrapper* store;
  };

  /// The text of ticks that were converted last: samples and tables share times and durations.
  struct TickText {
    bool isValid = false;
    std::uint64_t ticks = 0;
    std::string text;
  };

  bool writeSampledElement(const SampledCall& call, const pwr::DataElement& element,
                           std::size_t index);
  /// Null when the table cannot be made.
  const Place* placeOf(const SampledCall& call, const pwr::DataElement& element, std::size_t index);
  TableInfo* sampledTable(const SampledCall& call, const pwr::EntityHandle& entity);
  void setUpSampledColumns(const SampledCall& call, const pwr::EntityHandle& entity,
                           TableInfo& table) const;
  void startRowOnce(TableInfo& table, std::uint64_t entityId, std::uint64_t timestamp);
  bool hasRow(const TableInfo& table, std::uint64_t entityId) const;

  bool writeTracedElement(const pwr::Metric& metric, const pwr::DataElement& element);
  TableInfo* tracedTable(const pwr::Metric& metric, const pwr::DataElement& element);
  /// Adds the columns of additional information, which may be null.
  static bool addInfoColumns(TableInfo& table, const pwr::DynamicAttributeValueManager* info,
                             Warn warn);
  bool pushAdditionalInfo(TableInfo& table, const pwr::DynamicAttributeValueManager& info,
                          Warn warn);

  void pushSampleNumber(TableInfo& table, std::uint16_t column);
  void pushTime(TableInfo& table, std::uint16_t column, std::uint64_t timestamp,
                TimeConversion conversion);
  void pushFormatted(TableInfo& table, std::uint16_t column, const pwr::Data& value);
  void pushAttributes(TableInfo& table, const AttributeColumns& columns,
                      const pwr::AttributeValueManager& attributes);

  /// Puts the text of the element's cell into `m_cellText`.
  bool formatValue(const pwr::Metric& metric, const pwr::DataElement& element,
                   Calculations calculation, Warn warn);
  bool formatRate(const pwr::Metric& metric, const pwr::DataElement& element, Warn warn);
  void formatTicks(std::string& out, std::uint64_t ticks, TimeConversion conversion) const;
  const std::string& tickText(std::uint64_t ticks, TimeConversion conversion);

  /// By metric id and table index.
  std::map<std::pair<std::uint32_t, std::uint64_t>, Places> m_places;
  /// The number of calls of `writeSampledGeneric` so far, this one included.
  std::uint64_t m_call = 0;
  std::vector<SeenEntity> m_seenEntities;
  /// By conversion.
  TickText m_tickTexts[2];
  /// The text of one cell; a member to keep its memory.
  std::string m_cellText;
};
