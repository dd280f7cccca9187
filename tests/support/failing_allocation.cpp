#include "tests/support/failing_allocation.h"

#include <cstdlib>
#include <new>

namespace {

/// How many allocations are left before the one that fails.
constinit thread_local std::size_t t_countdown = 0;
constinit thread_local bool t_isArmed = false;
constinit thread_local bool t_happened = false;

bool failsNow() {
  if (!t_isArmed || t_countdown-- > 0) {
    return false;
  }
  t_isArmed = false;
  t_happened = true;
  return true;
}

void* memoryOrNull(std::size_t size) {
  return failsNow() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* memoryOrThrow(std::size_t size) {
  void* const memory = memoryOrNull(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

namespace qumetra::test {

FailingAllocation::FailingAllocation(std::size_t countdown) {
  t_countdown = countdown;
  t_happened = false;
  t_isArmed = true;
}

FailingAllocation::~FailingAllocation() { t_isArmed = false; }

bool FailingAllocation::happened() const { return t_happened; }

}  // namespace qumetra::test

// All of them, since a sanitizer that keeps some of its own would see one's memory freed by
// another.
void* operator new(std::size_t size) { return memoryOrThrow(size); }
void* operator new[](std::size_t size) { return memoryOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t& /*form*/) noexcept {
  return memoryOrNull(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*form*/) noexcept {
  return memoryOrNull(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t& /*form*/) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t& /*form*/) noexcept { std::free(memory); }
