// Ranges of bits within a telemetry sample: texts of the form "63:0", highest bit first.
#pragma once

#include <cstdint>
#include <string>

namespace pwr {

/// Whether `mask` is two numbers with `separator` between them.
bool isMaskValid(const std::string& mask, std::string separator);
/// The first and the second of the two numbers, as bytes; 0 when there are not exactly two.
std::uint8_t retrieveMsbFromMask(const std::string& mask);
std::uint8_t retrieveLsbFromMask(const std::string& mask);

/// The bits from `msb` down to `lsb`, at the low end. With an `msb` of 63 all bits from `lsb` up.
/// Bit numbers count modulo 64; a width that is a multiple of 64 otherwise keeps nothing.
std::uint64_t extractBitRangeValue(unsigned long value, unsigned char msb, unsigned char lsb);

/// Sets `out` to the first text that is not empty and returns 0. Returns 1, and leaves `out` alone,
/// when both are.
int resolveBitRange(const std::string& primary, const std::string& fallback, std::string& out);

}  // namespace pwr
