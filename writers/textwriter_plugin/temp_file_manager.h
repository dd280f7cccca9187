// The spill of one table: its cells go to a temp file as they come, and to the report at the end.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "writers/textwriter_plugin/spill_file.h"
#include "writers/textwriter_plugin/spill_system.h"

namespace pwr {
class EntityHandle;
}

/// A temp file and where it stands.
struct TempFile {
  SpillFile file;
  std::string path;
};

/// Keeps one table on the disk while a collection runs, together with the width of each column, and
/// writes it to the report in aligned rows:
///
///     TempFileManager manager(2);
///     manager.m_title = "Residency (units = %)";
///     manager.pushString(nullptr, "core 0", 0);
///     manager.pushString(nullptr, "12.5", 1);
///     manager.flush(report, ", ");
///
/// A row is as many consecutive cells as the table has columns; nothing else tells rows apart.
/// The table holds one open file from construction on, and its temp files are unlinked in the end.
/// The format of a temp file is told at `SpillFile`.
///
/// When there is no file, the manager works on without one: it takes no cells, and the report gets
/// the title only. Not synchronised; nor is the counter that names the files.
class TempFileManager {
 public:
  /// Makes the temp file, "<temp directory>_qmet_<counter>.tmp". A failure is one error in the log;
  /// those of a full disk, a disk that cannot be written and too many open files come once per
  /// process each. `columnCount` below 1 gives no columns. `system` must outlive the manager.
  explicit TempFileManager(std::int32_t columnCount,
                           const SpillSystem& system = SpillSystem::real());
  TempFileManager(const TempFileManager&) = delete;
  TempFileManager& operator=(const TempFileManager&) = delete;
  /// Closes and unlinks all temp files.
  ~TempFileManager();

  /// Stores one cell: in the main temp file, or in a file of its own per entity when `entity` is
  /// not null. The column grows to the text's width; a column that the table does not have is
  /// stored without. Returns 0, or 1 when the cell could not be stored: without a file, after
  /// `flush`, and once a write has failed, which is one error in the log per file.
  int pushString(const pwr::EntityHandle* entity, std::string_view text, std::size_t column);

  /// Writes the table to `out`: the title, the rows of the main file and then of the entity files
  /// in the order of their ids, and an empty line. Each cell is padded on the right to its column's
  /// width, the last of a row too; `delimiter` stands between cells. Nothing is quoted or escaped.
  /// Ends the taking of cells; may be called again. Returns 0, or 1 when anything went wrong, with
  /// what could be read in the report.
  int flush(std::FILE* out, const std::string& delimiter);

  bool hasOpenFile() const { return m_file.isOpen(); }

  /// The number of the next manager's files, process-wide.
  static std::uint64_t s_nextTempFileId;

  SpillFile m_file;
  std::string m_path;
  std::string m_title;
  /// The path without ".tmp".
  std::string m_basePath;
  /// One per column.
  std::vector<std::int32_t> m_columnWidths;
  /// By the id of the entity.
  std::map<std::uint64_t, TempFile> m_entityFiles;
  // Kept for whoever looks at a table's state; the report does not use them.
  std::uint64_t m_rowCounter = 0;
  std::uint64_t m_cellCounter = 0;
  std::uint32_t m_pageCount = 1;
  /// The rows go to the standard output as well.
  bool m_echo = false;

 private:
  class Rows;

  int store_i(SpillFile& file, const std::string& path, std::string_view text);
  TempFile* getEntityFile_i(const pwr::EntityHandle& entity);
  bool flushFile_i(SpillFile& file, const std::string& path, Rows& rows);

  const SpillSystem& m_system;
  /// The main temp file was made, so that it is ours to unlink.
  bool m_created = false;
};
