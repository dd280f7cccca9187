// The order of metrics as it stands in a record.
#pragma once

#include "host/configuration.h"
#include "qumetra/recording/record_object.h"

namespace qumetra {

/// The order of features and metrics that the record tells. Throws `RecordFault`.
pwr::MetricOrder readConfig(RecordObject& record);

}  // namespace qumetra
