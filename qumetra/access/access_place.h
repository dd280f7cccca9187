// What the texts of an operation mean: where it goes, how wide it is, what it writes.
//
// The texts come from configuration files. A number is decimal, or hexadecimal behind "0x"; a text
// with anything else in it is no number, so that a slip never leads to register 0.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

class HWOperation;

namespace qumetra {

/// A register in the configuration space of a PCI device.
struct PciPlace {
  std::uint32_t bus = 0;
  std::uint32_t device = 0;
  std::uint32_t function = 0;
  /// In bytes.
  std::uint32_t offset = 0;
};

/// A sample of a telemetry endpoint.
struct TelemetryPlace {
  std::uint16_t endpointId = 0;
  std::uint64_t sampleId = 0;
  std::optional<std::uint32_t> guid = std::nullopt;
};

/// What a write puts into a register of 1 to 8 bytes.
struct RegisterWrite {
  std::uint32_t sizeBytes = 0;
  std::uint64_t value = 0;
  /// The bits that change; the others stay.
  std::uint64_t mask = ~std::uint64_t{0};

  /// What the register holds afterwards.
  std::uint64_t appliedTo(std::uint64_t old) const { return (old & ~mask) | (value & mask); }
};

/// The number that is the whole of a text.
std::optional<std::uint64_t> parseHexOrDecimal(std::string_view text);
/// The number in a category; nothing without one.
std::optional<std::uint64_t> numberIn(const HWOperation& operation, const std::string& category);

// Where an operation goes. Nothing when it is of another kind, lacks something, or names what no
// machine has.
std::optional<PciPlace> pciPlaceOf(const HWOperation& operation);
/// An address that has to be found through a device is nothing as well.
std::optional<std::uint64_t> mmioAddressOf(const HWOperation& operation);
std::optional<TelemetryPlace> telemetryPlaceOf(const HWOperation& operation);

/// How many bytes an operation reads; nothing for none and for more than `limit`.
std::optional<std::uint32_t> readSizeOf(const HWOperation& operation, std::uint32_t limit);
/// What an operation writes; nothing without a value, and for a width that no register has.
std::optional<RegisterWrite> registerWriteOf(const HWOperation& operation);

}  // namespace qumetra
