// Records of .pwr files as text for people.
#pragma once

#include <string>

#include "qumetra/readers/pwr_names.h"
#include "qumetra/readers/pwr_records.h"

namespace qumetra::cli {

/// Tells the records of one file, in its order. What was declared is shown with its name; names are
/// quoted as in JSON. Fields that are always the same are left out. Not synchronised.
class PwrText {
 public:
  /// Appends one line, without its end.
  void append(std::string& out, const PwrRecord& record);

 private:
  PwrNames m_names;
};

}  // namespace qumetra::cli
