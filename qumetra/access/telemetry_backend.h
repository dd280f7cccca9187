// Aggregator telemetry through the files that the kernel shows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "qumetra/model/access_backend.h"

namespace qumetra {

/// A telemetry device.
struct TelemetryEndpoint {
  /// The number in the device's name, which is the endpoint's id.
  std::uint16_t id = 0;
  std::optional<std::uint32_t> guid = std::nullopt;
  /// Of its samples; nothing when it does not tell.
  std::optional<std::uint64_t> sizeBytes = std::nullopt;
};

/// The devices below <sysfs>/class/corvane_pmt, by id.
std::vector<TelemetryEndpoint> listTelemetryEndpoints(const std::string& sysfs);

/// Reads samples of 8 bytes, of which sample n begins at byte 8 n of
/// <sysfs>/class/corvane_pmt/telem<endpoint>/telem, as they are: bit ranges are left to the reader.
/// An operation with a GUID other than the device's is refused, as it was made for another layout.
/// Nothing can be written. Knows no other operations. Not synchronised.
class TelemetryBackend : public AccessBackend {
 public:
  explicit TelemetryBackend(std::string sysfs);
  ~TelemetryBackend() override;

  std::optional<std::vector<std::uint8_t>> read(const HWOperation& operation,
                                                const std::string& target) override;
  using AccessBackend::write;
  bool write(const HWOperation& operation, const std::string& target) override;

 private:
  std::string m_sysfs;
};

}  // namespace qumetra
