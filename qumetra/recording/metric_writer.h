// Defines metrics in a recording, anew when their description changes.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/metric.h"
#include "qumetra/recording/definition_writer.h"

namespace qumetra {

/// Gives every description of a metric a reference. Metrics are told apart by what they say, not by
/// where they are: a metric object may be another one in the next message. Not synchronised.
class MetricWriter {
 public:
  /// Both are borrowed.
  MetricWriter(BlockFile& file, DefinitionWriter& definitions)
      : m_file(file), m_definitions(definitions) {}

  /// The reference to the metric as it is described now, as JSON. The definition is written first
  /// when this description is new. Stays valid until the next call.
  std::string_view metric(const pwr::Metric& metric);

 private:
  /// A description that has been written.
  struct Written {
    pwr::Metric metric;
    std::string ref;
  };
  /// The descriptions that carry one metric id, the newest last.
  struct Family {
    std::deque<Written> written;
    /// The one that was asked for last: mostly the next one too.
    std::size_t last = 0;
  };

  std::string_view define(Family& family, const pwr::Metric& metric);
  void write(const pwr::Metric& metric, std::string_view ref);
  void appendMembers(JsonText& json, const pwr::Metric& metric);
  void appendColumns(JsonText& json, const pwr::Metric& metric);
  void appendValues(JsonText& json, std::string_view name, const std::vector<pwr::Data>& values);

  BlockFile& m_file;
  DefinitionWriter& m_definitions;
  std::unordered_map<std::uint32_t, Family> m_families;
  std::uint64_t m_count = 0;
};

}  // namespace qumetra
