// Texts and numbers that name processors and devices.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pwr {

/// The processor's name in a platform text like "...FMS=6-151-AX,...": behind "FMS=" up to the next
/// ",", of that the part behind the last "-". A text without "FMS=" is read from its fourth
/// character.
std::string getCPUNameFromPlatformString(const std::string& text);
/// The parts of the text that "," separates.
std::vector<std::string> getSpecifierListFromPlatformString(const std::string& text);

// Whether a processor, by its signature, belongs to a kind.
bool isTRV(std::uint8_t family, std::uint8_t model);
bool isQD1(std::uint8_t family, std::uint8_t model, std::uint8_t stepping);
bool isSprig(std::uint8_t family, std::uint8_t model);
bool isHybrid(std::uint8_t family, std::uint8_t model);

/// Asks the processor for its identification `leaf`, sub-leaf 0, and stores the four registers.
void getCpuid(std::uint32_t leaf, std::uint32_t& a, std::uint32_t& b, std::uint32_t& c,
              std::uint32_t& d);

/// The packed address of a device's register 0xf0.
std::uint32_t getPCIAddress(std::uint32_t bus, std::uint32_t device);
/// A packed device id as "bus:device:function" in decimal: bus in the low 8 bits, device in the
/// next 5, function in the highest 3.
std::string getFormatedPCIBDF(std::uint16_t id);

}  // namespace pwr
