#include "writers/sample_reading.h"

#include <utility>

#include "host/handles.h"
#include "host/quantity.h"
#include "writers/data_text.h"
#include "writers/held_handle.h"

namespace {

using pwr::Data;
using pwr::Metric;

bool isRange(const Data& value) {
  return value.m_tag == Data::kIntRange || value.m_tag == Data::kUIntRange ||
         value.m_tag == Data::kRealRange;
}

void setNumbers(const Data& value, SampleValue& out) {
  static_cast<ValueNumbers&>(out) = numbersOf(value);
}

void setState(std::string state, double duration, SampleValue& out) {
  out.value = duration;
  out.hasState = true;
  out.state = std::move(state);
}

/// The value of a `SAMPLED_VALUE` metric, which may be a state: a text or a handle.
int readSampledValue(const Data& value, double duration, SampleValue& out) {
  if (value.m_tag == Data::kString) {
    std::string text;
    static_cast<void>(value.toString(text));
    out.isState = true;
    setState(std::move(text), duration, out);
    return 0;
  }
  if (value.m_tag != Data::kHandle) {
    setNumbers(value, out);
    return 0;
  }
  out.isState = true;
  const HeldDescriptor held = heldDescriptor(value);
  if (held.descriptor != nullptr) {
    setState(held.descriptor->getName(), duration, out);
  }
  return held.claimed && held.descriptor == nullptr ? 1 : 0;
}

}  // namespace

bool hasNoDuration(const Metric& metric) {
  if (metric.metricType == Metric::SAMPLED_VALUE && metric.quantity != nullptr) {
    return metric.quantity->toQuantity() == pwr::Quantity::kRate;
  }
  return metric.metricType == Metric::SAMPLED_VALUE || metric.metricType == Metric::TRACED_EVENT;
}

const char* metricTypeName(Metric::MetricType type) {
  switch (type) {
    case Metric::SAMPLED_DELTA:
      return "SAMPLED_DELTA";
    case Metric::SAMPLED_RESIDENCY:
      return "SAMPLED_RESIDENCY";
    case Metric::SAMPLED_VALUE:
      return "SAMPLED_VALUE";
    case Metric::TRACED_VALUE_TRANSITION:
      return "TRACED_VALUE_TRANSITION";
    case Metric::TRACED_EVENT:
      return "TRACED_EVENT";
  }
  return "UNKNOWN";
}

bool isTraced(Metric::MetricType type) {
  return type == Metric::TRACED_VALUE_TRANSITION || type == Metric::TRACED_EVENT;
}

int firstAttributeText(const pwr::AttributeValueManager& attributes, std::string& out) {
  const auto first = attributes.begin();
  return first == attributes.end() ? 1 : getStringFromData_i(&first->second, &out);
}

bool claimsToBeDescriptor(const pwr::DataHandle& handle) {
  return handle.getHandleType() == pwr::DataHandle::kDescriptorType;
}

HeldDescriptor heldDescriptor(const Data& value) {
  const pwr::DataHandle* const handle = handleIn(value);
  if (handle == nullptr || !claimsToBeDescriptor(*handle)) {
    return {};
  }
  return {true, dynamic_cast<const pwr::DataDescriptor*>(handle)};
}

std::string nameOf(const pwr::DataHandle* handle) {
  return handle == nullptr ? std::string() : handle->getName();
}

ValueNumbers numbersOf(const Data& value) {
  ValueNumbers numbers;
  if (value.toReal(numbers.value) == 0) {
    return numbers;  // By far the most frequent, and nothing to convert.
  }
  const Data real = Data::convertToReal(&value);
  numbers.isRange = isRange(value);
  if (!numbers.isRange) {
    static_cast<void>(real.toReal(numbers.value));
    return numbers;
  }
  Data::RealRange range{};
  static_cast<void>(real.toRealRange(range));
  numbers.value = range.first;
  numbers.high = range.second;
  return numbers;
}

int readValue(const Metric& metric, const pwr::DataElement& element, double duration,
              SampleValue& out) {
  const Data& value = *element.getValue();
  switch (metric.metricType) {
    case Metric::TRACED_VALUE_TRANSITION:
      out.value = duration;
      return 0;
    case Metric::TRACED_EVENT:
      out.value = 1.0;
      return 0;
    case Metric::SAMPLED_VALUE:
      return readSampledValue(value, duration, out);
    default:
      if (value.m_tag != Data::kHandle) {
        setNumbers(value, out);
      }
      return 0;
  }
}
