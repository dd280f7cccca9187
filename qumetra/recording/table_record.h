// Tables as they stand in records.
#pragma once

#include "host/table.h"
#include "qumetra/model/model.h"
#include "qumetra/recording/definitions.h"
#include "qumetra/recording/record_object.h"

namespace qumetra {

/// Fills a fresh `table` from the members of `record`. The notes belong to the model. Throws
/// `RecordFault`.
void readTable(RecordObject& record, Model& model, const Definitions& definitions,
               pwr::TableMessage& table);

}  // namespace qumetra
