// The host's record of a telemetry endpoint.
#pragma once

#include <cstdint>

/// An endpoint of aggregator telemetry. Several endpoints of one kind differ by their instance.
// The name is the one under which hosts know the record.
struct _qm_aggregator_info {  // NOLINT(bugprone-reserved-identifier)
  std::uint32_t guid = 0;
  std::uint16_t instance = 0;
};
