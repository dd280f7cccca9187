// Records of .pwr files as JSON.
#pragma once

#include <string>

#include "qumetra/readers/pwr_records.h"

namespace qumetra::cli {

/// Appends one object, without a line end: offset, type, kind and, where the record has one, its
/// size; then every field that does not follow from others, in the order of the file.
void appendPwrJson(std::string& out, const PwrRecord& record);

}  // namespace qumetra::cli
