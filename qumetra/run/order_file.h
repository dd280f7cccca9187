// The file that tells the order of features and metrics in reports.
#pragma once

#include <stdexcept>
#include <string>

#include "host/configuration.h"

namespace qumetra {

/// An order file that cannot be used. `what()` is "FILE:LINE: what was wrong and what was
/// expected", or "FILE: reason" where it is no single line.
class OrderFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads an order file: a line "[feature]" begins a feature, each line below it names a metric.
/// Blanks around names do not count; empty lines and those that begin with "#" are skipped. A
/// feature, or a metric of one feature, that is named twice is an error, and so is a file that
/// names no feature. Throws `OrderFileError`.
pwr::MetricOrder readOrderFile(const std::string& path);

/// The order file that is installed with the tool, beside its directory; empty when there is none.
std::string defaultOrderFile();

}  // namespace qumetra
