// Samples: each becomes one record, a time and a flat list of attributes.
//
//     METRIC
//     for each entity          ENTITY, its info attributes
//       for each of its values   FIELD, DURATION, COLOR,
//                                info attributes of descriptor and value,
//                                data attributes of descriptor and value,
//                                the value

#include "host/handles.h"
#include "host/metric.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/metric_types.h"
#include "writers/keltowriter_plugin/name_tables.h"

namespace {

using kelto::kNoElement;
using kelto::shown;

bool isWakelock(const pwr::Metric& metric) {
  return metric.metricType == pwr::Metric::TRACED_VALUE_TRANSITION &&
         (metric.tableClass == pwr::TableClass::KernelWakelock ||
          metric.tableClass == pwr::TableClass::UserWakelock);
}

/// The sample's time as "%llu" takes it.
unsigned long long timeOf(const pwr::Metric& metric) {
  return kelto::shown(metric.getData().timestamp);
}

}  // namespace

int KeltoWriter::handleMetricMessage(const pwr::Metric& metric) {
  if (isWakelock(metric)) {
    return handleWakelockSampleNonGeneric(&metric);
  }
  const std::uint64_t tsc = metric.getData().timestamp;
  if (systemInfo == nullptr) {
    // Without a start there is no time that could be checked, and no stream for metadata.
    return kelto::failure("Invalid TSC value for '%s' sample. TSC: %llu\n", metric.name.c_str(),
                          shown(tsc));
  }
  kelto::MetricTrack& track = trackOf(metric);
  std::uint16_t type = kelto::kNoMetricType;
  if (takeElements(metric, track, type) != 0) {
    return 1;
  }
  if (handleMetricMetadata(&metric, &type) != 0) {
    return kelto::failure("Failed to process '%s' metric metadata.\n", metric.name.c_str());
  }
  const bool isTracedType = type == kelto::kTracedEvent || type == kelto::kTracedFiniteSetCounter;
  if (isTracedType && m_sample.elements.size() != 1) {
    return kelto::failure(
        "Traced metric data should have information for only one entity and only one descriptor. "
        "Metric: '%s'\n",
        metric.name.c_str());
  }
  return writeSample(metric, track);
}

int KeltoWriter::writeSample(const pwr::Metric& metric, kelto::MetricTrack& track) {
  const std::uint64_t tsc = metric.getData().timestamp;
  m_list.count = 0;
  if (track.lastStates.size() < m_sample.elements.size()) {
    track.lastStates.resize(m_sample.elements.size());
  }
  if (add(kMetricAttribute, metric.metricId, &m_list) != 0) {
    return kelto::failure("Unable to add '%s' metric to the record. TSC: %llu\n",
                          metric.name.c_str(), shown(tsc));
  }
  for (const std::uint32_t index : m_sample.entities) {
    kelto::EntityTrack& entity = track.entities[index];
    if (addEntity(metric, track, entity) != 0) {
      return 1;
    }
    for (std::uint32_t i = entity.first; i != kNoElement; i = m_sample.elements[i].next) {
      if (addElement(metric, m_sample.elements[i].data, track.lastStates[i]) != 0) {
        return 1;
      }
    }
  }
  if (writeQM2Record(tsc, metric.metricId, &m_list) != 0) {
    return kelto::failure("Unable to write a '%s:%d' record. TSC: %llu\n", metric.name.c_str(),
                          static_cast<int>(metric.metricId), shown(tsc));
  }
  return 0;
}

int KeltoWriter::addEntity(const pwr::Metric& metric, const kelto::MetricTrack& track,
                           kelto::EntityTrack& entity) {
  const std::uint64_t tsc = metric.getData().timestamp;
  const char* const name = metric.name.c_str();
  if (entity.previousTsc == nullptr) {
    const std::string key = getNameIdKey(track.key + "_" + entity.entity->getName(), entity.id);
    entity.previousTsc = &*previousTsc.try_emplace(key, systemInfo->firstTsc).first;
  }
  if (checkTsc(tsc, *entity.previousTsc) != 0) {
    return kelto::failure("Invalid TSC value for '%s' sample. TSC: %llu\n", name, shown(tsc));
  }
  if (!entity.isDescribed) {
    if (writeEntityMetadataTopology(entity.entity) != 0) {
      return kelto::failure("Unable to write '%s' entity metadata topology. TSC: %llu\n", name,
                            shown(tsc));
    }
    entity.isDescribed = isEntityWritten(*entity.entity);
  }
  if (add(kEntityAttribute, entity.id, &m_list) != 0) {
    return kelto::failure("Unable to add '%s' entity to the record. TSC: %llu\n", name, shown(tsc));
  }
  if (processInfoAttributes(entity.entity, &m_list) != 0) {
    return kelto::failure("Unable to add '%s' entity attributes to the record. TSC: %llu\n", name,
                          shown(tsc));
  }
  return 0;
}

int KeltoWriter::addElement(const pwr::Metric& metric, const EntityDataElement& element,
                            kelto::StateGuess& guess) {
  if (element.descriptor == nullptr) {
    return kelto::failure("Malformed data element for metric %s. TSC: %llu", metric.name.c_str(),
                          timeOf(metric));
  }
  if (addState(metric, element, guess) != 0) {
    return 1;
  }
  // A state that is guessed has no attributes.
  const bool mayHaveAttributes = guess.descriptor == nullptr || element.additionalInfo != nullptr;
  if (mayHaveAttributes && addElementAttributes(metric, element) != 0) {
    return 1;
  }
  if (processData(element.value, nullptr, &m_list, false, nullptr) != 0) {
    return kelto::failure("Unable to add '%s' data to the record. TSC: %llu\n", metric.name.c_str(),
                          timeOf(metric));
  }
  return 0;
}

int KeltoWriter::addState(const pwr::Metric& metric, const EntityDataElement& element,
                          kelto::StateGuess& guess) {
  const char* const name = metric.name.c_str();
  const bool isGuessed =
      guess.descriptor == element.descriptor && element.descriptor->getAttributeCount() == 0;
  if (!isGuessed && findState(metric, *element.descriptor, guess) != 0) {
    return 1;
  }
  if (add(kFieldAttribute, guess.fieldId, &m_list) != 0) {
    return kelto::failure("Unable to add '%s' field to the record. TSC: %llu\n", name,
                          timeOf(metric));
  }
  // A duration of 0 stands for the time since the entity's last sample, and as that is this very
  // sample by now, 0 it is.
  if (add(kDurationAttribute, element.duration, &m_list) != 0) {
    return kelto::failure("Unable to add '%s' duration to the record. TSC: %llu\n", name,
                          timeOf(metric));
  }
  if (add(kColorAttribute, guess.colorId, &m_list) != 0) {
    return kelto::failure("Unable to add '%s' state color to the record. TSC: %llu\n", name,
                          timeOf(metric));
  }
  return 0;
}

/// The nodes of the descriptor's state, which are written at its first use.
int KeltoWriter::findState(const pwr::Metric& metric, const pwr::DataDescriptor& descriptor,
                           kelto::StateGuess& guess) {
  kelto::DescriptorTrack& track = descriptorTrack(descriptor);
  const bool dependsOnName = descriptor.getAttributeCount() == 0;
  if (dependsOnName && track.hasStateIds) {
    guess = {&descriptor, track.fieldId, track.colorId};
    return 0;
  }
  guess = {nullptr, descriptor.getId(), 0};
  const char* const name = metric.name.c_str();
  m_firstText.clear();
  if (getFirstDataAttributeAsString(&descriptor, &m_firstText) != 0) {
    return kelto::failure("Failed to get first attribute as string. TSC: %llu\n", timeOf(metric));
  }
  m_stateName = track.name;
  if (!m_firstText.empty()) {
    m_stateName += ' ';
    m_stateName += m_firstText;
  }
  if (writeStateMetadata(m_stateName, m_stateName, guess.fieldId) != 0) {
    return kelto::failure("Unable to write '%s' data field metadata. TSC: %llu\n", name,
                          timeOf(metric));
  }
  if (writeStateColorMetadata(m_stateName) != 0) {
    return kelto::failure("Unable to write '%s' data field color metadata. TSC: %llu\n", name,
                          timeOf(metric));
  }
  guess.colorId = static_cast<std::uint64_t>(colorIds.at(m_stateName));
  if (dependsOnName && fieldIds.contains(m_stateName)) {
    guess.descriptor = &descriptor;
    track.hasStateIds = true;
    track.fieldId = guess.fieldId;
    track.colorId = guess.colorId;
  }
  return 0;
}

kelto::DescriptorTrack& KeltoWriter::descriptorTrack(const pwr::DataDescriptor& descriptor) {
  const auto [entry, isNew] = m_cache.descriptors.try_emplace(&descriptor);
  if (isNew) {
    entry->second.name = descriptor.getName();
    if (entry->second.name.empty()) {
      entry->second.name = "NA";
    }
  }
  return entry->second;
}

int KeltoWriter::addElementAttributes(const pwr::Metric& metric, const EntityDataElement& element) {
  const pwr::AttributeValueManager* const fixed = element.descriptor;
  const char* const name = metric.name.c_str();
  const bool firstAsString = metric.metricType != pwr::Metric::TRACED_VALUE_TRANSITION;
  if (processInfoAttributes(fixed, &m_list) != 0) {
    return kelto::failure(
        "Unable to add '%s' data static field info attributes to the record. TSC: %llu\n", name,
        timeOf(metric));
  }
  if (processInfoAttributes(element.additionalInfo, &m_list) != 0) {
    return kelto::failure(
        "Unable to add '%s' field dynamic info attributes to the record. TSC: %llu\n", name,
        timeOf(metric));
  }
  if (processDataAttributes(fixed, &m_list, firstAsString) != 0) {
    return kelto::failure(
        "Unable to add '%s' field static data attributes to the record. TSC: %llu\n", name,
        timeOf(metric));
  }
  if (processDataAttributes(element.additionalInfo, &m_list, firstAsString) != 0) {
    return kelto::failure(
        "Unable to add '%s' field dynamic data attributes to the record. TSC: %llu\n", name,
        timeOf(metric));
  }
  return 0;
}
