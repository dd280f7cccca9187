// What the tests of spilled tables share: records as bytes, a temp directory, a report to read
// back.
#pragma once

#include <stdlib.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "writers/textwriter_plugin/temp_file_manager.h"

namespace qumetra::test {

/// The bytes of one record.
inline std::string recordOf(const std::string& text) {
  const auto length = static_cast<std::int32_t>(text.size());
  std::string bytes(sizeof length, '\0');
  std::memcpy(bytes.data(), &length, sizeof length);
  return bytes + text;
}

inline std::string recordsOf(const std::vector<std::string>& texts) {
  std::string bytes;
  for (const std::string& text : texts) {
    bytes += recordOf(text);
  }
  return bytes;
}

/// Points TMPDIR at a fresh directory as long as it lives, so that temp files stand in `path()`.
class SpillDir {
 public:
  SpillDir() { ::setenv("TMPDIR", m_dir.path().c_str(), 1); }
  SpillDir(const SpillDir&) = delete;
  SpillDir& operator=(const SpillDir&) = delete;
  ~SpillDir() { ::unsetenv("TMPDIR"); }

  /// Where temp files stand, with a "/" at its end.
  std::string path() const { return m_dir.path().string() + "/qumetra_tmp/"; }
  std::string file(const std::string& name) const { return m_dir.file(name); }

 private:
  TempDir m_dir;
};

/// Stores the texts as cells of the columns 0, 1, … `columns` - 1, 0, 1 and so on.
inline void pushAll(TempFileManager& manager, const std::vector<std::string>& texts,
                    std::size_t columns) {
  for (std::size_t i = 0; i < texts.size(); ++i) {
    manager.pushString(nullptr, texts[i], i % columns);
  }
}

/// What `flush` returns and writes.
inline std::pair<int, std::string> flushed(TempFileManager& manager,
                                           const std::string& delimiter = ", ") {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* out = ::open_memstream(&text, &size);
  const int result = manager.flush(out, delimiter);
  std::fclose(out);
  std::string report(text, size);
  std::free(text);
  return {result, report};
}

}  // namespace qumetra::test
