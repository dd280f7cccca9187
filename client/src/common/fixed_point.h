// Fixed-point numbers of telemetry counters.
#pragma once

#include <cstdint>
#include <string>

namespace pwr {

/// A format such as U8.8: unsigned or signed, bits before and behind the point.
struct qm_qformat {
  /// "U" or "S".
  char sign = 'U';
  std::uint8_t integerBits = 0;
  std::uint8_t fractionBits = 0;
};

/// The format in a text: "U" or "S", a number, ".", a number. Any other text is an error in the log
/// and the format U0.0, which leaves numbers unscaled.
qm_qformat retrieveQFormat(const std::string& format);

/// The value of the bits in `raw`. In SX.Y bit X + Y + 1 is the sign, so there is one bit more than
/// the format seems to say. A format with another letter is an error in the log and gives `raw`
/// unscaled.
double convertToFloatPoint(unsigned long raw, const qm_qformat& format);

}  // namespace pwr
