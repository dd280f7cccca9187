// One temp file of records: written while a collection runs, read when its report is made.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "client/src/common/owned.h"
#include "writers/textwriter_plugin/mapped_append_file.h"
#include "writers/textwriter_plugin/spill_system.h"

/// A handle on a temp file that is open for writing, then open for reading, or not open. Its file
/// is a sequence of records and nothing else:
///
///     offset 0, 4 bytes: the length N of the text, in native byte order
///     offset 4, N bytes: the text, without terminator
///
/// A record that `append` has taken survives the end of the process. A process that ends without
/// closing leaves zero bytes behind the last record, which read as empty records.
///
/// Movable; closes in the end. Not synchronised.
class SpillFile {
 public:
  SpillFile();
  SpillFile(SpillFile&&) noexcept;
  SpillFile& operator=(SpillFile&&) noexcept;
  ~SpillFile();

  /// Makes or empties the file at `path`. False on failure, with the reason in `errno`. `system`
  /// must outlive this object. REQUIRES: not open.
  bool openForWriting(const std::string& path, const SpillSystem& system);

  /// Appends one record. Returns 0, or the error number: EFBIG for a text of 2 GiB or more, or the
  /// system's own. After an error the file takes nothing more: rows are told by the number of
  /// records, so a gap would shift all that follows. REQUIRES: isWritable().
  int append(std::string_view text);

  /// Closes the file and opens it again at its start, for reading. False on failure; the file is
  /// then not open.
  bool reopenForReading(const std::string& path, const SpillSystem& system);

  /// Cuts the file to its records if it was written, and closes it. Does nothing when not open.
  void close();

  bool isOpen() const { return m_stream != nullptr; }
  /// Open for writing, and without an error so far.
  bool isWritable() const { return m_writing != nullptr && !m_failed; }
  /// For reading. Null when not open.
  std::FILE* stream() const { return m_stream.get(); }
  /// The bytes of all records taken, also after closing.
  std::uint64_t length() const;

 private:
  pwr::OwnedFile m_stream;
  /// Set while open for writing; on the descriptor of `m_stream`, so gone before it.
  std::unique_ptr<MappedAppendFile> m_writing;
  std::uint64_t m_length = 0;
  bool m_failed = false;
};
