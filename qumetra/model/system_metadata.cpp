#include "host/system_metadata.h"

namespace pwr {

std::string SystemMetadata::getCollectionStartTime() const { return m_collectionStartTime; }

double SystemMetadata::getCollectionDurationSec() const {
  if (m_collectionDurationSec) {
    return *m_collectionDurationSec;
  }
  if (m_timestampFrequency == 0.0F) {
    return 0.0;
  }
  constexpr double kMicrosecondsPerSecond = 1e6;
  // Unsigned, as clocks may wrap around between the two.
  const std::uint64_t ticks = m_lastTimestamp - m_firstTimestamp;
  const double ticksPerSecond = static_cast<double>(m_timestampFrequency) * kMicrosecondsPerSecond;
  return static_cast<double>(ticks) / ticksPerSecond;
}

std::string SystemMetadata::getCPUNativeModelName(unsigned int /*model*/) const {
  return m_cpuNativeModelName;
}

std::string SystemMetadata::getFormattedCPUCodeName() const { return m_cpuCodeName; }

std::string SystemMetadata::getFormattedPCHDeviceNamesStr(
    const std::string& /*platformName*/) const {
  return m_pchDeviceNames;
}

}  // namespace pwr
