// Numbers as text. All number texts of the library and the host are made here; the locale never
// matters.
#pragma once

#include <string>

namespace pwr {

/// Appends `value` in decimal.
void appendInt(std::string& out, long value);
void appendUInt(std::string& out, unsigned long value);

/// "0x" and `value` in hexadecimal, in lower case and without leading zeros.
std::string hexText(unsigned long value);

/// Appends `value` as a stream does by default: six significant digits, exponent where shorter.
void appendGeneral(std::string& out, double value);

/// Appends `value` as printf does with "%.*f": fixed notation, the exact binary value rounded, ties
/// to even, the sign of a zero kept. Every NaN is "nan", infinities are "inf" and "-inf". REQUIRES:
/// `precision` is not negative.
void appendFixed(std::string& out, double value, int precision);

/// Appends `value` in the shortest form that reads back the same.
void appendShortest(std::string& out, double value);

/// Stream insertion with default flags as a text: reals with six significant digits.
std::string toString(int value);
std::string toString(unsigned int value);
std::string toString(unsigned long value);
std::string toString(unsigned short value);
std::string toString(float value);
std::string toString(double value);
std::string to_string(long value);
std::string to_string(unsigned long value);
std::string to_string(double value);

}  // namespace pwr
