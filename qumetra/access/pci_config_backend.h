// PCI configuration space through the files that the kernel shows.
#pragma once

#include <string>

#include "qumetra/model/access_backend.h"

namespace qumetra {

/// Reads the configuration space of the devices of PCI domain 0 through
/// <sysfs>/bus/pci/devices/<device>/config. The kernel shows only its first 64 bytes to ordinary
/// users. Writes are refused unless they are allowed; they change registers of the running machine.
/// Knows no other operations. Not synchronised.
class PciConfigBackend : public AccessBackend {
 public:
  enum class Writes { Refused, Allowed };

  explicit PciConfigBackend(std::string sysfs, Writes writes = Writes::Refused);
  ~PciConfigBackend() override;

  std::optional<std::vector<std::uint8_t>> read(const HWOperation& operation,
                                                const std::string& target) override;
  using AccessBackend::write;
  bool write(const HWOperation& operation, const std::string& target) override;

 private:
  std::string m_sysfs;
  Writes m_writes;
};

}  // namespace qumetra
