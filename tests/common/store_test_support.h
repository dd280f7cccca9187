// What the tests of the byte store share.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "client/src/common/backing_store.h"

namespace qumetra::test {

inline std::int64_t write(pwr::QMBufferProvider& store, const std::string& bytes) {
  return store.write(bytes.data(), bytes.size());
}

/// What the call gave, at the most `count` bytes; a failure is "<failed>".
template <typename Read>
std::string bytesOf(std::uint64_t count, Read read) {
  std::string bytes(count, '\0');
  const std::int64_t got = read(bytes.data(), count);
  return got < 0 ? "<failed>" : bytes.substr(0, static_cast<std::size_t>(got));
}

inline std::string read(pwr::QMBufferProvider& store, std::uint64_t count) {
  return bytesOf(count, [&](char* out, std::uint64_t n) { return store.read(out, n); });
}

inline std::string peek(pwr::QMBufferProvider& store, std::uint64_t count) {
  return bytesOf(count, [&](char* out, std::uint64_t n) { return store.peek(out, n); });
}

/// All bytes, from the first on.
inline std::string contents(pwr::QMBufferProvider& store) {
  store.resetForRead();
  return read(store, store.size());
}

inline std::uint64_t bytesOnDisk(const pwr::QMExtensibleBackingStore& store) {
  return std::filesystem::file_size(store.path());
}

}  // namespace qumetra::test
