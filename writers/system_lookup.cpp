#include "writers/system_lookup.h"

#include "host/platform_metadata.h"
#include "host/system_metadata.h"

const pwr::CPUMetadata* processorOf(const pwr::SystemMetadata* system) {
  if (system == nullptr) {
    return nullptr;
  }
  const auto found = system->m_platformMetadata.find(pwr::SystemMetadata::kCpu);
  if (found == system->m_platformMetadata.end()) {
    return nullptr;
  }
  return dynamic_cast<const pwr::CPUMetadata*>(found->second);
}
