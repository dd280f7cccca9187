// The bytes of one record, taken field by field.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

namespace qumetra {

/// Little-endian fields in a row. A field that lies beyond the end reads as 0 or empty, so that no
/// bytes can lead astray; callers check the size first, or `fellShort` at last. The bytes are
/// borrowed.
class RecordFields {
 public:
  RecordFields(const char* bytes, std::size_t size) : m_bytes(bytes), m_size(size) {}

  std::size_t size() const { return m_size; }
  /// How much was not taken yet.
  std::size_t left() const { return m_size - m_place; }
  /// A field that was taken lay beyond the end.
  bool fellShort() const { return m_fellShort; }

  std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
  std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
  std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
  std::uint64_t u64() { return number(8); }
  float f32() { return std::bit_cast<float>(u32()); }

  std::string bytes(std::size_t count) {
    if (!has(count)) {
      return {};
    }
    m_place += count;
    return {m_bytes + m_place - count, count};
  }

  /// The u16 at `offset`, which is not taken.
  std::uint16_t peekU16(std::size_t offset) const {
    RecordFields rest(m_bytes, m_size);
    rest.m_place = offset < m_size ? offset : m_size;
    return rest.u16();
  }

 private:
  bool has(std::size_t count) {
    m_fellShort = m_fellShort || left() < count;
    return left() >= count;
  }

  std::uint64_t number(std::size_t width) {
    if (!has(width)) {
      return 0;
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
      value |= std::uint64_t{static_cast<unsigned char>(m_bytes[m_place + i])} << (8 * i);
    }
    m_place += width;
    return value;
  }

  const char* m_bytes;
  std::size_t m_size;
  std::size_t m_place = 0;
  bool m_fellShort = false;
};

}  // namespace qumetra
