// Accesses to hardware, what describes them, and telemetry counters, all at once.
#pragma once

#include "client/src/common/aggr_telem_immediate.h"   // IWYU pragma: export
#include "client/src/common/aggr_telem_operation.h"   // IWYU pragma: export
#include "client/src/common/bit_range.h"              // IWYU pragma: export
#include "client/src/common/counter_field.h"          // IWYU pragma: export
#include "client/src/common/enable_register_pmc.h"    // IWYU pragma: export
#include "client/src/common/fixed_point.h"            // IWYU pragma: export
#include "client/src/common/hw_operation.h"           // IWYU pragma: export
#include "client/src/common/hw_operation_metadata.h"  // IWYU pragma: export
#include "client/src/common/input_msg.h"              // IWYU pragma: export
#include "client/src/common/mmio_operation.h"         // IWYU pragma: export
#include "client/src/common/pch_utils.h"              // IWYU pragma: export
#include "client/src/common/pci_operation.h"          // IWYU pragma: export
#include "client/src/common/pw_pmt_helper.h"          // IWYU pragma: export
#include "client/src/common/register_access.h"        // IWYU pragma: export
#include "client/src/common/telemetry_endpoints.h"    // IWYU pragma: export
#include "client/src/common/telemetry_feature.h"      // IWYU pragma: export
