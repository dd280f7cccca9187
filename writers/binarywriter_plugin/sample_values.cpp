// What a sample says: duration and value by the kinds of metric and value.
#include "client/src/common/pw_log.h"
#include "client/src/common/real_to_integer.h"
#include "host/data.h"
#include "host/handles.h"
#include "host/metric.h"
#include "writers/binarywriter_plugin/binary_writer_impl.h"
#include "writers/sample_reading.h"

namespace {

/// A text or a descriptor: what is told of it is how long it lasted.
bool isState(const pwr::Data& data) {
  if (data.m_tag != pwr::Data::kHandle) {
    return data.m_tag == pwr::Data::kString;
  }
  const pwr::DataHandle* const handle = handleOf(data);
  return handle != nullptr && claimsToBeDescriptor(*handle);
}

}  // namespace

int BinaryWriter::Impl::checkHandle(const Sampling& sampling, const pwr::Data& data) {
  if (sampling.metric.metricType != pwr::Metric::SAMPLED_VALUE) {
    return 0;
  }
  const pwr::DataHandle* const handle = handleOf(data);
  if (handle != nullptr && (!claimsToBeDescriptor(*handle) ||
                            dynamic_cast<const pwr::DataDescriptor*>(handle) != nullptr)) {
    return 0;
  }
  pwr::logPlainWarning("WARNING: Binary writer plugin failed to retrieve descriptor\n");
  return 1;
}

BinaryWriter::Impl::Value BinaryWriter::Impl::valueOf(const Sampling& sampling,
                                                      const pwr::DataElement& element,
                                                      const pwr::Data& data) const {
  const std::uint64_t duration = durationOf(sampling, element);
  switch (sampling.metric.metricType) {
    case pwr::Metric::SAMPLED_VALUE:
      return {duration, isState(data) ? static_cast<double>(duration) : numbersOf(data).value};
    case pwr::Metric::TRACED_VALUE_TRANSITION:
      return {duration, static_cast<double>(duration)};
    case pwr::Metric::TRACED_EVENT:
      return {duration, 1};
    case pwr::Metric::SAMPLED_RESIDENCY:
      return {duration, numbersOf(data).value * tickScale};
    default:
      return {duration, numbersOf(data).value};
  }
}

std::uint64_t BinaryWriter::Impl::durationOf(const Sampling& sampling,
                                             const pwr::DataElement& element) const {
  if (sampling.noDuration) {
    return 1;
  }
  return pwr::realToUInt64(static_cast<double>(element.getDuration()) * tickScale);
}
