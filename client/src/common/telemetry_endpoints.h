// The endpoints at which a message's telemetry is found.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/aggregator_info.h"
#include "host/operation_metadata.h"
#include "host/system_metadata.h"

namespace pwr {

/// Appends the endpoints that the message's operations name by "ENDPOINT-ID" to `out`, in order and
/// also repeatedly. They belong to `system`. An id that `system` does not have is a warning and
/// ends the search. Returns 0; 1 then, without a message, and when `out` is empty at the end. `tag`
/// switches the warning on.
int extractPMTEndpoints(const std::string& tag, const SystemMetadata& system,
                        const MsgMetadata* message, std::vector<const _qm_aggregator_info*>& out);

/// The decimal number at the start of `key`; 0 without one, and for one above 65535.
std::uint16_t extractEndpointIdFromKey(const std::string& key);

/// Returns how many different instances `infos` has and sets `index` to the place of `instance` in
/// their ascending order, counted from 0; to 0 when it is not among them. Null entries count for
/// nothing.
std::size_t getPMTInstanceInfo(const std::vector<const _qm_aggregator_info*>& infos,
                               unsigned short instance, unsigned short& index);

}  // namespace pwr
