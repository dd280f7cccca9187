#include "qumetra/collect/finite_values.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace qumetra {
namespace {

bool hasFiniteValue(const pwr::DataElement* element) { return isFinite(*element->getValue()); }

}  // namespace

bool isFinite(const pwr::Data& value) {
  double real = 0;
  pwr::Data::RealRange range{0, 0};
  if (value.m_tag == pwr::Data::kReal) {
    value.toReal(real);
  } else if (value.m_tag == pwr::Data::kRealRange) {
    value.toRealRange(range);
  }
  return std::isfinite(real) && std::isfinite(range.first) && std::isfinite(range.second);
}

std::optional<pwr::Metric> withFiniteValues(const pwr::Metric& metric) {
  const pwr::SampleData& data = metric.getData();
  if (std::all_of(data.elements.begin(), data.elements.end(), hasFiniteValue)) {
    return std::nullopt;
  }
  pwr::SampleData finite{.timestamp = data.timestamp, .elements = {}};
  std::copy_if(data.elements.begin(), data.elements.end(), std::back_inserter(finite.elements),
               hasFiniteValue);
  pwr::Metric result = metric;
  result.setData(std::move(finite));
  return result;
}

}  // namespace qumetra
