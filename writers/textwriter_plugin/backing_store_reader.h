// Reads the records of a table of text cells back from its store.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "client/src/common/buffer_provider.h"
#include "client/src/common/owned.h"

/// Reads records one after another, in blocks of at most 1 MiB unless a record is longer.
///
/// A record is the length of a text, 32 bits in the machine's order, and the text.
///
///     BackingStoreReader reader(store);
///     std::string_view text;
///     while (reader.next(text)) { ... }
///     return reader.failed() ? 1 : 0;
///
/// Failures are told in the log, and end the reading. Not synchronised.
class BackingStoreReader {
 public:
  /// Goes to the first record. `store` is borrowed, and nothing else may use it meanwhile.
  explicit BackingStoreReader(pwr::QMBufferProvider& store);

  /// Sets `text` to the next record and returns true; the text is valid until the next call. False
  /// at the end, where a record that is not whole counts as the end, and when the store cannot be
  /// read.
  bool next(std::string_view& text) {
    while (!takeRecord(text)) {
      if (!refill()) {
        return false;
      }
    }
    return true;
  }

  /// Whether reading ended for want of memory, or because the store could not be moved back. A
  /// store that cannot be read on has said so itself, and counts as its end.
  bool failed() const { return m_failed; }

 private:
  using Length = std::uint32_t;

  bool takeRecord(std::string_view& text) {
    const std::size_t left = m_end - m_position;
    if (left < sizeof(Length) || left < recordSize()) {
      return false;
    }
    const std::size_t size = recordSize();
    text = {m_block.get() + m_position + sizeof(Length), size - sizeof(Length)};
    m_position += size;
    return true;
  }

  /// The size of the record at the position, as its length tells it.
  std::size_t recordSize() const {
    Length length = 0;
    std::memcpy(&length, m_block.get() + m_position, sizeof length);
    return sizeof(Length) + length;
  }

  /// Reads the next block, which begins with the record that the last one cut off.
  bool refill();
  /// Moves the store back to the cut record of `count` bytes.
  bool moveBack(std::size_t count);
  /// Doubles the block when the record, of which `left` bytes stand at its start, is longer than
  /// the `lastRead` bytes that the block held.
  bool makeRoom(std::size_t left, std::size_t lastRead);

  pwr::QMBufferProvider& m_store;
  pwr::OwnedBytes m_block;
  std::size_t m_capacity;
  // What of the block is still to be taken.
  std::size_t m_position = 0;
  std::size_t m_end = 0;
  bool m_failed = false;
};
