// Who the processor says it is.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace qumetra {

/// Family, model and stepping with their extended parts.
struct CpuSignature {
  std::uint32_t family = 0;
  std::uint32_t model = 0;
  std::uint32_t stepping = 0;
};

/// What the identification instruction tells; empty where the processor lacks the leaf.
struct CpuIdentity {
  std::optional<CpuSignature> signature;
  std::string vendor;
  std::string brand;
};

/// The signature in register EAX of leaf 1.
CpuSignature decodeSignature(std::uint32_t eax);
/// The vendor in the registers of leaf 0, given in the order in which they spell it: EBX, EDX, ECX.
std::string decodeVendor(const std::array<std::uint32_t, 3>& words);
/// The brand in the registers of leaves 0x80000002 to 0x80000004, without the blanks around it and
/// with single blanks inside.
std::string decodeBrand(const std::array<std::uint32_t, 12>& words);

/// Asks the processor that runs this.
CpuIdentity identifyCpu();

}  // namespace qumetra
