#include "client/src/common/platform_text.h"

#include <cpuid.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "client/src/common/number_text.h"
#include "client/src/common/tokenizer.h"

namespace pwr {
namespace {

constexpr std::uint8_t kKnownFamily = 6;
constexpr std::uint8_t kTrvModels[] = {60, 63, 69, 70};
constexpr std::uint8_t kSprigModels[] = {55, 74, 76, 87, 90, 92, 93, 95, 101, 110, 119, 122, 134};
constexpr std::uint8_t kHybridModels[] = {138, 151, 154, 170, 172, 183, 186, 190, 191, 215};
constexpr std::uint8_t kQd1Model = 92;
constexpr std::uint8_t kQd1Stepping = 9;

template <std::size_t Count>
bool isOneOf(const std::uint8_t (&models)[Count], std::uint8_t family, std::uint8_t model) {
  return family == kKnownFamily &&
         std::find(std::begin(models), std::end(models), model) != std::end(models);
}

}  // namespace

std::string getCPUNameFromPlatformString(const std::string& text) {
  static const std::string s_mark = "FMS=";
  // Without the mark the position "not found" is moved on all the same and wraps around to 3, which
  // is relied on.
  const std::size_t start = text.find(s_mark) + s_mark.size();
  if (start >= text.size()) {
    return {};
  }
  const std::string piece = text.substr(start, text.find(',', start) - start);
  const auto dash = piece.rfind('-');
  return dash == std::string::npos ? piece : piece.substr(dash + 1);
}

std::vector<std::string> getSpecifierListFromPlatformString(const std::string& text) {
  return Tokenizer(text, ",").get_all_tokens();
}

bool isTRV(std::uint8_t family, std::uint8_t model) { return isOneOf(kTrvModels, family, model); }

bool isQD1(std::uint8_t family, std::uint8_t model, std::uint8_t stepping) {
  return family == kKnownFamily && model == kQd1Model && stepping == kQd1Stepping;
}

bool isSprig(std::uint8_t family, std::uint8_t model) {
  return isOneOf(kSprigModels, family, model);
}

bool isHybrid(std::uint8_t family, std::uint8_t model) {
  return isOneOf(kHybridModels, family, model);
}

void getCpuid(std::uint32_t leaf, std::uint32_t& a, std::uint32_t& b, std::uint32_t& c,
              std::uint32_t& d) {
  __cpuid_count(leaf, 0, a, b, c, d);
}

std::uint32_t getPCIAddress(std::uint32_t bus, std::uint32_t device) {
  return ((bus & 0xffU) << 16U) + ((device << 8U) & 0xffffU) + 0x100000f0U;
}

std::string getFormatedPCIBDF(std::uint16_t id) {
  const unsigned int word = id;
  std::string text;
  appendUInt(text, word & 0xffU);
  text += ':';
  appendUInt(text, (word >> 8U) & 0x1fU);
  text += ':';
  appendUInt(text, word >> 13U);
  return text;
}

}  // namespace pwr
