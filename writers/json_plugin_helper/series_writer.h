// What the two JSON writers share: everything but the document.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/attributes.h"
#include "host/metric.h"
#include "writers/continuous_writer/cont_writer.h"
#include "writers/json_plugin_helper/series.h"
#include "writers/without_exception.h"
#include "writers/writer_plugins.h"

/// How one writer differs from the other.
struct SeriesWriterForm {
  const char* guid;
  const char* option;
  const char* description;
  const char* extension;
  /// Flags of the capability.
  std::uint8_t flags;
  /// Series remember the names of the states that their metric declares.
  bool keepsStateNames;
};

/// Keeps all samples of a run as series of points until `fini`, which the derived writer turns into
/// its document. In a continuous run all messages go to a `ContWriter` instead.
///
/// Times are microseconds since the start of the collection, computed in single precision: beyond
/// 2^24 of them (16.8 seconds) they lose resolution. Results have always been so and are compared
/// across runs. An element that is longer than the time since the start begins at a very large
/// number.
///
/// No operation of a writer's throws. One that finds no memory has the result of a failure, keeps
/// what came before, and may be called again: a system message is taken whole or not at all, an
/// element with its point, its state and its series or not at all. One thread at a time.
class SeriesWriter : public WriterPlugin {
 public:
  explicit SeriesWriter(const SeriesWriterForm& form);
  ~SeriesWriter() override;

  /// Names the file: `base` and the extension. Nothing is opened. Returns 0, or 1 without memory,
  /// where all is as before.
  int init(const std::string& base, bool isContinuous) override;
  /// See `ContWriter`; outside a continuous run nothing is written, and 0 returned.
  int flushContinuousResults(const pwr::SystemMetadata& metadata) override;

  using WriterPlugin::writeMessage;
  /// Texts have no place in the result. Returns 0.
  int writeMessage(const pwr::TextMessage& message) override;
  /// Comes before the first metric: without it all times are 0. Returns 1 without metadata.
  int writeMessage(const pwr::SystemMessage& message) override;
  /// Returns 1 at the first element that cannot be read; the elements before it are kept.
  int writeMessage(const pwr::Metric& metric) override;

  // The parts of the above. They throw what an allocation throws, and have changed nothing then.

  /// Finds the series of an element, or makes it with the states that the metric declares. Returns
  /// its id: the sum of a hash of `name` and the packed ids of metric and entity. Two things of one
  /// sum are one series.
  std::uint64_t addSeries(const std::string& key, const std::string& name,
                          const pwr::Metric& metric, const pwr::DataElement* element, bool stated);

  /// The state of an element: its value's (`byValue`) or its descriptor's. Empty without one.
  static std::string getState(const pwr::DataElement* element, bool byValue);
  static const char* getTypeString(pwr::Metric::MetricType type);
  static int getStringFromData(const pwr::Data* value, std::string* out);
  /// The text of the first attribute's value; returns 1 when it has none.
  static int getFirstDataAttributeAsString(const pwr::AttributeValueManager* attributes,
                                           std::string* out);
  static bool isNumeric(const std::string& state);
  /// See writers/json_plugin_helper/state_order.h.
  static void sortStates(std::vector<std::string>& states);

 protected:
  using Category = std::vector<Series*>;

  /// What `fini` of a derived writer does: in a continuous run what `ContWriter` does and returns,
  /// otherwise `writeDocument`, whose failure is 1. Here rather than in a `fini` of this class:
  /// hosts know those of the derived ones by their names.
  template <typename WriteDocument>
  int finish(WriteDocument writeDocument) {
    return withoutException([&] {
      if (continuous) {
        return contWriter->fini();
      }
      writeDocument();
      return 0;
    });
  }
  /// The series by the metric's name, in the order of the map of series.
  std::unordered_map<std::string, Category> seriesByCategory() const;

  std::string extension;
  std::string fileName;
  /// Microseconds per tick.
  float tickScale = 0.0F;
  /// Borrowed; null before the system message.
  const pwr::SystemMetadata* systemMetadata = nullptr;
  std::uint64_t startTimestamp = 0;
  /// Each argument behind a blank.
  std::string commandLine;
  std::string toolVersion;
  std::string driverVersion;
  /// By the ids that `addSeries` returns. Their order reaches the file.
  std::unordered_map<std::uint64_t, std::unique_ptr<Series>> series;
  bool continuous = false;
  /// Made by the first `init` of a continuous run, so that there is one in each.
  std::unique_ptr<ContWriter> contWriter;

 private:
  struct Sample;
  void takeSystem_i(const pwr::SystemMetadata& system);
  int takeElements_i(const pwr::Metric& metric);
  int addElement_i(const pwr::Metric& metric, const pwr::DataElement& element, std::uint64_t end,
                   std::uint64_t& previousId);
  static void addPoint_i(Series& target, const Sample& sample, std::uint64_t end, bool isSamePoint);
  int readSample_i(const pwr::Metric& metric, const pwr::DataElement& element, Sample& out) const;
  std::uint64_t microseconds_i(std::uint64_t ticks) const;
  void declareStates_i(const pwr::Metric& metric, Series& target) const;

  bool m_keepsStateNames;
};
