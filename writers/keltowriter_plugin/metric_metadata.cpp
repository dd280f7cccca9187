// What is told of a metric: its type, the tab and time-line it is shown on, and its own record.
#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>
#include <string_view>

#include "host/metric.h"
#include "host/quantity.h"
#include "writers/keltowriter_plugin/info_metadata.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/metric_types.h"
#include "writers/keltowriter_plugin/packed_record.h"

namespace {

struct MetricTypeRow {
  std::uint16_t number;
  const char* longName;
  const char* shortName;
};

/// In the order of the file.
constexpr std::array<MetricTypeRow, 6> kMetricTypes = {{
    {kelto::kSampledFiniteSetCounter, "Sampled Finite Set Counter", "SFSC"},
    {kelto::kSampledValue, "Sampled Value", "SV"},
    {kelto::kSampledFiniteSetValue, "Sampled Finite Set Value", "SFSV"},
    {kelto::kTracedFiniteSetCounter, "Traced Finite Set Counter", "TFSC"},
    {kelto::kSampledCounter, "Sampled Counter", "SC"},
    {kelto::kTracedEvent, "Traced Event", "TE"},
}};

bool containsAny(std::string_view text, std::initializer_list<std::string_view> parts) {
  return std::any_of(parts.begin(), parts.end(), [text](std::string_view part) {
    return text.find(part) != std::string_view::npos;
  });
}

bool isOnCStateTab(std::string_view name) {
  return name == "Aborts" || containsAny(name, {"Wakeups", "VM Residency", "Package C-State",
                                                "Module C-State", "Core C-State"});
}

bool isOnCStateTimeline(std::string_view name) {
  return name == "Aborts" || containsAny(name, {"Wakeups", "Core C-State"});
}

std::uint16_t typeNumber(pwr::Metric::MetricType type) {
  switch (type) {
    case pwr::Metric::SAMPLED_DELTA:
      return kelto::kSampledCounter;
    case pwr::Metric::SAMPLED_RESIDENCY:
      return kelto::kSampledFiniteSetCounter;
    case pwr::Metric::TRACED_VALUE_TRANSITION:
      return kelto::kTracedFiniteSetCounter;
    case pwr::Metric::TRACED_EVENT:
      return kelto::kTracedEvent;
    default:
      return kelto::kNoMetricType;
  }
}

}  // namespace

int KeltoWriter::writeMetricTypeMetadata() {
  const std::uint64_t kind = getInfoTypeMetadataId("metric_type");
  if (kind == kAllOnes) {
    return 1;
  }
  int status = 0;
  const char* uidName = "metric_type_info";
  for (const MetricTypeRow& row : kMetricTypes) {
    const std::uint64_t uid = kelto::drawUid(uidName);
    status |= writeInfoMetadataHelper("metric_type", kind, row.longName, row.shortName,
                                      "metric_type_id", row.number, uid, kelto::kNoParent);
    metricTypeIds[row.number] = uid;
    uidName = "info";
  }
  return status == 0 ? 0 : kelto::failure("Failed to write metric type metadata.\n");
}

int KeltoWriter::handleMetricMetadata(const pwr::Metric* metric, std::uint16_t* metricType) {
  const bool isSetValue = *metricType == kelto::kSampledFiniteSetValue;
  const pwr::Quantity* quantity = metric->quantity;
  if (metric->metricType == pwr::Metric::SAMPLED_VALUE) {
    *metricType = isSetValue ? kelto::kSampledFiniteSetValue : kelto::kSampledValue;
  } else if (isSetValue) {
    return kelto::failure("Wrong metric type used for metric '%s'.\n", metric->name.c_str());
  } else {
    *metricType = typeNumber(metric->metricType);
  }
  if (metric->metricType == pwr::Metric::TRACED_VALUE_TRANSITION) {
    quantity = pwr::Quantity::time();
  }
  return handleMetricMetadataHelper(metric->metricId, *metricType, metric->name, metric->name,
                                    quantity);
}

int KeltoWriter::handleMetricMetadataHelper(std::uint64_t id, std::uint16_t metricType,
                                            const std::string& name, const std::string& secondName,
                                            const pwr::Quantity* quantity) {
  if (metricsDescribed.contains(static_cast<std::int64_t>(id))) {
    return 0;
  }
  std::uint64_t tabGroupUid = 0;
  if (writeTabGroupMetadata(name, secondName, id, &tabGroupUid) != 0) {
    return kelto::failure("Failed to write tab group metadata '%s:%llu'.\n", name.c_str(),
                          kelto::shown(id));
  }
  if (writeTimelineGroupMetadata(name, secondName, id, tabGroupUid) != 0) {
    return kelto::failure("Failed to write timeline group metadata '%s:%llu'.\n", name.c_str(),
                          kelto::shown(id));
  }
  long quantityUid = -1;
  if (handleQuantityMetadata(quantity, quantityUid) != 0) {
    return kelto::failure("Failed to create quantity metadata for metric '%s'.\n", name.c_str());
  }
  if (writeMetricMetadata(name, secondName, id, metricType, static_cast<int>(quantityUid), id,
                          id) != 0) {
    return kelto::failure("Failed to write metric metadata for metric '%s'.\n", name.c_str());
  }
  metricsDescribed[static_cast<std::int64_t>(id)] = name;
  return 0;
}

/// Writes the group at its first use; later users find its uid.
int KeltoWriter::writeSharedGroup(std::uint64_t& groupUid, const std::string& kind,
                                  const std::string& description, const std::string& name,
                                  std::uint64_t id, long parentUid) {
  if (groupUid != kNoGroup) {
    return 0;
  }
  groupUid = kelto::drawUid("info_type_info");
  return writeInfoMetadataHelper(kind, getInfoTypeMetadataId(kind), name, name, description, id,
                                 groupUid, parentUid);
}

int KeltoWriter::writeTabGroupMetadata(const std::string& name, const std::string& shortName,
                                       std::uint64_t id, std::uint64_t* tabGroupUid) {
  const std::uint64_t kind = getInfoTypeMetadataId("tab_group");
  if (kind == kAllOnes) {
    return 1;
  }
  const auto shareGroup = [&](std::uint64_t& groupUid, const char* tabName) {
    const int status =
        writeSharedGroup(groupUid, "tab_group", "tab_group_id", tabName, id, kelto::kNoParent);
    *tabGroupUid = groupUid;
    return status;
  };
  int status = 0;
  if (isOnCStateTab(name)) {
    status = shareGroup(cstateTabGroupId, "C-State Residency/Wakeups");
  } else if (containsAny(name, {"Temperature", "temperature", "Thermals", "thermals"})) {
    status = shareGroup(temperatureTabGroupId, "Temperature Metrics");
  } else if (containsAny(name, {"Power", "power"})) {
    status = shareGroup(powerTabGroupId, "Power Metrics");
  } else {
    *tabGroupUid = kelto::drawUid("info_type_info");
    status = writeInfoMetadataHelper("tab_group", kind, name, shortName, "tab_group_id", id,
                                     *tabGroupUid, kelto::kNoParent);
  }
  tabGroupIds[id] = *tabGroupUid;
  return status;
}

// Wakeups, aborts and core states share a time-line under the name of whichever comes first.
int KeltoWriter::writeTimelineGroupMetadata(const std::string& name, const std::string& shortName,
                                            std::uint64_t id, std::uint64_t tabGroupUid) {
  const std::uint64_t kind = getInfoTypeMetadataId("timeline_group");
  if (kind == kAllOnes) {
    return 1;
  }
  const auto parent = static_cast<long>(tabGroupUid);
  int status = 0;
  if (isOnCStateTimeline(name)) {
    status = writeSharedGroup(cstateTimelineGroupId, "timeline_group", "timeline_group_id", name,
                              id, parent);
    timelineGroupIds[id] = cstateTimelineGroupId;
    return status;
  }
  const std::uint64_t uid = kelto::drawUid("info_type_info");
  status = writeInfoMetadataHelper("timeline_group", kind, name, shortName, "timeline_group_id", id,
                                   uid, parent);
  timelineGroupIds[id] = uid;
  return status;
}

// offset  size
//      0     4  10 00 40 02
//      4     8  0
//     12     2  size, from here to the end: length of the text plus 33
//     14     2  type, 72
//     16     2  sub-type, 8
//     18     2  version
//     20     4  metric type
//     24     4  metric id
//     28     4  uid of the quantity; all ones for none
//     32     4  uid of the tab group
//     36     4  uid of the time-line group
//     40     2  length of the name
//     42     2  length of the second name
//     44     n  the two names with nothing between, and one terminator; 400 bytes at most
int KeltoWriter::writeMetricMetadata(const std::string& name, const std::string& secondName,
                                     std::uint64_t id, std::uint32_t metricType, int quantityUid,
                                     std::uint64_t tabKey, std::uint64_t timelineKey) {
  const std::string text = name + secondName;
  if (text.size() + 1 > kelto::kLongestMetadataText) {
    return kelto::failure("Metric name too long.\n");
  }
  const auto quantity = static_cast<std::uint32_t>(quantityUid);
  if (quantityUid != -1 && !quantityIds.contains(quantity)) {
    return kelto::failure("Quantity metadata needs to be processed first.\n");
  }
  const auto tab = tabGroupIds.find(tabKey);
  if (tab == tabGroupIds.end()) {
    return kelto::failure("Tab group metadata needs to be processed first.\n");
  }
  const auto timeline = timelineGroupIds.find(timelineKey);
  if (timeline == timelineGroupIds.end()) {
    return kelto::failure("Timeline group metadata needs to be processed first.\n");
  }
  kelto::PackedRecord<kelto::kMetadataFixedSize + kelto::kLongestMetadataText> record;
  record.u32(kelto::kTimedWord);
  record.u64(0);
  record.u16(static_cast<std::uint16_t>(text.size() + kelto::kMetadataRestSize));
  record.u16(kelto::kMetadataRecord);
  record.u16(kelto::kMetricMetadata);
  record.u16(formatVersion());
  record.u32(metricType);
  record.u32(static_cast<std::uint32_t>(id));
  record.u32(quantity);
  record.u32(static_cast<std::uint32_t>(tab->second));
  record.u32(static_cast<std::uint32_t>(timeline->second));
  record.u16(static_cast<std::uint16_t>(name.size()));
  record.u16(static_cast<std::uint16_t>(secondName.size()));
  record.terminatedText(text);
  return writeRecord(id, record.data(), record.size());
}
