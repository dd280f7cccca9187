// Where the parts of an object stand: hosts and writers that were built apart meet there.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>

#if !defined(__x86_64__)
#error "Pointers to member functions are laid out otherwise here."
#endif

namespace qumetra::test {

/// The slots that a virtual destructor takes.
inline constexpr int kDestructorSlots = 2;

/// The slot of a virtual operation in its table, counted from 0; -1 for an operation that is not
/// virtual, or not in the object's first table. Needs no call and no object: in the Itanium ABI a
/// pointer to a virtual member is one more than the offset of its slot, and an adjustment.
template <typename Member>
int slotOf(Member member) {
  std::array<std::ptrdiff_t, 2> words{};
  static_assert(sizeof member == sizeof words);
  std::memcpy(words.data(), &member, sizeof member);
  const bool isVirtual = words[0] % 2 == 1;
  if (!isVirtual || words[1] != 0) {
    return -1;
  }
  return static_cast<int>((words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

/// Where a member stands in its object, in bytes.
template <typename Object, typename Member>
std::ptrdiff_t offsetIn(const Object& object, const Member& member) {
  return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&object);
}

/// Whether `members` stand in the object one behind the other.
template <typename Object, typename... Members>
bool standInOrder(const Object& object, const Members&... members) {
  std::ptrdiff_t former = -1;
  for (const std::ptrdiff_t offset : {offsetIn(object, members)...}) {
    if (offset <= former) {
      return false;
    }
    former = offset;
  }
  return former < static_cast<std::ptrdiff_t>(sizeof object);
}

}  // namespace qumetra::test
