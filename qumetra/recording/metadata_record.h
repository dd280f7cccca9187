// The description of the measured system as it stands in records.
#pragma once

#include "host/system_metadata.h"
#include "qumetra/model/model.h"
#include "qumetra/recording/record_object.h"

namespace qumetra {

/// Sets the members of `metadata` that `record` gives and leaves the others alone. Platform entries
/// belong to the model. Throws `RecordFault`.
void readMetadata(RecordObject& record, Model& model, pwr::SystemMetadata& metadata);

/// Replaces the platform entries of `metadata` by a list of them.
void readPlatform(RecordList list, Model& model, pwr::SystemMetadata& metadata);

}  // namespace qumetra
