#include "writers/json_plugin_helper/series_writer.h"

#include <cstddef>
#include <limits>
#include <utility>

#include "client/src/common/number_text.h"
#include "client/src/common/pw_log.h"
#include "client/src/common/real_to_integer.h"
#include "host/handles.h"
#include "host/messages.h"
#include "host/quantity.h"
#include "host/system_metadata.h"
#include "writers/capability.h"
#include "writers/data_text.h"
#include "writers/json_plugin_helper/state_order.h"
#include "writers/sample_reading.h"

namespace {

using pwr::Metric;

std::string versionText(const pwr::VersionRecord& version) {
  const auto text = [](unsigned short part) { return pwr::toString(part); };
  return text(version.major) + "." + text(version.minor) + "." + text(version.third);
}

/// Each argument behind a blank.
std::string joinedArguments(const pwr::SystemMetadata& system) {
  std::string text;
  for (const std::string& argument : system.m_collectorArguments) {
    text += ' ' + argument;
  }
  return text;
}

/// Ends at the first zero byte. Characters count as signed.
std::uint32_t hashOf(const std::string& text) {
  std::uint32_t hash = 0;
  for (const char* c = text.c_str(); *c != '\0'; ++c) {
    hash = hash * 101U + static_cast<std::uint32_t>(static_cast<signed char>(*c));
  }
  return hash;
}

std::uint64_t seriesId(const std::string& name, const Metric& metric,
                       const pwr::EntityHandle* entity) {
  const std::uint64_t entityId = entity == nullptr ? 0 : entity->getId();
  const std::uint64_t ids = (std::uint64_t{metric.metricId} << 32U) | (entityId & 0xffffffffU);
  return hashOf(name) + ids;
}

std::vector<JsonUnit> unitsOf(const Metric& metric) {
  std::vector<JsonUnit> units;
  if (metric.quantity == nullptr) {
    return units;
  }
  units.emplace_back(metric.quantity->toQuantityString(), metric.quantity->toUnitsString(), 1.0,
                     metric.quantity->toQuantity() == pwr::Quantity::kRate);
  const pwr::Quantity* rate = nullptr;
  double factor = 1.0;
  if (metric.quantity->getRateConversion(rate, factor) == 0 && rate != nullptr) {
    units.emplace_back(rate->toQuantityString(), rate->toUnitsString(), factor, true);
  }
  return units;
}

}  // namespace

/// What an element says, before its series is known.
struct SeriesWriter::Sample {
  std::string key;
  std::string name;
  std::string state;
  SampleValue value;
  std::uint64_t duration = 0;
  bool stated = false;
};

SeriesWriter::SeriesWriter(const SeriesWriterForm& form)
    : WriterPlugin(form.guid), extension(form.extension), m_keepsStateNames(form.keepsStateNames) {
  declareCapability(*this, {.option = form.option,
                            .description = form.description,
                            .suffix = form.extension,
                            .flags = form.flags});
}

SeriesWriter::~SeriesWriter() = default;

int SeriesWriter::init(const std::string& base, bool isContinuous) {
  return withoutException([&] {
    std::string name = base + extension;
    if (isContinuous && contWriter == nullptr) {
      contWriter = std::make_unique<ContWriter>(base);
    }
    fileName = std::move(name);
    continuous = isContinuous;
    return 0;
  });
}

int SeriesWriter::flushContinuousResults(const pwr::SystemMetadata& metadata) {
  if (contWriter == nullptr) {
    return 0;
  }
  constexpr int kNothingWritten = 0;
  return withoutException(
      [&] {
        contWriter->extension = extension;
        return contWriter->flushContinuousResults(metadata);
      },
      kNothingWritten);
}

int SeriesWriter::writeMessage(const pwr::TextMessage& /*message*/) { return 0; }

int SeriesWriter::writeMessage(const pwr::SystemMessage& message) {
  if (message.m_metadata == nullptr) {
    return 1;
  }
  return withoutException([&] {
    takeSystem_i(*message.m_metadata);
    return continuous ? contWriter->writeMessage(message) : 0;
  });
}

int SeriesWriter::writeMessage(const Metric& metric) {
  return withoutException(
      [&] { return continuous ? contWriter->writeMessage(metric) : takeElements_i(metric); });
}

std::uint64_t SeriesWriter::addSeries(const std::string& key, const std::string& name,
                                      const Metric& metric, const pwr::DataElement* element,
                                      bool stated) {
  const std::uint64_t id = seriesId(name, metric, element->getEntity());
  if (!series.contains(id)) {
    auto made = std::make_unique<Series>(metric.name, unitsOf(metric), key, name, metric.metricType,
                                         stated);
    declareStates_i(metric, *made);
    series.emplace(id, std::move(made));
  }
  return id;
}

std::string SeriesWriter::getState(const pwr::DataElement* element, bool byValue) {
  const pwr::DataDescriptor* descriptor = element->getDescriptor();
  if (byValue) {
    descriptor = heldDescriptor(*element->getValue()).descriptor;
  }
  if (descriptor != nullptr) {
    return stateOf(*descriptor);
  }
  std::string text;
  if (byValue) {
    element->getValue()->toFormattedString(text);
  }
  return text;
}

const char* SeriesWriter::getTypeString(Metric::MetricType type) { return metricTypeName(type); }

int SeriesWriter::getStringFromData(const pwr::Data* value, std::string* out) {
  return getStringFromData_i(value, out);
}

int SeriesWriter::getFirstDataAttributeAsString(const pwr::AttributeValueManager* attributes,
                                                std::string* out) {
  return attributes == nullptr ? 1 : firstAttributeText(*attributes, *out);
}

bool SeriesWriter::isNumeric(const std::string& state) { return isNumericState(state); }

void SeriesWriter::sortStates(std::vector<std::string>& states) { sortStateNames(states); }

std::unordered_map<std::string, SeriesWriter::Category> SeriesWriter::seriesByCategory() const {
  std::unordered_map<std::string, Category> categories;
  for (const auto& [id, one] : series) {
    categories[one->categoryText()].push_back(one.get());
  }
  return categories;
}

void SeriesWriter::takeSystem_i(const pwr::SystemMetadata& system) {
  if (!continuous) {
    std::string arguments = joinedArguments(system);
    std::string tool = versionText(system.m_toolVersion);
    std::string driver = versionText(system.m_driverVersion);
    commandLine = std::move(arguments);
    toolVersion = std::move(tool);
    driverVersion = std::move(driver);
  }
  systemMetadata = &system;
  startTimestamp = system.m_firstTimestamp;
  tickScale = 1.0F / system.m_timestampFrequency;
}

int SeriesWriter::takeElements_i(const Metric& metric) {
  const pwr::SampleData& data = metric.getData();
  const std::uint64_t end = microseconds_i(data.timestamp - startTimestamp);
  std::uint64_t previousId = std::numeric_limits<std::uint64_t>::max();
  for (const pwr::DataElement* element : data.elements) {
    if (addElement_i(metric, *element, end, previousId) != 0) {
      return 1;
    }
  }
  return 0;
}

int SeriesWriter::addElement_i(const Metric& metric, const pwr::DataElement& element,
                               std::uint64_t end, std::uint64_t& previousId) {
  Sample sample;
  if (readSample_i(metric, element, sample) != 0) {
    pwr::logPlainWarning("WARNING: Unable to retrieve data descriptor\n");
    return 1;
  }
  const std::size_t formerCount = series.size();
  const std::uint64_t id = addSeries(sample.key, sample.name, metric, &element, sample.stated);
  try {
    addPoint_i(*series.at(id), sample, end, id == previousId);
  } catch (...) {
    if (series.size() > formerCount) {
      series.erase(id);  // None stays without a point.
    }
    throw;
  }
  previousId = id;
  return 0;
}

void SeriesWriter::addPoint_i(Series& target, const Sample& sample, std::uint64_t end,
                              bool isSamePoint) {
  const SampleValue& value = sample.value;
  // A first id of all ones looks as if it had come before.
  if (isSamePoint && target.hasPoints()) {
    // The high end of a range has no place in a point that is there already.
    target.appendData(sample.state, value.value);
  } else if (value.isRange) {
    target.addData(end - sample.duration, end, sample.state, value.value, value.high);
  } else {
    target.addData(end - sample.duration, end, sample.state, value.value);
  }
}

int SeriesWriter::readSample_i(const Metric& metric, const pwr::DataElement& element,
                               Sample& out) const {
  out.duration = hasNoDuration(metric) ? 1 : microseconds_i(element.getDuration());
  if (readValue(metric, element, static_cast<double>(out.duration), out.value) != 0) {
    return 1;
  }
  out.state = out.value.hasState ? std::move(out.value.state)
                                 : getState(&element, isTraced(metric.metricType));
  out.name = nameOf(element.getEntity());
  out.key = out.name;
  out.stated = metric.metricType != Metric::SAMPLED_VALUE || out.value.isState;
  if (metric.metricType == Metric::SAMPLED_DELTA) {
    // Each state of a counter is a series of its own.
    out.key += ' ' + out.state;
    out.name = out.state;
    out.stated = false;
  } else if (metric.metricType == Metric::SAMPLED_RESIDENCY) {
    out.value.value *= static_cast<double>(tickScale);
  }
  return 0;
}

std::uint64_t SeriesWriter::microseconds_i(std::uint64_t ticks) const {
  const float scaled = static_cast<float>(ticks) * tickScale;
  return pwr::realToUInt64(static_cast<double>(scaled));
}

void SeriesWriter::declareStates_i(const Metric& metric, Series& target) const {
  Series::StateNames names;
  for (const pwr::Data& state : metric.states) {
    const HeldDescriptor held = heldDescriptor(state);
    std::string text;
    if (held.descriptor != nullptr && namedFirstAttributeText(*held.descriptor, text) == 0) {
      target.addState(text);
      names[target.getStateId(text)] = text;
    }
  }
  if (m_keepsStateNames) {
    target.setStateNames(std::move(names));
  }
}
