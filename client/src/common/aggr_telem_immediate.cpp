#include "client/src/common/aggr_telem_immediate.h"

#include <cstdint>

namespace pwr {
namespace {
constexpr std::uint64_t kNoSample = 0xDEADBEEF;
}

AggrTelemImmediate::AggrTelemImmediate(const std::string& feature, const std::string& counterName,
                                       const std::string& fieldName)
    : m_feature(feature), m_counterName(counterName), m_fieldName(fieldName) {
  QMConfigFileParser::instance()->getAggrTelemCounterInfo(m_feature, m_counterName, m_fieldName,
                                                          m_infos);
  m_operations.reserve(m_infos.size());
  for (const AggrTelemCounterInfo& info : m_infos) {
    m_operations.emplace_back(m_counterName, m_fieldName, info);
  }
}

int AggrTelemImmediate::read(unsigned long& out) {
  if (m_operations.size() != 1) {
    return 1;
  }
  return m_operations.front().read(out) == 0 ? 0 : 1;
}

int AggrTelemImmediate::readFromMultiEndpoint(std::map<unsigned short, unsigned long>& out) {
  if (m_operations.empty()) {
    return 1;
  }
  for (AggrTelemOperation& operation : m_operations) {
    unsigned long value = 0;
    unsigned short endpointId = 0;
    if (operation.read(value) != 0 || !operation.get("ENDPOINT-ID", endpointId)) {
      return 1;
    }
    out[endpointId] = value;
  }
  return 0;
}

AggrTelemCounterInfo AggrTelemImmediate::getCounterMetadata() {
  if (m_infos.empty()) {
    return {0, 0, kNoSample, {}};
  }
  return m_infos.front();
}

}  // namespace pwr
