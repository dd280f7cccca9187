// How the elements of a message become samples. What runs per sample stands here and, inline, in
// SampleBlock and RecentIndex: nothing else of this writer counts in a long collection.
#include <algorithm>

#include "client/src/common/pw_log.h"
#include "client/src/common/real_to_integer.h"
#include "host/data.h"
#include "host/handles.h"
#include "host/metric.h"
#include "host/pwset.h"
#include "writers/binarywriter_plugin/binary_writer_impl.h"
#include "writers/binarywriter_plugin/records.h"
#include "writers/held_handle.h"
#include "writers/sample_reading.h"

namespace {

/// The ids of the metrics that were told, by whichever writer of the process. A metric is told once
/// in the life of a process, so a second collection does not tell it again.
pwr::PWSet<std::uint32_t>& metricsWithMetadataSent() {
  static pwr::PWSet<std::uint32_t> s_metrics;
  return s_metrics;
}

/// Whether `data` is a state: a text or a descriptor. Sets `failed` for a handle that says that it
/// is a descriptor and is none, and for null.
bool isState(const pwr::Data& data, bool& failed) {
  if (data.m_tag != pwr::Data::kHandle) {
    return data.m_tag == pwr::Data::kString;
  }
  const pwr::DataHandle* const handle = handleIn(data);
  const bool claimed = handle != nullptr && claimsToBeDescriptor(*handle);
  failed =
      handle == nullptr || (claimed && dynamic_cast<const pwr::DataDescriptor*>(handle) == nullptr);
  return claimed;
}

}  // namespace

int BinaryWriter::Impl::writeMessage(const pwr::Metric& metric) {
  const pwr::SampleData& sample = metric.getData();
  if (sample.elements.empty()) {
    return 0;
  }
  const Sampling sampling = samplingOf(metric);
  bool isMetricTold = false;
  m_statesRead.reset();
  m_samples.startMessage(sample.timestamp, metric.metricId);
  for (const pwr::DataElement* element : sample.elements) {
    // Numbers are given in the order of first use: descriptor, metric, name of the sample.
    const pwr::DataDescriptor* const descriptor = element->getDescriptor();
    const std::uint16_t descriptorIndex = getDescriptorIdx_i(descriptor);
    const std::uint64_t duration = durationOf(sampling, *element);
    double value = 0;
    if (readValue(sampling, *element->getValue(), duration, value) != 0) {
      return 1;
    }
    if (!isMetricTold) {
      if (m_toldMetrics.find(metric.metricId) == 0) {
        tellMetric(metric);
      }
      isMetricTold = true;
    }
    const std::uint16_t nameIndex = sampling.type == pwr::Metric::SAMPLED_DELTA
                                        ? getStateIdx_i(descriptor, descriptorIndex)
                                        : getEntityIdx_i(element->getEntity());
    m_samples.append(static_cast<float>(duration), nameIndex, descriptorIndex,
                     static_cast<float>(value));
  }
  return 0;
}

BinaryWriter::Impl::Sampling BinaryWriter::Impl::samplingOf(const pwr::Metric& metric) const {
  const pwr::Metric::MetricType type = metric.metricType;
  return {type, !isTraced(type), hasNoDuration(metric),
          type == pwr::Metric::SAMPLED_RESIDENCY ? tickScale : 1};
}

inline std::uint64_t BinaryWriter::Impl::durationOf(const Sampling& sampling,
                                                    const pwr::DataElement& element) const {
  if (sampling.noDuration) {
    return 1;
  }
  return pwr::realToUInt64(static_cast<double>(element.getDuration()) * tickScale);
}

inline int BinaryWriter::Impl::readValue(const Sampling& sampling, const pwr::Data& data,
                                         std::uint64_t duration, double& value) {
  if (sampling.isSampled && data.toReal(value) == 0) {
    value *= sampling.scale;  // By far the most frequent.
    return 0;
  }
  return readRareValue(sampling, data, duration, value);
}

int BinaryWriter::Impl::readRareValue(const Sampling& sampling, const pwr::Data& data,
                                      std::uint64_t duration, double& value) {
  if (!sampling.isSampled) {
    value = sampling.type == pwr::Metric::TRACED_EVENT ? 1 : static_cast<double>(duration);
    return 0;
  }
  bool failed = false;
  if (sampling.type == pwr::Metric::SAMPLED_VALUE && isState(data, failed)) {
    value = static_cast<double>(duration);
  } else {
    value = numbersOf(data).value * sampling.scale;
  }
  if (failed) {
    pwr::logPlainWarning("WARNING: Binary writer plugin failed to retrieve descriptor\n");
  }
  return failed ? 1 : 0;
}

void BinaryWriter::Impl::tellMetric(const pwr::Metric& metric) {
  pwr::PWSet<std::uint32_t>& told = metricsWithMetadataSent();
  if (!told.contains(metric.metricId)) {
    const Record record = createMetricMeta_i(metric);
    std::vector<char>& records = buffers[pwr::bin::MsgType::Metric];
    pwr::bin::reserveMore(records, record.size());
    told.add(metric.metricId);
    // Nothing fails from here on: a metric that counts as told is.
    pwr::bin::appendBytes(records, record);
    std::copy_n(record.begin(), metricMessage.size(), metricMessage.begin());
  }
  m_toldMetrics.add(metric.metricId, 1);
}

inline std::uint16_t BinaryWriter::Impl::getEntityIdx_i(const pwr::EntityHandle* entity) {
  const std::uint16_t recent = m_entityNames.find(entity);
  return recent != 0 ? recent : addEntity(entity);
}

inline std::uint16_t BinaryWriter::Impl::getStateIdx_i(const pwr::DataDescriptor* descriptor,
                                                       std::uint16_t descriptorIndex) {
  const std::size_t place = descriptorIndex % kRecentStates;
  RecentState& recent = m_recentStates[place];
  // The number 0 is none: a state that got it gets another when it comes again.
  if (!m_statesRead[place] || recent.descriptor != descriptor || recent.index == 0) {
    recent = {descriptor, readStateIdx(descriptor)};
    m_statesRead[place] = true;
  }
  return recent.index;
}

inline std::uint16_t BinaryWriter::Impl::readStateIdx(const pwr::DataDescriptor* descriptor) {
  getState_i(descriptor, m_state);
  const std::uint16_t recent = m_stateNames.find(m_state);
  return recent != 0 ? recent : addState();
}

inline void BinaryWriter::Impl::getState_i(const pwr::DataDescriptor* descriptor,
                                           std::string& out) {
  if (descriptor == nullptr) {
    out.clear();
  } else {
    readState(*descriptor, out);
  }
}
