// Counts what a benchmark program takes from the heap.
#pragma once

#include <cstdint>

namespace qumetra::bench {

/// How often the program, its shared libraries included, has called `operator new` so far. Linking
/// this unit replaces the global operators. Thread-safe.
std::uint64_t allocationCount();

}  // namespace qumetra::bench
