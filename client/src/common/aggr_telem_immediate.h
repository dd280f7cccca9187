// Telemetry counters read here and now.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "client/src/common/aggr_telem_operation.h"
#include "host/configuration.h"

namespace pwr {

/// Finds all endpoints that carry a counter, by the host's configuration, and reads it there. Not
/// synchronised.
///
///     AggrTelemImmediate counter("PKG-ENERGY", "COUNTER4", "ENERGY");
///     unsigned long value = 0;
///     if (counter.read(value) == 0) { ...the counter has one endpoint, and was read... }
class AggrTelemImmediate {
 public:
  AggrTelemImmediate(const std::string& feature, const std::string& counterName,
                     const std::string& fieldName);

  /// Reads a counter that has exactly one endpoint. Returns 0; 1 and leaves `out` alone when there
  /// is none, when there are several, and when the host could not read.
  int read(unsigned long& out);
  /// Reads the counter at all its endpoints, in order, into their ids. Of two at the same endpoint
  /// the later one stays. Returns 0; 1 when there is none, and at the first that the host could not
  /// read: what was read before stays in `out`.
  int readFromMultiEndpoint(std::map<unsigned short, unsigned long>& out);
  /// Where the counter is found first. Without an endpoint, a place whose sample id is 0xDEADBEEF.
  AggrTelemCounterInfo getCounterMetadata();

  std::string m_feature;
  std::string m_counterName;
  std::string m_fieldName;
  /// As the configuration has them.
  std::vector<AggrTelemCounterInfo> m_infos;
  /// One for each of `m_infos`, in the same order.
  std::vector<AggrTelemOperation> m_operations;
};

}  // namespace pwr
