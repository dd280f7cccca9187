// Finds a part of the platform in the description of the system.
#pragma once

#include <cstdint>

#include "host/platform_metadata.h"
#include "host/system_metadata.h"

namespace pwr {

/// The entry of this type, or null when there is none, or one of another class.
template <typename Metadata>
const Metadata* platformEntry(const SystemMetadata& system, std::uint16_t type) {
  const auto found = system.m_platformMetadata.find(type);
  return found == system.m_platformMetadata.end() ? nullptr
                                                  : dynamic_cast<const Metadata*>(found->second);
}

}  // namespace pwr
