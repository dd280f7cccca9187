// The PCI devices of the machine.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qumetra {

/// A PCI device as the kernel lists it.
struct PciDevice {
  /// "domain:bus:device.function", hexadecimal.
  std::string location;
  std::uint32_t vendor = 0;
  std::uint32_t device = 0;
  /// Class, subclass and programming interface, a byte each, the class highest.
  std::uint32_t classCode = 0;

  /// Whether it drives displays.
  bool isDisplay() const { return classCode >> 16U == 0x03; }
};

/// The devices below <sysfs>/bus/pci/devices, by location. Empty when they cannot be listed; a
/// device that does not tell what it is has zeros.
std::vector<PciDevice> listPciDevices(const std::string& sysfs);

}  // namespace qumetra
