// Records of a .qmbin file, packed field by field.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "client/src/common/byte_packing.h"
#include "writers/binarywriter_plugin/binary_format.h"

namespace pwr::bin {

/// A record with an empty payload of `fixedSize` bytes, which its head tells as its size.
inline std::vector<char> makeRecord(MsgType type, std::uint16_t fixedSize) {
  std::vector<char> record(kHeadSize + fixedSize);
  record[2] = static_cast<char>(type);
  packNumber(fixedSize, record.data());
  return record;
}

/// Sets the size of the payload. Only 16 bits are kept: what is longer breaks the stream, as
/// readers of the format were told.
inline void setLength(std::vector<char>& record, std::size_t length) {
  packNumber(static_cast<std::uint16_t>(length), record.data());
}

/// Sets one field of the payload. REQUIRES: the payload has it.
template <typename Number>
void setField(char* record, std::size_t offset, Number value) {
  packNumber(value, record + kHeadSize + offset);
}
template <typename Number>
void setField(std::vector<char>& record, std::size_t offset, Number value) {
  setField(record.data(), offset, value);
}

/// Appends one field.
template <typename Number>
void appendField(std::vector<char>& record, Number value) {
  record.resize(record.size() + sizeof(Number));
  packNumber(value, record.data() + record.size() - sizeof(Number));
}

/// Makes `bytes` longer by `count` and returns where they begin. Throws `std::bad_alloc`; `bytes`
/// is as it was then.
inline char* grow(std::vector<char>& bytes, std::size_t count) {
  bytes.resize(bytes.size() + count);
  return bytes.data() + (bytes.size() - count);
}

/// Sees to room for `count` bytes more. Throws `std::bad_alloc`.
inline void reserveMore(std::vector<char>& bytes, std::size_t count) {
  if (bytes.capacity() - bytes.size() < count) {
    bytes.reserve(std::max(2 * bytes.capacity(), bytes.size() + count));
  }
}

/// Empties `bytes` and gives their memory back.
inline void freeMemory(std::vector<char>& bytes) { std::vector<char>().swap(bytes); }

inline void appendBytes(std::vector<char>& out, const std::vector<char>& bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
}

}  // namespace pwr::bin
