// Reads the records of a spill file one after another through a buffer that grows when it must.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "writers/textwriter_plugin/spill_system.h"

/// A block of memory that the readers of one table share. Not copyable; not synchronised.
class RecordBuffer {
 public:
  static constexpr std::size_t kFirstSize = 256;

  explicit RecordBuffer(const SpillSystem& system) : m_system(system) {}
  RecordBuffer(const RecordBuffer&) = delete;
  RecordBuffer& operator=(const RecordBuffer&) = delete;
  ~RecordBuffer() { release(); }

  /// Makes the block of `kFirstSize` bytes. False, with a warning, when there is no memory.
  bool allocate();
  /// Doubles the block until it holds `size` bytes. False, with a warning, when there is no memory;
  /// the block is then gone.
  bool growTo(std::size_t size);
  void release();

  char* data() const { return m_data; }
  /// 0 without a block.
  std::size_t size() const { return m_size; }

 private:
  const SpillSystem& m_system;
  char* m_data = nullptr;
  std::size_t m_size = 0;
};

/// Reads records from the start of a stream. Failures are warnings in the log, and end the reading:
/// without a whole record nothing that follows could be told apart. Borrows all it is given. Not
/// synchronised.
class RecordReader {
 public:
  /// `length` is the number of bytes that records fill; what stands behind them is not read. `path`
  /// is for messages only. REQUIRES: `buffer` has been allocated, or gone by a failed growth; then
  /// nothing is read.
  RecordReader(std::FILE* stream, const std::string& path, std::uint64_t length,
               RecordBuffer& buffer);

  /// Sets `text` to the text of the next record and returns true; the text is valid until the next
  /// call. Returns false at the end.
  bool next(std::string_view& text) {
    while (!takeRecord(text)) {
      if (!refill()) {
        return false;
      }
    }
    return true;
  }

  /// True when reading ended before the records did.
  bool failed() const { return m_failed; }

 private:
  using Length = std::int32_t;

  bool takeRecord(std::string_view& text) {
    const std::size_t left = m_end - m_position;
    if (left < sizeof(Length) || left < recordSize()) {
      return false;
    }
    const std::size_t size = recordSize();
    text = {m_buffer.data() + m_position + sizeof(Length), size - sizeof(Length)};
    m_position += size;
    return true;
  }

  /// The size of the record at the position, as its length field tells it.
  std::size_t recordSize() const {
    std::uint32_t length = 0;
    std::memcpy(&length, m_buffer.data() + m_position, sizeof length);
    return sizeof(Length) + length;
  }

  bool refill();
  bool makeRoom(std::size_t wanted);
  bool read();
  bool stop();

  std::FILE* m_stream;
  const std::string& m_path;
  std::uint64_t m_unread;
  RecordBuffer& m_buffer;
  // What of the buffer is still to be taken.
  std::size_t m_position = 0;
  std::size_t m_end = 0;
  bool m_failed = false;
};
