#include "qumetra/recording/metric_writer.h"

#include <algorithm>
#include <bit>

namespace qumetra {
namespace {

using pwr::Data;
using pwr::Metric;

/// How many descriptions of one metric id are remembered. One that was forgotten is written again
/// when it comes back; without a limit, a metric that never says the same would fill the memory.
constexpr std::size_t kRemembered = 64;

// Reals are equal when their bits are: a changed sign of zero is a change, NaN is none.

template <typename T>
bool isEqual(const T& left, const T& right) {
  return left == right;
}

bool isEqual(double left, double right) {
  return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}

bool isEqual(const Data::RealRange& left, const Data::RealRange& right) {
  return isEqual(left.first, right.first) && isEqual(left.second, right.second);
}

/// Equality of what `read` gets out of two values.
template <typename T>
bool isSame(const Data& left, const Data& right, int (Data::*read)(T&) const) {
  T leftValue{};
  T rightValue{};
  (left.*read)(leftValue);
  (right.*read)(rightValue);
  return isEqual(leftValue, rightValue);
}

bool isSameData(const Data& left, const Data& right) {
  if (left.m_tag != right.m_tag) {
    return false;
  }
  switch (left.m_tag) {
    case Data::kInt:
      return isSame(left, right, &Data::toInt);
    case Data::kUInt:
      return isSame(left, right, &Data::toUInt);
    case Data::kReal:
      return isSame(left, right, &Data::toReal);
    case Data::kIntRange:
      return isSame(left, right, &Data::toIntRange);
    case Data::kUIntRange:
      return isSame(left, right, &Data::toUIntRange);
    case Data::kRealRange:
      return isSame(left, right, &Data::toRealRange);
    case Data::kHandle:
      return isSame(left, right, &Data::toHandle);
    case Data::kString:
      return isSame(left, right, &Data::toString);
    default:
      return true;
  }
}

bool isSameData(const std::vector<Data>& left, const std::vector<Data>& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const Data& a, const Data& b) { return isSameData(a, b); });
}

bool isSameDescription(const Metric& left, const Metric& right) {
  return left.metricId == right.metricId && left.metricType == right.metricType &&
         left.quantity == right.quantity && left.valueHandle == right.valueHandle &&
         left.descriptorTitleHandle == right.descriptorTitleHandle &&
         left.entityTitleHandle == right.entityTitleHandle &&
         left.writeEntityAttributes == right.writeEntityAttributes &&
         left.tableClass == right.tableClass && left.name == right.name &&
         left.featureName == right.featureName && left.groupName == right.groupName &&
         left.entities == right.entities && left.entityList == right.entityList &&
         isSameData(left.states, right.states) &&
         isSameData(left.metadataValues, right.metadataValues);
}

/// The description without the sample.
void copyDescription(const Metric& from, Metric& to) {
  to.name = from.name;
  to.quantity = from.quantity;
  to.metricId = from.metricId;
  to.entities = from.entities;
  to.states = from.states;
  to.featureName = from.featureName;
  to.groupName = from.groupName;
  to.entityList = from.entityList;
  to.metadataValues = from.metadataValues;
  to.valueHandle = from.valueHandle;
  to.descriptorTitleHandle = from.descriptorTitleHandle;
  to.entityTitleHandle = from.entityTitleHandle;
  to.writeEntityAttributes = from.writeEntityAttributes;
  to.tableClass = from.tableClass;
  to.metricType = from.metricType;
}

}  // namespace

std::string_view MetricWriter::metric(const Metric& metric) {
  Family& family = m_families[metric.metricId];
  std::deque<Written>& written = family.written;
  if (!written.empty() && isSameDescription(written[family.last].metric, metric)) {
    return written[family.last].ref;
  }
  for (std::size_t i = 0; i < written.size(); ++i) {
    if (isSameDescription(written[i].metric, metric)) {
      family.last = i;
      return written[i].ref;
    }
  }
  return define(family, metric);
}

std::string_view MetricWriter::define(Family& family, const Metric& metric) {
  if (family.written.size() == kRemembered) {
    family.written.pop_front();
  }
  Written& added = family.written.emplace_back();
  copyDescription(metric, added.metric);
  added.ref = "\"m" + std::to_string(++m_count) + '"';
  family.last = family.written.size() - 1;
  write(metric, added.ref);
  return added.ref;
}

void MetricWriter::write(const Metric& metric, std::string_view ref) {
  std::string line;
  JsonText json(line);
  json.beginObject();
  json.name("metric");
  json.beginObject();
  json.rawMember("ref", ref);
  json.name("metricId");
  json.unsignedInteger(metric.metricId);
  appendMembers(json, metric);
  json.endObject();
  json.endObject();
  m_file.append(line + '\n');
}

void MetricWriter::appendMembers(JsonText& json, const Metric& metric) {
  json.textMember("name", metric.name);
  json.numberMember("type", metric.metricType);
  if (metric.quantity != nullptr) {
    json.rawMember("quantity", m_definitions.quantity(*metric.quantity));
  }
  appendColumns(json, metric);
  appendValues(json, "states", metric.states);
  json.textMember("featureName", metric.featureName);
  json.textMember("groupName", metric.groupName);
  if (!metric.entityList.empty()) {
    json.name("entityList");
    json.beginList();
    for (const pwr::EntityHandle* entity : metric.entityList) {
      json.raw(m_definitions.handle(*entity));
    }
    json.endList();
  }
  appendValues(json, "metadataValues", metric.metadataValues);
  json.rawMember("valueHandle", m_definitions.handleOrNothing(metric.valueHandle));
  json.rawMember("descriptorTitleHandle",
                 m_definitions.handleOrNothing(metric.descriptorTitleHandle));
  json.rawMember("entityTitleHandle", m_definitions.handleOrNothing(metric.entityTitleHandle));
  json.flagMember("writeEntityAttributes", metric.writeEntityAttributes);
  json.numberMember("tableClass", static_cast<std::uint32_t>(metric.tableClass));
}

void MetricWriter::appendColumns(JsonText& json, const Metric& metric) {
  if (metric.entities.empty()) {
    return;
  }
  json.name("entities");
  json.beginList();
  for (const auto& [entity, descriptor] : metric.entities) {
    json.beginList();
    json.raw(m_definitions.handleOrNull(entity));
    json.raw(m_definitions.handleOrNull(descriptor));
    json.endList();
  }
  json.endList();
}

void MetricWriter::appendValues(JsonText& json, std::string_view name,
                                const std::vector<Data>& values) {
  if (values.empty()) {
    return;
  }
  json.name(name);
  json.beginList();
  for (const Data& value : values) {
    m_definitions.appendData(json, value);
  }
  json.endList();
}

}  // namespace qumetra
