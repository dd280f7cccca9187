#include "client/src/common/fixed_point.h"

#include <cmath>
#include <vector>

#include "client/src/common/pw_log.h"
#include "client/src/common/text_parsing.h"
#include "client/src/common/tokenizer.h"

namespace pwr {
namespace {

constexpr unsigned int kWordBits = 64;

std::uint8_t byteOf(const std::string& text) {
  return static_cast<std::uint8_t>(extractNumber(text, false));
}

/// `raw` as two's complement whose sign is one bit above those that the format names.
double signedValue(std::uint64_t raw, const qm_qformat& format) {
  const unsigned int bits = format.integerBits + format.fractionBits;
  const std::uint64_t signMask = std::uint64_t{2} << (bits % kWordBits);
  if ((raw & signMask) == 0) {
    return static_cast<double>(raw);
  }
  const std::uint64_t mask = signMask - 1;
  const std::uint64_t magnitude = (~(raw & mask) + 1) & mask;
  return -static_cast<double>(magnitude);
}

}  // namespace

qm_qformat retrieveQFormat(const std::string& format) {
  const std::vector<std::string> tokens = Tokenizer(format, ".").get_all_tokens();
  if (tokens.size() == 2 && (tokens[0].front() == 'U' || tokens[0].front() == 'S')) {
    return {tokens[0].front(), byteOf(tokens[0].substr(1)), byteOf(tokens[1])};
  }
  // Without a line end, as readers of the log expect it.
  logError("ERROR: Invalid DATA-FORMAT entry. %s is invalid. Format expected as UX.Y or SX.Y",
           format.c_str());
  return {};
}

double convertToFloatPoint(unsigned long raw, const qm_qformat& format) {
  if (format.sign != 'U' && format.sign != 'S') {
    logError(
        "ERROR: Invalid DATA-FORMAT entry. %c%d.%d is invalid. Format expected as UX.Y or SX.Y",
        format.sign, format.integerBits, format.fractionBits);
    return static_cast<double>(raw);
  }
  const double value = format.sign == 'U' ? static_cast<double>(raw) : signedValue(raw, format);
  return value / std::ldexp(1.0, format.fractionBits);
}

}  // namespace pwr
