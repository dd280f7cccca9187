// What the host's configuration tells the library: the order of metrics, and telemetry counters.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace pwr {

/// The order in which features and their metrics stand in reports.
struct MetricOrder {
  std::deque<std::string> featureOrder;
  std::deque<std::string> featurePrefixes;
  std::map<std::string, std::deque<std::string>> metricOrder;
};

/// The process-wide order of features and metrics. Read-only to writers. Not synchronised.
class WriterInterfaceConfigFileParser {
 public:
  static WriterInterfaceConfigFileParser* instance();

  // Each replaces what the deque holds and returns true when there are entries. Without entries it
  // returns false and leaves the deque empty.
  bool getFeatureOrder(std::deque<std::string>& out) const;
  bool getAllFeaturePrefixes(std::deque<std::string>& out) const;
  bool getMetricOrderForFeature(std::deque<std::string>& out, const std::string& feature) const;

  /// Host side: replaces the whole order.
  void setOrder(MetricOrder order);
  const MetricOrder& order() const { return m_order; }

 private:
  WriterInterfaceConfigFileParser();

  MetricOrder m_order;
};

/// Where a telemetry counter is found.
struct AggrTelemCounterInfo {
  std::uint32_t guid = 0;
  std::uint16_t endpointId = 0;
  std::uint64_t sampleId = 0;
  /// The counter's field within the sample; may be empty.
  std::string bitRange = {};
};

/// An entry of the configuration that a feature interprets itself.
struct KeyValuePair {
  std::string key;
  std::string value;
};

/// The process-wide configuration of telemetry counters. Not synchronised.
class QMConfigFileParser {
 public:
  static QMConfigFileParser* instance();

  /// Fills `out` with the places of the counter; empties it when there are none.
  void getAggrTelemCounterInfo(const std::string& feature, const std::string& counterName,
                               const std::string& fieldName,
                               std::vector<AggrTelemCounterInfo>& out) const;

  /// Host side: adds a place of the counter.
  void addAggrTelemCounterInfo(const std::string& feature, const std::string& counterName,
                               const std::string& fieldName, AggrTelemCounterInfo info);

 private:
  QMConfigFileParser();

  using Key = std::vector<std::string>;
  std::map<Key, std::vector<AggrTelemCounterInfo>> m_counters;
};

}  // namespace pwr
