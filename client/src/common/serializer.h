// The growing byte buffer of packed records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace pwr {

/// Bytes written at one end and read from the start. Numbers are their raw native bytes; a text is
/// its length as a 16-bit number and its characters, without a terminator. Nothing stands between.
/// Belongs to one thread.
///
///     Serializer out(0);
///     out.write_to(&number, sizeof number);
///     Serializer in(out.get_buffer());
///     if (in.read_from(&number, sizeof number) != sizeof number) { ...too short... }
class Serializer {
 public:
  /// Room for `size` bytes, in which nothing has been written.
  explicit Serializer(std::size_t size);
  /// A copy of `bytes` to read. Nothing counts as written, so `size` is 0 and `get_buffer` empties
  /// it.
  explicit Serializer(const std::vector<std::uint8_t>& bytes);

  /// Appends `count` bytes and returns 0. With a `count` of 0 or a null `source` nothing is written
  /// and the result is whether `source` was null. 1, and nothing is written, when a vector cannot
  /// hold that many.
  int write_to(const void* source, std::size_t count);
  /// Appends a text. The length of one longer than 65535 bytes is cut to 16 bits while all its
  /// bytes are written: it cannot be read back.
  int write_to(const std::string& text);

  /// Takes `count` bytes and returns `count`; 0, and nothing is taken, when fewer are left of what
  /// was written or given.
  std::size_t read_from(void* destination, std::size_t count);
  /// Takes a text, appends it to `text` and returns its length. 0 when the bytes fall short or the
  /// text is empty; the length is then taken all the same, if it was there.
  std::size_t read_from(std::string& text);
  /// Ends `text` behind `length` characters and returns it; null for null.
  /// REQUIRES: `text` is null or has room for `length` plus 1 characters.
  char* read_string(char* text, std::size_t length);
  /// Gives the last `count` bytes back to read again. More than were read is a plain warning, and
  /// nothing happens.
  void rewind_read(std::size_t count);

  /// How many bytes have been written.
  std::size_t size() const;
  bool empty() const;
  /// A copy of the bytes written. Room beyond them, and given bytes that were not overwritten, are
  /// dropped.
  std::vector<std::uint8_t> get_buffer();

 private:
  /// Makes room for `count` bytes more. False when a vector cannot hold that many.
  bool grow(std::size_t count);
  std::size_t bytesLeft() const;

  std::vector<std::uint8_t> m_buffer;
  std::uint64_t m_writeOffset = 0;
  std::uint64_t m_readOffset = 0;
  /// The bytes given at the start, which can be read although they were not written.
  std::size_t m_givenBytes = 0;
};

}  // namespace pwr
