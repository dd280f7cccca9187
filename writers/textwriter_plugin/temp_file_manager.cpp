#include "writers/textwriter_plugin/temp_file_manager.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "client/src/common/error_text.h"
#include "client/src/common/number_text.h"
#include "client/src/common/pw_files.h"
#include "client/src/common/pw_log.h"
#include "host/execute_once.h"
#include "host/handles.h"
#include "writers/textwriter_plugin/record_reader.h"
#include "writers/textwriter_plugin/row_sink.h"

namespace {

// Errors in spite of their first word.
constexpr const char* kTooManyFiles =
    "Warning: Could not post process metric data: Too many open file handles. Results may be "
    "incomplete for some metrics. Try post processing results with only one -r option at a time. "
    "If the problem persists; try collecting fewer metrics.\n";
constexpr const char* kDiskFull =
    "Warning: Could not generate result files. No space is left on the disk.\n";
constexpr const char* kReadOnly =
    "Warning: Could not generate result files. The file system is not writeable.\n";

void logOnce(bool& done, const char* text) {
  pwr::executeOnce(done, [text] { pwr::logError("%s", text); });
}

// Why nothing can be spilled. What concerns the whole machine is said once, whichever table meets
// it.
void reportSpillError(const std::string& path, int error) {
  static bool s_tooManyFiles = false;
  static bool s_diskFull = false;
  static bool s_readOnly = false;
  switch (error) {
    case EMFILE:
      logOnce(s_tooManyFiles, kTooManyFiles);
      break;
    case ENOSPC:
      logOnce(s_diskFull, kDiskFull);
      break;
    case EROFS:
      logOnce(s_readOnly, kReadOnly);
      break;
    default:
      pwr::logError("ERROR: Cannot create temp output file: %s. error: errnum=%d: %s\n",
                    path.c_str(), error, pwr::errorText(error).c_str());
  }
}

std::string nextBasePath() {
  std::string path = pwr::qm_temp_directory_path() + "_qmet_";
  pwr::appendUInt(path, TempFileManager::s_nextTempFileId++);
  return path;
}

std::string entityPath(const std::string& basePath, std::uint64_t id) {
  std::string path = basePath + "___";
  pwr::appendUInt(path, id);
  return path + ".tmp";
}

}  // namespace

/// The way of one `flush` through the files: the cursor goes on from one file to the next, since
/// rows do so too.
class TempFileManager::Rows {
 public:
  Rows(const std::vector<std::int32_t>& widths, const std::string& delimiter, std::FILE* out,
       bool echo, const SpillSystem& system)
      : m_widths(widths), m_delimiter(delimiter), m_sink(out, echo), m_buffer(system) {}

  RowSink& sink() { return m_sink; }
  RecordBuffer& buffer() { return m_buffer; }

  void addCell(std::string_view text) {
    // A table without columns never ends its row.
    const bool hasColumn = m_column < m_widths.size();
    m_sink.appendPadded(text, hasColumn ? static_cast<std::size_t>(m_widths[m_column]) : 0);
    if (!hasColumn || m_column + 1 < m_widths.size()) {
      m_sink.append(m_delimiter);
      m_column += hasColumn ? 1 : 0;
      return;
    }
    m_sink.append("\n");
    m_column = 0;
  }

 private:
  const std::vector<std::int32_t>& m_widths;
  const std::string& m_delimiter;
  RowSink m_sink;
  RecordBuffer m_buffer;
  std::size_t m_column = 0;
};

std::uint64_t TempFileManager::s_nextTempFileId = 1;

TempFileManager::TempFileManager(std::int32_t columnCount, const SpillSystem& system)
    : m_basePath(nextBasePath()),
      m_columnWidths(static_cast<std::size_t>(std::max(columnCount, 0)), 0),
      m_system(system) {
  m_path = m_basePath + ".tmp";
  m_created = m_file.openForWriting(m_path, m_system);
  if (!m_created) {
    reportSpillError(m_path, errno);
  }
}

TempFileManager::~TempFileManager() {
  m_file.close();
  if (m_created) {
    ::unlink(m_path.c_str());
  }
  for (auto& [id, entry] : m_entityFiles) {
    entry.file.close();
    ::unlink(entry.path.c_str());
  }
}

int TempFileManager::pushString(const pwr::EntityHandle* entity, std::string_view text,
                                std::size_t column) {
  if (entity == nullptr) {
    if (store_i(m_file, m_path, text) != 0) {
      return 1;
    }
  } else {
    TempFile* entry = getEntityFile_i(*entity);
    if (entry == nullptr || store_i(entry->file, entry->path, text) != 0) {
      return 1;
    }
  }
  if (column < m_columnWidths.size()) {
    m_columnWidths[column] =
        std::max(m_columnWidths[column], static_cast<std::int32_t>(text.size()));
  }
  return 0;
}

int TempFileManager::store_i(SpillFile& file, const std::string& path, std::string_view text) {
  if (!file.isWritable()) {
    return 1;
  }
  const int error = file.append(text);
  if (error != 0) {
    reportSpillError(path, error);
  }
  return error == 0 ? 0 : 1;
}

TempFile* TempFileManager::getEntityFile_i(const pwr::EntityHandle& entity) {
  const auto found = m_entityFiles.find(entity.getId());
  if (found != m_entityFiles.end()) {
    return &found->second;
  }
  TempFile entry;
  entry.path = entityPath(m_basePath, entity.getId());
  if (!entry.file.openForWriting(entry.path, m_system)) {
    const int error = errno;
    pwr::logError("ERROR: Cannot open temp output file: %s, error: errnum=%d: %s\n",
                  entry.path.c_str(), error, pwr::errorText(error).c_str());
    return nullptr;
  }
  return &m_entityFiles.emplace(entity.getId(), std::move(entry)).first->second;
}

int TempFileManager::flush(std::FILE* out, const std::string& delimiter) {
  if (out == nullptr) {
    return 1;
  }
  Rows rows(m_columnWidths, delimiter, out, m_echo, m_system);
  if (!rows.buffer().allocate()) {
    return 1;
  }
  rows.sink().append(m_title);
  rows.sink().append("\n");
  bool whole = flushFile_i(m_file, m_path, rows);
  for (auto& [id, entry] : m_entityFiles) {
    whole = flushFile_i(entry.file, entry.path, rows) && whole;
  }
  rows.sink().append("\n");
  return rows.sink().finish() && whole ? 0 : 1;
}

bool TempFileManager::flushFile_i(SpillFile& file, const std::string& path, Rows& rows) {
  if (!file.reopenForReading(path, m_system)) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Unable to open temp file: %s\n", path.c_str());
    // Not a failure of the table: what other files hold still makes one.
    return true;
  }
  RecordReader reader(file.stream(), path, file.length(), rows.buffer());
  std::string_view text;
  while (reader.next(text)) {
    rows.addCell(text);
  }
  return !reader.failed();
}
