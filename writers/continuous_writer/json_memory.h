// Memory for JSON documents.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <rapidjson/encodings.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

/// Throws `std::bad_alloc` where the library's own allocator hands out a null that its buffers
/// write to. Grows in place where the system can: documents are large.
class JsonMemory {
 public:
  static constexpr bool kNeedFree = true;

  void* Malloc(std::size_t size) { return size == 0 ? nullptr : orThrow(std::malloc(size)); }
  /// Leaves `memory` as it is when it throws.
  void* Realloc(void* memory, std::size_t /*formerSize*/, std::size_t size) {
    if (size == 0) {
      std::free(memory);
      return nullptr;
    }
    return orThrow(std::realloc(memory, size));
  }
  static void Free(void* memory) noexcept { std::free(memory); }

 private:
  static void* orThrow(void* memory) {
    if (memory == nullptr) {
      throw std::bad_alloc();
    }
    return memory;
  }
};

using JsonText = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, JsonMemory>;
using JsonTextWriter =
    rapidjson::Writer<JsonText, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonMemory>;

// As the library has it for its own string buffer: numbers are made where they stand. By way of a
// copy each, documents of points take half as long again.
namespace rapidjson {

template <>
inline bool JsonTextWriter::WriteInt(int number) {
  constexpr std::size_t kMost = 11;
  char* const begin = os_->Push(kMost);
  const char* const end = internal::i32toa(number, begin);
  os_->Pop(kMost - static_cast<std::size_t>(end - begin));
  return true;
}

template <>
inline bool JsonTextWriter::WriteUint64(std::uint64_t number) {
  constexpr std::size_t kMost = 20;
  char* const begin = os_->Push(kMost);
  const char* const end = internal::u64toa(number, begin);
  os_->Pop(kMost - static_cast<std::size_t>(end - begin));
  return true;
}

template <>
inline bool JsonTextWriter::WriteDouble(double number) {
  if (!std::isfinite(number)) {
    return false;
  }
  constexpr std::size_t kMost = 25;
  char* const begin = os_->Push(kMost);
  const char* const end = internal::dtoa(number, begin, maxDecimalPlaces_);
  os_->Pop(kMost - static_cast<std::size_t>(end - begin));
  return true;
}

}  // namespace rapidjson
