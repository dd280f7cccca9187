// Registers that exist in memory only, for tests and rehearsals.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "qumetra/access/access_place.h"
#include "qumetra/model/access_backend.h"

namespace qumetra {

/// Holds registers byte by byte, in one address space for memory-mapped registers and one for each
/// PCI device and telemetry endpoint. A byte that was never set is not there: reading it fails, and
/// writing to it too. Failures can be scripted. Not synchronised.
///
///     MemoryBackend registers;
///     registers.setPci({0, 31, 2, 0x10}, 0xFED00000, 4);
///     registers.failAt(3);
///     const BackendInUse inUse(registers);
class MemoryBackend : public AccessBackend {
 public:
  /// An access that was asked for, also one that failed.
  struct Access {
    enum class Kind { Read, Write };
    Kind kind = Kind::Read;
    /// The operation's categories and their values.
    std::map<std::string, std::string> values;
    std::string target;
    bool done = false;
  };

  MemoryBackend();
  ~MemoryBackend() override;

  // Each sets the low bytes of `value`.
  void setPci(const PciPlace& place, std::uint64_t value, std::uint32_t sizeBytes);
  void setMmio(std::uint64_t address, std::uint64_t value, std::uint32_t sizeBytes);
  void setSample(std::uint16_t endpointId, std::uint64_t sampleId, std::uint64_t value);

  // What is there now; nothing when not all bytes are.
  std::optional<std::uint64_t> pci(const PciPlace& place, std::uint32_t sizeBytes) const;
  std::optional<std::uint64_t> mmio(std::uint64_t address, std::uint32_t sizeBytes) const;

  /// Lets the access fail that is the n-th of this backend's life, counted from 1; repeatable.
  void failAt(std::size_t access);
  /// All accesses so far, in order.
  const std::vector<Access>& accesses() const { return m_accesses; }

  std::optional<std::vector<std::uint8_t>> read(const HWOperation& operation,
                                                const std::string& target) override;
  using AccessBackend::write;
  bool write(const HWOperation& operation, const std::string& target) override;

 private:
  /// A byte, by the name of its address space and its address there.
  struct Place {
    std::string space;
    std::uint64_t address = 0;
    bool operator<(const Place& other) const {
      return std::tie(space, address) < std::tie(other.space, other.address);
    }
  };

  static Place placeOf(const PciPlace& place);
  static Place mmioPlace(std::uint64_t address);
  static Place samplePlace(std::uint16_t endpointId, std::uint64_t sampleId);
  static std::optional<Place> placeOf(const HWOperation& operation);

  /// Notes the access. Returns false when it is to fail.
  bool begin(Access::Kind kind, const HWOperation& operation, const std::string& target);
  void store(Place place, std::uint64_t value, std::uint32_t sizeBytes);
  std::optional<std::vector<std::uint8_t>> bytesAt(Place place, std::uint32_t count) const;
  std::optional<std::uint64_t> load(const Place& place, std::uint32_t sizeBytes) const;

  std::map<Place, std::uint8_t> m_bytes;
  std::set<std::size_t> m_failures;
  std::vector<Access> m_accesses;
};

}  // namespace qumetra
