#include "qumetra/access/pci_config_backend.h"

#include <cstring>
#include <utility>

#include <fmt/format.h>

#include "qumetra/access/access_place.h"
#include "qumetra/access/device_file.h"

namespace qumetra {
namespace {

constexpr std::uint32_t kConfigurationBytes = 4096;

std::string configPath(const std::string& sysfs, const PciPlace& place) {
  return fmt::format("{}/bus/pci/devices/0000:{:02x}:{:02x}.{:x}/config", sysfs, place.bus,
                     place.device, place.function);
}

}  // namespace

PciConfigBackend::PciConfigBackend(std::string sysfs, Writes writes)
    : m_sysfs(std::move(sysfs)), m_writes(writes) {}
PciConfigBackend::~PciConfigBackend() = default;

std::optional<std::vector<std::uint8_t>> PciConfigBackend::read(const HWOperation& operation,
                                                                const std::string& /*target*/) {
  const auto place = pciPlaceOf(operation);
  const auto size = readSizeOf(operation, kConfigurationBytes);
  if (!place || !size) {
    return std::nullopt;
  }
  const DeviceFile file(configPath(m_sysfs, *place), O_RDONLY);
  return file.isOpen() ? file.readAt(place->offset, *size) : std::nullopt;
}

bool PciConfigBackend::write(const HWOperation& operation, const std::string& /*target*/) {
  const auto place = pciPlaceOf(operation);
  const auto write = registerWriteOf(operation);
  if (m_writes == Writes::Refused || !place || !write) {
    return false;
  }
  const DeviceFile file(configPath(m_sysfs, *place), O_RDWR);
  // Bits outside the mask stay; and what cannot be read is not there to be written.
  const auto bytes = file.isOpen() ? file.readAt(place->offset, write->sizeBytes) : std::nullopt;
  if (!bytes) {
    return false;
  }
  std::uint64_t old = 0;
  std::memcpy(&old, bytes->data(), bytes->size());
  const std::uint64_t value = write->appliedTo(old);
  return file.writeAt(place->offset, &value, write->sizeBytes);
}

}  // namespace qumetra
