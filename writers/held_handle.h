// The object that a value points at.
#pragma once

#include "host/data.h"

namespace pwr {
class DataDescriptor;
}  // namespace pwr

/// The handle in a value; null when it holds none, or a null one.
const pwr::DataHandle* handleIn(const pwr::Data& value);

/// The descriptor in a value; null when it holds none.
const pwr::DataDescriptor* descriptorIn(const pwr::Data& value);
