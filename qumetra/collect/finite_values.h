// Values that every result can hold.
#pragma once

#include <optional>

#include "host/metric.h"

namespace qumetra {

/// Whether the value is no NaN or infinity, nor a range with one at an end. True for whatever is no
/// real.
bool isFinite(const pwr::Data& value);

/// The metric without the elements whose values are not finite; nothing when all are finite. What
/// it points at belongs to the original.
std::optional<pwr::Metric> withFiniteValues(const pwr::Metric& metric);

}  // namespace qumetra
