// The samples of a continuous run between two flushes.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <unordered_map>

#include "host/messages.h"

namespace pwr {
class DataElement;
class Metric;
}  // namespace pwr

/// Gathers samples, and a description of each metric, until they are handed out. It is no writer of
/// its own: the writers that serve continuous runs own one each and pass their messages on.
///
/// A metric is described once per process, by whichever object sees it first: a run of both JSON
/// writers has each description in the results of one of them only. Not synchronised.
class ContinuousWriter {
 public:
  /// One sample.
  struct Data {
    Data(int metric, const std::string& entityName, const std::string& descriptorName,
         const std::string& stateText, unsigned long ticks, double length, double number);

    int metricId;
    /// Qualified.
    std::string entity;
    /// "N/A" for an element without one.
    std::string descriptor;
    std::string state;
    /// Ticks of the collection's clock.
    unsigned long timestamp;
    /// Whole microseconds, or 1 for a value of a moment.
    double duration;
    double value;
  };

  /// A node of a description: texts and further nodes under keys.
  struct Metadata {
    struct Data;

    Metadata(const std::string& nodeName, int nodeId);

    /// Appends to the list under `key`. Numbers become texts as a stream prints them by default.
    /// Defined for texts, nodes, `unsigned int`, `unsigned long`, `float` and `double`.
    template <typename T>
    void add(const std::string& key, const T& value);

    /// The feature's name in the root of a metric, empty elsewhere.
    std::string name;
    /// The metric's id in its root, -1 elsewhere.
    int id;
    std::unordered_map<std::string, std::list<std::shared_ptr<Data>>> entries;
  };

  ContinuousWriter();
  /// `base` is the base name of output files.
  explicit ContinuousWriter(const std::string& base);
  ContinuousWriter(const ContinuousWriter&) = delete;
  ContinuousWriter& operator=(const ContinuousWriter&) = delete;
  virtual ~ContinuousWriter();

  /// Takes the clock's frequency. Comes before the first metric: without it all scaled numbers are
  /// 0. Returns 0, or 1 for a message without metadata.
  int writeMessage(const pwr::SystemMessage& message);
  /// Takes the elements in order. Returns 0, or 1 at the first element that cannot be read; the
  /// elements before it are kept.
  int writeMessage(const pwr::Metric& metric);
  /// Ends the use of the host's nameless output. What was not flushed is lost. Returns what the
  /// host returns, and 0 where it has no such output.
  int fini();

 protected:
  std::string outputBase;
  /// Borrowed.
  const pwr::SystemMetadata* systemMetadata = nullptr;
  /// Microseconds per tick, divided in single precision.
  double tickScale = 0.0;
  /// By metric name; several metrics may carry one name.
  std::unordered_multimap<std::string, std::shared_ptr<Metadata>> metadata;
  /// In order of arrival.
  std::list<Data> data;

 private:
  int addSample_i(const pwr::Metric& metric, const pwr::DataElement& element);
  double duration_i(const pwr::Metric& metric, const pwr::DataElement& element) const;
  void addMetadataOnce_i(const pwr::Metric& metric);
};

/// One value under a key: a text, or a node where `child` is not null.
struct ContinuousWriter::Metadata::Data {
  std::string value;
  std::shared_ptr<Metadata> child;
};
