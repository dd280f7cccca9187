#include "qumetra/collect/cpuid.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

#include <algorithm>
#include <cstddef>

namespace qumetra {
namespace {

std::uint32_t bits(std::uint32_t word, unsigned low, unsigned count) {
  return (word >> low) & ((1U << count) - 1U);
}

/// The bytes of the words, lowest first, up to the first zero byte.
template <std::size_t Count>
std::string textOf(const std::array<std::uint32_t, Count>& words) {
  std::string text;
  for (const std::uint32_t word : words) {
    for (unsigned low = 0; low < 32; low += 8) {
      text += static_cast<char>(bits(word, low, 8));
    }
  }
  text.resize(std::min(text.find('\0'), text.size()));
  return text;
}

std::string withSingleBlanks(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c != ' ' || (!result.empty() && result.back() != ' ')) {
      result += c;
    }
  }
  if (!result.empty() && result.back() == ' ') {
    result.pop_back();
  }
  return result;
}

}  // namespace

CpuSignature decodeSignature(std::uint32_t eax) {
  constexpr std::uint32_t kExtended = 15;
  constexpr std::uint32_t kExtendedModelOnly = 6;
  const std::uint32_t family = bits(eax, 8, 4);
  CpuSignature signature{family, bits(eax, 4, 4), bits(eax, 0, 4)};
  if (family == kExtended) {
    signature.family += bits(eax, 20, 8);
  }
  if (family == kExtended || family == kExtendedModelOnly) {
    signature.model += bits(eax, 16, 4) << 4;
  }
  return signature;
}

std::string decodeVendor(const std::array<std::uint32_t, 3>& words) { return textOf(words); }

std::string decodeBrand(const std::array<std::uint32_t, 12>& words) {
  return withSingleBlanks(textOf(words));
}

CpuIdentity identifyCpu() {
  CpuIdentity identity;
#if defined(__x86_64__) || defined(__i386__)
  unsigned eax = 0;
  unsigned ebx = 0;
  unsigned ecx = 0;
  unsigned edx = 0;
  // Each call tells whether the processor has the leaf.
  if (__get_cpuid(0, &eax, &ebx, &ecx, &edx) != 0) {
    identity.vendor = decodeVendor({ebx, edx, ecx});
  }
  if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0) {
    identity.signature = decodeSignature(eax);
  }
  std::array<std::uint32_t, 12> words{};
  for (unsigned i = 0; i < 3; ++i) {
    if (__get_cpuid(0x80000002U + i, &eax, &ebx, &ecx, &edx) == 0) {
      return identity;
    }
    const std::size_t at = std::size_t{4} * i;
    words[at] = eax;
    words[at + 1] = ebx;
    words[at + 2] = ecx;
    words[at + 3] = edx;
  }
  identity.brand = decodeBrand(words);
#endif
  return identity;
}

}  // namespace qumetra
