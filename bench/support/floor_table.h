// The tables of a floor: cells are spilled with their lengths, and padded in a second pass.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/support/floor_text.h"
#include "bench/support/scratch.h"

namespace qumetra::bench {

inline constexpr std::size_t kFloorBlockSize = 0x100000;

/// A file that takes text in blocks.
class FloorOutput {
 public:
  explicit FloorOutput(const std::string& path)
      : m_file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600)) {
    m_block.reserve(kFloorBlockSize);
  }
  FloorOutput(const FloorOutput&) = delete;
  FloorOutput& operator=(const FloorOutput&) = delete;
  ~FloorOutput() {
    writeBlock(m_file, m_block);
    ::close(m_file);
  }

  void put(std::string_view text) {
    if (m_block.size() + text.size() > kFloorBlockSize) {
      writeBlock(m_file, m_block);
    }
    m_block.insert(m_block.end(), text.begin(), text.end());
  }

 private:
  int m_file;
  std::vector<char> m_block;
};

/// Spilled cells, and the widths of their columns.
class FloorTable {
 public:
  FloorTable(const std::string& path, std::string title, std::vector<std::string> columns)
      : m_file(::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600)),
        m_block(kFloorBlockSize),
        m_title(std::move(title)),
        m_columns(std::move(columns)) {
    ::unlink(path.c_str());
    for (const std::string& column : m_columns) {
      m_widths.push_back(column.size());
    }
  }
  FloorTable(const FloorTable&) = delete;
  FloorTable& operator=(const FloorTable&) = delete;
  ~FloorTable() { ::close(m_file); }

  template <typename Format>
  void cell(std::size_t column, Format format) {
    if (kFloorBlockSize - m_used < 1 + kLongestText) {
      spill();
    }
    char* record = m_block.data() + m_used;
    const std::size_t length = format(record + 1);
    *record = static_cast<char>(length);
    m_used += 1 + length;
    m_widths[column] = std::max(m_widths[column], length);
  }

  /// Counts a row more, from 1.
  std::uint64_t nextRow() { return ++m_rows; }

  /// The second pass.
  void layOut(FloorOutput& out) {
    spill();
    out.put(m_title);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      padded(out, i, m_columns[i]);
    }
    ::lseek(m_file, 0, SEEK_SET);
    std::size_t column = 0;
    std::size_t kept = 0;
    for (ssize_t got = 0;
         (got = ::read(m_file, m_block.data() + kept, kFloorBlockSize - kept)) > 0;) {
      const std::size_t end = kept + static_cast<std::size_t>(got);
      const std::size_t taken = cells(out, end, column);
      kept = end - taken;
      std::memmove(m_block.data(), m_block.data() + taken, kept);
    }
    out.put("\n");
  }

 private:
  void spill() {
    if (::write(m_file, m_block.data(), m_used) != static_cast<ssize_t>(m_used)) {
      std::abort();
    }
    m_used = 0;
  }

  /// Pads the whole records of the block and returns where they end.
  std::size_t cells(FloorOutput& out, std::size_t end, std::size_t& column) {
    std::size_t position = 0;
    while (position < end) {
      const std::size_t length = static_cast<unsigned char>(m_block[position]);
      if (end - position - 1 < length) {
        break;
      }
      padded(out, column, {m_block.data() + position + 1, length});
      position += 1 + length;
      column = column + 1 == m_columns.size() ? 0 : column + 1;
    }
    return position;
  }

  void padded(FloorOutput& out, std::size_t column, std::string_view text) {
    static constexpr std::string_view kBlanks = "                                        ";
    out.put(column == 0 ? "" : ", ");
    out.put(kBlanks.substr(0, m_widths[column] - text.size()));
    out.put(text);
    out.put(column + 1 == m_columns.size() ? "\n" : "");
  }

  int m_file;
  std::vector<char> m_block;
  std::size_t m_used = 0;
  std::string m_title;
  std::vector<std::string> m_columns;
  std::vector<std::size_t> m_widths;
  std::uint64_t m_rows = 0;
};

}  // namespace qumetra::bench
