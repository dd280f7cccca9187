#include "qumetra/access/pci_devices.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "qumetra/access/small_file.h"

namespace qumetra {
namespace {

std::uint32_t attribute(const std::filesystem::path& device, const char* name) {
  return static_cast<std::uint32_t>(readHexOrDecimal((device / name).string()).value_or(0));
}

}  // namespace

std::vector<PciDevice> listPciDevices(const std::string& sysfs) {
  std::vector<PciDevice> devices;
  std::error_code error;
  std::filesystem::directory_iterator entry(sysfs + "/bus/pci/devices", error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::filesystem::path& path = entry->path();
    devices.push_back({path.filename().string(), attribute(path, "vendor"),
                       attribute(path, "device"), attribute(path, "class")});
  }
  std::sort(devices.begin(), devices.end(),
            [](const auto& left, const auto& right) { return left.location < right.location; });
  return devices;
}

}  // namespace qumetra
