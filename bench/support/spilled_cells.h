// What floors of aligned tables share: cells in a temp file with their lengths, and the widths of
// their columns.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/floor_text.h"

namespace qumetra::bench {

inline constexpr std::size_t kFloorBlockSize = 0x100000;

/// Cells of a table, row by row. Widths are in bytes.
class SpilledCells {
 public:
  /// The file has no name any more when this returns.
  SpilledCells(const std::string& path, std::size_t columns)
      : m_file(::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600)),
        m_block(kFloorBlockSize),
        m_widths(columns) {
    ::unlink(path.c_str());
  }
  SpilledCells(const SpilledCells&) = delete;
  SpilledCells& operator=(const SpilledCells&) = delete;
  ~SpilledCells() { ::close(m_file); }

  /// Adds what `format` writes to the place that it gets, which has room for `kLongestText`. It
  /// returns the length.
  template <typename Format>
  void add(std::size_t column, Format format) {
    if (kFloorBlockSize - m_used < 1 + kLongestText) {
      spill();
    }
    char* record = m_block.data() + m_used;
    const std::size_t length = format(record + 1);
    *record = static_cast<char>(length);
    m_used += 1 + length;
    widen(column, length);
  }

  void widen(std::size_t column, std::size_t width) {
    m_widths[column] = std::max(m_widths[column], width);
  }
  std::size_t width(std::size_t column) const { return m_widths[column]; }
  std::size_t columns() const { return m_widths.size(); }

  /// The second pass: calls `take(column, text)` for each cell. No cell can be added then.
  template <typename Take>
  void forEach(Take take) {
    spill();
    ::lseek(m_file, 0, SEEK_SET);
    std::size_t column = 0;
    std::size_t kept = 0;
    for (ssize_t got = 0;
         (got = ::read(m_file, m_block.data() + kept, kFloorBlockSize - kept)) > 0;) {
      const std::size_t end = kept + static_cast<std::size_t>(got);
      const std::size_t taken = takeWhole(end, column, take);
      kept = end - taken;
      std::memmove(m_block.data(), m_block.data() + taken, kept);
    }
  }

 private:
  void spill() {
    if (::write(m_file, m_block.data(), m_used) != static_cast<ssize_t>(m_used)) {
      std::abort();
    }
    m_used = 0;
  }

  /// Takes the whole cells of the block and returns where they end.
  template <typename Take>
  std::size_t takeWhole(std::size_t end, std::size_t& column, Take& take) {
    std::size_t position = 0;
    while (position < end) {
      const std::size_t length = static_cast<unsigned char>(m_block[position]);
      if (end - position - 1 < length) {
        break;
      }
      take(column, std::string_view(m_block.data() + position + 1, length));
      position += 1 + length;
      column = column + 1 == m_widths.size() ? 0 : column + 1;
    }
    return position;
  }

  int m_file;
  std::vector<char> m_block;
  std::size_t m_used = 0;
  std::vector<std::size_t> m_widths;
};

}  // namespace qumetra::bench
