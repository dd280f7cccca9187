// A table of text cells that may be longer than memory, laid out once it is complete.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "client/src/common/buffer_provider.h"

class RowSink;

/// Takes rows of cells while a collection runs and writes them as aligned columns at its end, when
/// the width of every column is known. Columns may be added between rows; earlier rows then have no
/// cell there.
///
///     BackingStoreWrapper table("CPU Temperature", "N/A");
///     const std::uint16_t time = table.addColumn("Timestamp");
///     table.pushCell("100", time);
///     table.rowComplete();
///     table.flush(file, ",", false);
///
/// Each row goes into a byte store as one record per column, in column order, and a record that
/// ends the row: a 32-bit length in the machine's order and that many bytes of text. A cell whose
/// text is exactly a newline therefore ends its row. Not synchronised.
class BackingStoreWrapper {
 public:
  /// How many columns a table has at most.
  static constexpr std::size_t kMaxColumns = 65535;
  /// The index of a column that found no room; no cell can be pushed there.
  static constexpr std::uint16_t kNoColumn = 65535;

  /// `missing` is the text of an absent cell. Throws what the byte store throws (a `const char*`)
  /// when it cannot be made.
  BackingStoreWrapper(std::string title, std::string missing);
  BackingStoreWrapper(const BackingStoreWrapper&) = delete;
  BackingStoreWrapper& operator=(const BackingStoreWrapper&) = delete;
  ~BackingStoreWrapper();

  /// Appends a column and returns its index. A full table warns and returns `kNoColumn`.
  std::uint16_t addColumn(std::string title);

  /// Sets the cell of the current row. A later text for the same column replaces it. Returns 1,
  /// after a warning, for a column that has not been added.
  int pushCell(std::string_view text, std::uint32_t column);

  /// Takes no lines. Returns 0.
  int pushLine(const std::string& text);

  /// Ends the current row and starts the next. Cells that were not set get the missing text. While
  /// the disk refuses bytes, rows are dropped; the store says why.
  void rowComplete();

  /// Writes the table to `out`: the title, the column titles, the rows and an empty line, each cell
  /// right-justified in its column and all but the first with `delimiter` and a blank in front.
  /// With `leadingNewline` an empty line stands before it all. Returns 1, after a message, when
  /// `out` is null or memory is short, and when `out` takes no more bytes. The table stays as it is
  /// and can take more rows.
  int flush(std::FILE* out, const std::string& delimiter, bool leadingNewline);

 private:
  struct Cell {
    std::string text;
    bool isSet = false;
  };

  class RowLayout;

  std::string_view textOf(const Cell& cell) const { return cell.isSet ? cell.text : m_missing; }
  /// Puts the current row into `m_rowRecords`.
  void makeRecords();
  /// Brings the row's records to the store. False while bytes of it are left.
  bool storeRow();
  /// Writes the rows and what ends the table. False when they could not all be read.
  bool flushRows(RowSink& sink, RowLayout& layout);

  std::unique_ptr<pwr::QMBufferProvider> m_store;
  std::string m_title;
  std::string m_missing;
  std::vector<std::string> m_columns;
  /// The row being built, one cell per column. Cells keep their memory from row to row.
  std::vector<Cell> m_row;
  /// The records of a row that the store has yet to take.
  std::vector<char> m_rowRecords;
  std::vector<std::uint64_t> m_widths;
};
