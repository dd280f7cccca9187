#include "qumetra/access/telemetry_backend.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "qumetra/access/access_place.h"
#include "qumetra/access/device_file.h"
#include "qumetra/access/small_file.h"

namespace qumetra {
namespace {

constexpr std::uint32_t kSampleBytes = 8;
constexpr std::string_view kDevicePrefix = "telem";

std::string classPath(const std::string& sysfs) { return sysfs + "/class/corvane_pmt"; }

std::string devicePath(const std::string& sysfs, std::uint16_t id) {
  return fmt::format("{}/{}{}", classPath(sysfs), kDevicePrefix, id);
}

/// The id in a device's name; nothing for other names.
std::optional<std::uint16_t> idOf(std::string_view name) {
  if (!name.starts_with(kDevicePrefix)) {
    return std::nullopt;
  }
  name.remove_prefix(kDevicePrefix.size());
  std::uint16_t id = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), id);
  return error == std::errc() && end == name.data() + name.size() ? std::optional(id)
                                                                  : std::nullopt;
}

std::optional<std::uint32_t> guidOf(const std::string& device) {
  const auto guid = readHexOrDecimal(device + "/guid");
  return guid && *guid <= std::numeric_limits<std::uint32_t>::max()
             ? std::optional(static_cast<std::uint32_t>(*guid))
             : std::nullopt;
}

}  // namespace

std::vector<TelemetryEndpoint> listTelemetryEndpoints(const std::string& sysfs) {
  std::vector<TelemetryEndpoint> endpoints;
  std::error_code error;
  std::filesystem::directory_iterator entry(classPath(sysfs), error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    if (const auto id = idOf(entry->path().filename().string())) {
      const std::string device = devicePath(sysfs, *id);
      endpoints.push_back({*id, guidOf(device), readHexOrDecimal(device + "/size")});
    }
  }
  std::sort(endpoints.begin(), endpoints.end(),
            [](const auto& left, const auto& right) { return left.id < right.id; });
  return endpoints;
}

TelemetryBackend::TelemetryBackend(std::string sysfs) : m_sysfs(std::move(sysfs)) {}
TelemetryBackend::~TelemetryBackend() = default;

std::optional<std::vector<std::uint8_t>> TelemetryBackend::read(const HWOperation& operation,
                                                                const std::string& /*target*/) {
  // No device has so many samples; beyond that the offset would wrap around.
  constexpr std::uint64_t kSamples = std::uint64_t{1} << 32U;
  const auto place = telemetryPlaceOf(operation);
  const auto size = readSizeOf(operation, kSampleBytes);
  if (!place || !size || place->sampleId >= kSamples) {
    return std::nullopt;
  }
  const std::string device = devicePath(m_sysfs, place->endpointId);
  if (place->guid && guidOf(device) != place->guid) {
    return std::nullopt;
  }
  const DeviceFile file(device + "/telem", O_RDONLY);
  return file.isOpen() ? file.readAt(place->sampleId * kSampleBytes, *size) : std::nullopt;
}

bool TelemetryBackend::write(const HWOperation& /*operation*/, const std::string& /*target*/) {
  return false;
}

}  // namespace qumetra
