#include "host/configuration.h"

#include <utility>

namespace pwr {
namespace {

bool copyOrder(const std::deque<std::string>& order, std::deque<std::string>& out) {
  out = order;
  return !out.empty();
}

}  // namespace

WriterInterfaceConfigFileParser::WriterInterfaceConfigFileParser() = default;

WriterInterfaceConfigFileParser* WriterInterfaceConfigFileParser::instance() {
  static WriterInterfaceConfigFileParser s_parser;
  return &s_parser;
}

bool WriterInterfaceConfigFileParser::getFeatureOrder(std::deque<std::string>& out) const {
  return copyOrder(m_order.featureOrder, out);
}

bool WriterInterfaceConfigFileParser::getAllFeaturePrefixes(std::deque<std::string>& out) const {
  return copyOrder(m_order.featurePrefixes, out);
}

bool WriterInterfaceConfigFileParser::getMetricOrderForFeature(std::deque<std::string>& out,
                                                               const std::string& feature) const {
  const auto found = m_order.metricOrder.find(feature);
  if (found == m_order.metricOrder.end()) {
    out.clear();
    return false;
  }
  return copyOrder(found->second, out);
}

void WriterInterfaceConfigFileParser::setOrder(MetricOrder order) { m_order = std::move(order); }

QMConfigFileParser::QMConfigFileParser() = default;

QMConfigFileParser* QMConfigFileParser::instance() {
  static QMConfigFileParser s_parser;
  return &s_parser;
}

void QMConfigFileParser::getAggrTelemCounterInfo(const std::string& feature,
                                                 const std::string& counterName,
                                                 const std::string& fieldName,
                                                 std::vector<AggrTelemCounterInfo>& out) const {
  out.clear();
  const auto found = m_counters.find({feature, counterName, fieldName});
  if (found != m_counters.end()) {
    out = found->second;
  }
}

void QMConfigFileParser::addAggrTelemCounterInfo(const std::string& feature,
                                                 const std::string& counterName,
                                                 const std::string& fieldName,
                                                 AggrTelemCounterInfo info) {
  m_counters[{feature, counterName, fieldName}].push_back(std::move(info));
}

}  // namespace pwr
