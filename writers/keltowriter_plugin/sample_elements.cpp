// Samples as the host delivers them, brought into the form of the record: elements by entity.
#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "host/handles.h"
#include "host/metric.h"
#include "writers/held_handle.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/metric_types.h"

namespace {

using kelto::kNoElement;

/// Metrics whose names contain one of these have nothing that the viewer could show.
constexpr std::array<std::string_view, 6> kUnsupportedNames = {
    "CPU PkgC Dbg",
    "C-State Debug",
    "TypeC Subsystem",
    "S0ix Substate Requirements",
    "Discrete Graphics HBM Bandwidth",
    "Discrete Graphics Cross Tile Hops",
};

bool isUnsupported(const std::string& name) {
  return std::any_of(
      kUnsupportedNames.begin(), kUnsupportedNames.end(),
      [&name](std::string_view part) { return name.find(part) != std::string::npos; });
}

bool isTraced(const pwr::Metric& metric) {
  return metric.metricType == pwr::Metric::TRACED_VALUE_TRANSITION ||
         metric.metricType == pwr::Metric::TRACED_EVENT;
}

std::uint8_t tagOf(const pwr::Data* value) {
  return value == nullptr ? std::uint8_t{pwr::Data::kNone} : value->m_tag;
}

/// The descriptor that a handle value names; null when it names none.
const pwr::DataDescriptor* describedBy(const pwr::Data& value) {
  const pwr::DataHandle* const handle = handleIn(value);
  if (handle == nullptr || handle->getHandleType() != pwr::DataHandle::kDescriptorType) {
    return nullptr;
  }
  return dynamic_cast<const pwr::DataDescriptor*>(handle);
}

/// A descriptor for a state that comes as a text.
const pwr::DataDescriptor* makeDescriptor(const pwr::Metric& metric, const pwr::Data& value) {
  std::string text;
  value.toString(text);
  pwr::DataDescriptor* const descriptor =
      pwr::DataDescriptor::create(pwr::DataDescriptorBuilder(text, "value"));
  descriptor->addAttributeValue(
      pwr::Attribute::create("value", metric.quantity, pwr::AttributeType::Info), value);
  return descriptor;
}

/// Puts the value's descriptor in the value's place. False when the value names none.
bool takeDescriptorOfValue(EntityDataElement& element) {
  element.descriptor = describedBy(*element.value);
  element.value = nullptr;
  return element.descriptor != nullptr;
}

int takeSampledValue(const pwr::Metric& metric, const pwr::DataElement& source,
                     EntityDataElement& element, std::uint16_t& hint) {
  const std::uint8_t tag = tagOf(element.value);
  if (tag == pwr::Data::kString || tag == pwr::Data::kHandle) {
    hint = kelto::kSampledFiniteSetValue;
  }
  if (tag == pwr::Data::kHandle && !takeDescriptorOfValue(element)) {
    return kelto::failure("Malformed Sampled Value metric. Metric: '%s'\n", metric.name.c_str());
  }
  if (element.descriptor == nullptr) {
    element.descriptor = source.getKeltoDescriptor();
  }
  return 0;
}

int takeTracedValue(const pwr::Metric& metric, EntityDataElement& element) {
  const std::uint8_t tag = tagOf(element.value);
  if (tag == pwr::Data::kString) {
    element.descriptor = makeDescriptor(metric, *element.value);
  }
  if (tag == pwr::Data::kHandle && !takeDescriptorOfValue(element)) {
    return kelto::failure("Malformed Traced metric. Metric: '%s'\n", metric.name.c_str());
  }
  return 0;
}

/// Reads a sample's element into the form of the record.
int takeElement(const pwr::Metric& metric, const pwr::DataElement& source,
                EntityDataElement& element, std::uint16_t& hint) {
  element = {source.getDescriptor(), source.getValue(), source.getDuration(),
             source.getAdditionalInfo()};
  if (metric.metricType == pwr::Metric::SAMPLED_VALUE) {
    return takeSampledValue(metric, source, element, hint);
  }
  if (isTraced(metric)) {
    return takeTracedValue(metric, element);
  }
  if (metric.metricType == pwr::Metric::SAMPLED_RESIDENCY &&
      tagOf(element.value) != pwr::Data::kUInt) {
    return kelto::failure("Wrong data type used for residency metric. Metric: '%s'\n",
                          metric.name.c_str());
  }
  return 0;
}

/// The track of an entity, which is most often that of the last sample's element at `position`.
std::uint32_t entityIndex(kelto::MetricTrack& track, const pwr::EntityHandle* entity,
                          std::size_t position) {
  if (position < track.lastSample.size()) {
    const std::uint32_t guess = track.lastSample[position];
    if (track.entities[guess].entity == entity) {
      return guess;
    }
  }
  const auto next = static_cast<std::uint32_t>(track.entities.size());
  const auto [entry, isNew] = track.entityIndex.emplace(entity, next);
  if (isNew) {
    track.entities.push_back({.entity = entity, .id = entity->getId()});
  }
  if (position >= track.lastSample.size()) {
    track.lastSample.resize(position + 1, entry->second);
  }
  return track.lastSample[position] = entry->second;
}

}  // namespace

kelto::MetricTrack& KeltoWriter::trackOf(const pwr::Metric& metric) {
  kelto::MetricTrack*& last = m_cache.lastMetric;
  if (last != nullptr && last->id == metric.metricId && last->name == metric.name) {
    return *last;
  }
  kelto::MetricTracks& tracks = m_cache.metrics[metric.metricId];
  if (tracks.last == nullptr || tracks.last->name != metric.name) {
    tracks.last = &trackByName(metric, tracks);
  }
  return *(last = tracks.last);
}

kelto::MetricTrack& KeltoWriter::trackByName(const pwr::Metric& metric,
                                             kelto::MetricTracks& tracks) const {
  const auto [entry, isNew] = tracks.byName.try_emplace(metric.name);
  kelto::MetricTrack& track = entry->second;
  if (isNew) {
    track.id = metric.metricId;
    track.name = metric.name;
    track.key = getNameIdKey(metric.name, metric.metricId);
    track.isUnsupported = isUnsupported(metric.name);
  }
  return track;
}

/// Sorts the sample's elements by entity. What they name stays as it was in `m_sample`.
int KeltoWriter::takeElements(const pwr::Metric& metric, kelto::MetricTrack& track,
                              std::uint16_t& hint) {
  const std::vector<const pwr::DataElement*>& sources = metric.getData().elements;
  m_sample.elements.resize(sources.size());
  m_sample.entities.clear();
  ++m_sample.number;
  for (std::size_t position = 0; position < sources.size(); ++position) {
    kelto::LinkedElement& element = m_sample.elements[position];
    element.next = kNoElement;
    if (takeElement(metric, *sources[position], element.data, hint) != 0) {
      return 1;
    }
    const std::uint32_t index = entityIndex(track, sources[position]->getEntity(), position);
    kelto::EntityTrack& entity = track.entities[index];
    const auto number = static_cast<std::uint32_t>(position);
    if (entity.sampleNumber != m_sample.number) {
      entity.sampleNumber = m_sample.number;
      entity.first = number;
      m_sample.entities.push_back(index);
    } else {
      m_sample.elements[entity.last].next = number;
    }
    entity.last = number;
  }
  return 0;
}
