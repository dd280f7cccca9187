#include "client/src/common/bit_range.h"

#include <cstddef>
#include <vector>

#include "client/src/common/text_parsing.h"
#include "client/src/common/tokenizer.h"

namespace pwr {
namespace {

constexpr unsigned int kWordBits = 64;

std::uint8_t numberOfMask(const std::string& mask, std::size_t index) {
  const std::vector<std::string> tokens = Tokenizer(mask, ":").get_all_tokens();
  if (tokens.size() != 2) {
    return 0;
  }
  return static_cast<std::uint8_t>(extractNumber(tokens[index], false));
}

}  // namespace

// By value, as callers that were built before expect it.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
bool isMaskValid(const std::string& mask, std::string separator) {
  const std::vector<std::string> tokens = Tokenizer(mask, separator.c_str()).get_all_tokens();
  return tokens.size() == 2 && isNumber(tokens[0]) && isNumber(tokens[1]);
}

std::uint8_t retrieveMsbFromMask(const std::string& mask) { return numberOfMask(mask, 0); }

std::uint8_t retrieveLsbFromMask(const std::string& mask) { return numberOfMask(mask, 1); }

std::uint64_t extractBitRangeValue(unsigned long value, unsigned char msb, unsigned char lsb) {
  const std::uint64_t shifted = value >> (lsb % kWordBits);
  // The width of the whole word would count as no width.
  if (msb == kWordBits - 1) {
    return shifted;
  }
  const auto width = static_cast<std::uint8_t>(msb - lsb + 1);
  return shifted & ((std::uint64_t{1} << (width % kWordBits)) - 1);
}

int resolveBitRange(const std::string& primary, const std::string& fallback, std::string& out) {
  const std::string& chosen = primary.empty() ? fallback : primary;
  if (chosen.empty()) {
    return 1;
  }
  out = chosen;
  return 0;
}

}  // namespace pwr
