#include "bench/support/allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint64_t> s_allocations{0};

void* countedAllocation(std::size_t size) {
  s_allocations.fetch_add(1, std::memory_order_relaxed);
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

namespace qumetra::bench {

std::uint64_t allocationCount() { return s_allocations.load(std::memory_order_relaxed); }

}  // namespace qumetra::bench

// The array and the nothrow forms call these by default.
void* operator new(std::size_t size) { return countedAllocation(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
