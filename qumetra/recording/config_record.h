// The order of metrics as it stands in a record.
#pragma once

#include "qumetra/recording/record_object.h"

namespace qumetra {

/// Replaces the process-wide order of features and metrics by that of the record. Throws
/// `RecordFault`, and then changes nothing.
void readConfig(RecordObject& record);

}  // namespace qumetra
