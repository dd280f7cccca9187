// The one way in which the continuous, JSON and binary writers turn a value into text.
#pragma once

#include <string>

#include "host/data.h"

/// Sets `out` to the text of `data`: numbers as a stream prints them by default (reals with six
/// significant digits), ranges as low, " - ", high, strings as they are. Returns 0, or 1 for a
/// value that has no text here: null, no kind, a handle, an unknown tag. `out` is left alone then.
/// REQUIRES: `out` is not null.
int getStringFromData_i(const pwr::Data* data, std::string* out);
