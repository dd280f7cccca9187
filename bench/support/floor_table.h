// The tables of a floor: cells are spilled with their lengths, and padded in a second pass.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/support/scratch.h"
#include "bench/support/spilled_cells.h"

namespace qumetra::bench {

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
      : m_cells(path, columns.size()), m_title(std::move(title)), m_columns(std::move(columns)) {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      m_cells.widen(i, m_columns[i].size());
    }
  }

  template <typename Format>
  void cell(std::size_t column, Format format) {
    m_cells.add(column, format);
  }

  /// Counts a row more, from 1.
  std::uint64_t nextRow() { return ++m_rows; }

  /// The second pass.
  void layOut(FloorOutput& out) {
    out.put(m_title);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      padded(out, i, m_columns[i]);
    }
    m_cells.forEach([&](std::size_t column, std::string_view text) { padded(out, column, text); });
    out.put("\n");
  }

 private:
  void padded(FloorOutput& out, std::size_t column, std::string_view text) {
    static constexpr std::string_view kBlanks = "                                        ";
    out.put(column == 0 ? "" : ", ");
    out.put(kBlanks.substr(0, m_cells.width(column) - text.size()));
    out.put(text);
    out.put(column + 1 == m_columns.size() ? "\n" : "");
  }

  SpilledCells m_cells;
  std::string m_title;
  std::vector<std::string> m_columns;
  std::uint64_t m_rows = 0;
};

}  // namespace qumetra::bench
