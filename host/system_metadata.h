// The description of the measured system and of the collection.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/aggregator_info.h"

namespace pwr {

class PlatformMetadata;

/// A version in 32 bits.
struct VersionRecord {
  std::uint16_t major = 0;
  std::uint8_t minor = 0;
  std::uint8_t third = 0;
};

/// What was measured, where and when. A plain record that the host fills; platform entries are
/// borrowed and live for the whole run.
struct SystemMetadata {
  /// The keys of `m_platformMetadata` that writers look up.
  static constexpr std::uint16_t kCpu = 1;
  static constexpr std::uint16_t kPch = 2;

  /// A word that tells platforms apart where the processor alone does not.
  std::uint32_t m_scuWord = 0;
  std::string m_platformName;
  std::string m_hostName;
  std::string m_osName;
  /// The machine's architecture, for example "x86_64".
  std::string m_osType;
  std::string m_osVersion;
  VersionRecord m_toolVersion;
  VersionRecord m_driverVersion;
  /// The command line of the collection, the program first.
  std::vector<std::string> m_collectorArguments;
  std::uint32_t m_osBuildNumber = 0;
  /// Ticks per microsecond; 0 when unknown.
  float m_timestampFrequency = 0;
  /// Collection start and stop, in ticks.
  std::uint64_t m_firstTimestamp = 0;
  std::uint64_t m_lastTimestamp = 0;
  /// The smallest step of the clock, in ticks.
  std::uint64_t m_timerResolution = 0;
  /// How fine times are to be shown: from 1 to 999, milliseconds have three decimals instead of
  /// two.
  std::uint32_t m_timeDisplayResolution = 0;
  /// Not 0 when there is an integrated graphics device.
  std::uint8_t m_hasIntegratedGraphics = 0;
  /// 1 when Enhanced Sign-in Security is on.
  std::uint8_t m_secureSignIn = 0;
  /// Entries may be null. Key `kCpu` holds a `CPUMetadata`, key `kPch` a `PCHMetadata`.
  std::map<std::uint16_t, PlatformMetadata*> m_platformMetadata;
  /// The host's version: bits 31 to 16 major, 15 to 8 minor, 7 to 0 patch.
  std::uint32_t m_versionWord = 0;
  /// The telemetry endpoints by their ids.
  std::map<std::uint16_t, _qm_aggregator_info> m_aggregators;

  /// When the collection started, as the host shows it.
  std::string getCollectionStartTime() const;
  /// The time from first to last timestamp, in seconds; 0 with an unknown frequency.
  double getCollectionDurationSec() const;
  /// The name that the processor gives itself; `model` is its model number.
  std::string getCPUNativeModelName(unsigned int model) const;
  /// The name by which the processor's kind is known.
  std::string getFormattedCPUCodeName() const;
  /// The names of the platform's controller hubs.
  std::string getFormattedPCHDeviceNamesStr(const std::string& platformName) const;

  // Host side: what the operations above give.
  std::string m_collectionStartTime;
  /// Overrules the duration that the timestamps give.
  std::optional<double> m_collectionDurationSec;
  std::string m_cpuNativeModelName;
  std::string m_cpuCodeName;
  std::string m_pchDeviceNames;
};

}  // namespace pwr
