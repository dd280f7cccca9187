// What a sample says: duration and value by the kinds of metric and value.
#include "client/src/common/pw_log.h"
#include "client/src/common/real_to_integer.h"
#include "host/data.h"
#include "host/handles.h"
#include "host/metric.h"
#include "writers/binarywriter_plugin/binary_writer_impl.h"

namespace {

bool isRange(const pwr::Data& data) {
  return data.m_tag >= pwr::Data::kIntRange && data.m_tag <= pwr::Data::kRealRange;
}

/// A number, or the low end of a range; 0 for what is neither.
double numberOf(const pwr::Data& data) {
  double number = 0;
  if (data.toReal(number) == 0 || data.m_tag == pwr::Data::kHandle) {
    return number;
  }
  const pwr::Data real = pwr::Data::convertToReal(&data);
  if (!isRange(data)) {
    real.toReal(number);
    return number;
  }
  pwr::Data::RealRange range{0, 0};
  real.toRealRange(range);
  return range.first;
}

}  // namespace

int BinaryWriter::Impl::readValue(const Sampling& sampling, const pwr::DataElement& element,
                                  Value& out) const {
  out.duration = durationOf(sampling, element);
  const pwr::Data& data = *element.getValue();
  switch (sampling.metric.metricType) {
    case pwr::Metric::SAMPLED_VALUE:
      return readSampledValue(data, out);
    case pwr::Metric::TRACED_VALUE_TRANSITION:
      out.value = static_cast<double>(out.duration);
      return 0;
    case pwr::Metric::TRACED_EVENT:
      out.value = 1;
      return 0;
    case pwr::Metric::SAMPLED_RESIDENCY:
      out.value = numberOf(data) * tickScale;
      return 0;
    default:
      out.value = numberOf(data);
      return 0;
  }
}

int BinaryWriter::Impl::readSampledValue(const pwr::Data& data, Value& out) const {
  if (data.m_tag == pwr::Data::kString) {
    out.value = static_cast<double>(out.duration);
    return 0;
  }
  if (data.m_tag != pwr::Data::kHandle) {
    out.value = numberOf(data);
    return 0;
  }
  const pwr::DataHandle* handle = nullptr;
  data.toHandle(handle);
  if (handle != nullptr && handle->getHandleType() != pwr::DataHandle::kDescriptorType) {
    return 0;
  }
  if (dynamic_cast<const pwr::DataDescriptor*>(handle) == nullptr) {
    pwr::logPlainWarning("WARNING: Binary writer plugin failed to retrieve descriptor\n");
    return 1;
  }
  out.value = static_cast<double>(out.duration);
  return 0;
}

std::uint64_t BinaryWriter::Impl::durationOf(const Sampling& sampling,
                                             const pwr::DataElement& element) const {
  if (sampling.noDuration) {
    return 1;
  }
  return pwr::realToUInt64(static_cast<double>(element.getDuration()) * tickScale);
}
