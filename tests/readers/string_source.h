// Bytes of a test as a source for readers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>

#include "qumetra/readers/byte_source.h"

namespace qumetra::test {

/// Gives the bytes of a string.
class StringSource : public ByteSource {
 public:
  explicit StringSource(std::string bytes) : m_bytes(std::move(bytes)) {}

  std::size_t read(char* out, std::size_t size) override {
    const std::size_t count = std::min(size, m_bytes.size() - m_place);
    m_bytes.copy(out, count, m_place);
    m_place += count;
    return count;
  }

 private:
  std::string m_bytes;
  std::size_t m_place = 0;
};

/// The bytes that pairs of hexadecimal digits stand for; blanks are skipped.
inline std::string fromHex(const std::string& text) {
  std::string digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
               [](char c) { return c != ' '; });
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

}  // namespace qumetra::test
