// Gathers the rows of a table and hands them to the report in large blocks.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

/// Takes text piece by piece and writes it to a stream, block by block. With an echo, the same
/// bytes go to the standard output. The first failed write stays: nothing more goes to the report,
/// and `finish` tells. Borrows the stream. Not synchronised.
class RowSink {
 public:
  static constexpr std::size_t kBlockSize = std::size_t{64} * 1024;

  RowSink(std::FILE* out, bool echo);
  RowSink(const RowSink&) = delete;
  RowSink& operator=(const RowSink&) = delete;
  /// What `finish` has not written is dropped.
  ~RowSink() = default;

  void append(std::string_view text) {
    if (text.size() > kBlockSize - m_used) {
      appendLarge(text);
      return;
    }
    if (!text.empty()) {
      std::memcpy(m_block.get() + m_used, text.data(), text.size());
      m_used += text.size();
    }
  }

  /// Appends `text` and blanks behind it up to `width` bytes. A longer text is not cut.
  void appendPadded(std::string_view text, std::size_t width) {
    append(text);
    const std::size_t blanks = width > text.size() ? width - text.size() : 0;
    if (blanks > kBlockSize - m_used) {
      appendBlanks(blanks);
      return;
    }
    std::memset(m_block.get() + m_used, ' ', blanks);
    m_used += blanks;
  }

  /// Writes what has been gathered. Returns false when any write failed. The stream itself may
  /// still hold bytes of it.
  bool finish();

 private:
  void appendLarge(std::string_view text);
  void appendBlanks(std::size_t count);
  void writeOut(std::string_view text);

  std::FILE* m_out;
  bool m_echo;
  bool m_failed = false;
  std::unique_ptr<char[]> m_block;
  std::size_t m_used = 0;
};
