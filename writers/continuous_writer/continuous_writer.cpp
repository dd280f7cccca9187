#include "writers/continuous_writer/continuous_writer.h"

#include "client/src/common/pw_log.h"
#include "client/src/common/real_to_integer.h"
#include "host/handles.h"
#include "host/logger.h"
#include "host/metric.h"
#include "host/pwset.h"
#include "host/system_metadata.h"
#include "writers/continuous_writer/metric_description.h"
#include "writers/output_handle.h"
#include "writers/sample_reading.h"

namespace {

using pwr::Metric;

constexpr const char* kNoDescriptor = "N/A";

/// The state of a value that is itself a state. A handle that is no descriptor although it says so
/// costs the sample its state only.
std::string tracedState(const pwr::Data& value) {
  const HeldDescriptor held = heldDescriptor(value);
  if (held.descriptor != nullptr) {
    return stateOf(*held.descriptor);
  }
  if (held.claimed) {
    pwr::logPlainWarning("WARNING: Continuous writer plugin failed to retrieve descriptor\n");
    return {};
  }
  std::string text;
  value.toFormattedString(text);
  return text;
}

std::string stateText(const Metric& metric, const pwr::DataElement& element) {
  if (isTraced(metric.metricType)) {
    return tracedState(*element.getValue());
  }
  const pwr::DataDescriptor* descriptor = element.getDescriptor();
  return descriptor == nullptr ? std::string() : stateOf(*descriptor);
}

std::string entityText(const pwr::EntityHandle* entity) {
  return entity == nullptr ? std::string() : entity->getQualifiedName();
}

}  // namespace

ContinuousWriter::Data::Data(int metric, const std::string& entityName,
                             const std::string& descriptorName, const std::string& stateText,
                             unsigned long ticks, double length, double number)
    : metricId(metric),
      entity(entityName),
      descriptor(descriptorName),
      state(stateText),
      timestamp(ticks),
      duration(length),
      value(number) {}

ContinuousWriter::ContinuousWriter() = default;

ContinuousWriter::ContinuousWriter(const std::string& base) : outputBase(base) {}

ContinuousWriter::~ContinuousWriter() = default;

int ContinuousWriter::writeMessage(const pwr::SystemMessage& message) {
  if (message.m_metadata == nullptr) {
    return 1;
  }
  systemMetadata = message.m_metadata;
  // In single precision: results of many runs are compared, and were always made so.
  tickScale = static_cast<double>(1.0F / systemMetadata->m_timestampFrequency);
  return 0;
}

int ContinuousWriter::writeMessage(const Metric& metric) {
  for (const pwr::DataElement* element : metric.getData().elements) {
    if (addSample_i(metric, *element) != 0) {
      return 1;
    }
  }
  return 0;
}

int ContinuousWriter::fini() {
  pwr::Logger* const output = outputHandle("");
  return output == nullptr ? 0 : output->finish();
}

int ContinuousWriter::addSample_i(const Metric& metric, const pwr::DataElement& element) {
  const pwr::DataDescriptor* descriptor = element.getDescriptor();
  std::string state = stateText(metric, element);
  const double duration = duration_i(metric, element);
  SampleValue value;
  if (readValue(metric, element, duration, value) != 0) {
    pwr::logPlainWarning("WARNING: Unable to retrieve data descriptor \n");
    return 1;
  }
  if (value.hasState) {
    state = value.state;
  }
  if (metric.metricType == Metric::SAMPLED_RESIDENCY) {
    value.value *= tickScale;
  }
  std::list<Data> made;
  made.emplace_back(static_cast<int>(metric.metricId), entityText(element.getEntity()),
                    descriptor == nullptr ? kNoDescriptor : descriptor->getName(), state,
                    metric.getData().timestamp, duration, value.value);
  addMetadataOnce_i(metric);
  data.splice(data.end(), made);
  return 0;
}

double ContinuousWriter::duration_i(const Metric& metric, const pwr::DataElement& element) const {
  if (hasNoDuration(metric)) {
    return 1.0;
  }
  const double microseconds = static_cast<double>(element.getDuration()) * tickScale;
  return static_cast<double>(pwr::realToUInt64(microseconds));
}

void ContinuousWriter::addMetadataOnce_i(const Metric& metric) {
  // Once per process, not per object or run: readers of a run join its files by metric id.
  static pwr::PWSet<unsigned int> metricsWithMetadataSent;
  if (metricsWithMetadataSent.contains(metric.metricId)) {
    return;
  }
  const auto described = metadata.emplace(metric.name, describeMetric(metric));
  try {
    metricsWithMetadataSent.add(metric.metricId);
  } catch (...) {
    metadata.erase(described);
    throw;
  }
}
