#include "writers/system_lookup.h"

#include "client/src/common/platform_entry.h"
#include "host/platform_metadata.h"
#include "host/system_metadata.h"

const pwr::CPUMetadata* processorOf(const pwr::SystemMetadata* system) {
  return system == nullptr
             ? nullptr
             : pwr::platformEntry<pwr::CPUMetadata>(*system, pwr::SystemMetadata::kCpu);
}
