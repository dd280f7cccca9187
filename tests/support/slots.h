// Where virtual operations stand in their tables.
#pragma once

#include <cstdint>
#include <cstring>

namespace qumetra::test {

#if !defined(__x86_64__)
#error "Pointers to member functions are laid out otherwise here."
#endif

/// The slot of a virtual operation, counted from 0; -1 for an operation that is not virtual. A
/// pointer to a virtual member function holds 1 + 8 * slot in the Itanium C++ ABI, where a virtual
/// destructor takes two slots. So neither a call nor an object is needed.
template <typename MemberFunction>
int slotOf(MemberFunction function) {
  std::uintptr_t value = 0;
  static_assert(sizeof(function) >= sizeof(value));
  std::memcpy(&value, &function, sizeof(value));
  if (value % 2 == 0) {
    return -1;  // The address of a function.
  }
  return static_cast<int>((value - 1) / sizeof(void*));
}

/// Adds one slot behind those of its base; the table of a class ends where it stands.
template <typename Base>
class OneMore : public Base {
 public:
  virtual void next() {}
};

}  // namespace qumetra::test
