// What a reader is attacked with.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "qumetra/readers/byte_source.h"

namespace qumetra::fuzz {

/// Gives borrowed bytes.
class BytesSource : public ByteSource {
 public:
  explicit BytesSource(std::string_view bytes) : m_rest(bytes) {}

  std::size_t read(char* out, std::size_t size) override {
    const std::size_t count = std::min(size, m_rest.size());
    std::copy_n(m_rest.begin(), count, out);
    m_rest.remove_prefix(count);
    return count;
  }

 private:
  std::string_view m_rest;
};

}  // namespace qumetra::fuzz
