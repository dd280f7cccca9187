// Input that is the same in every run.
#pragma once

#include <cstdint>

namespace qumetra::bench {

/// Numbers without a pattern, of which the higher bits are the better ones.
class RandomNumbers {
 public:
  std::uint64_t next() { return m_state = m_state * 6364136223846793005U + 1442695040888963407U; }

 private:
  std::uint64_t m_state = 42;
};

}  // namespace qumetra::bench
