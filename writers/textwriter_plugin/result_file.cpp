#include "writers/textwriter_plugin/result_file.h"

#include <utility>

#include "client/src/common/pw_files.h"
#include "client/src/common/pw_log.h"

ResultFile createResultFile(const std::string& path) {
  std::FILE* file = nullptr;
  const bool opened = pwr::openFileHandle(&file, path, "wb");
  ResultFile result(file);
  return opened ? std::move(result) : nullptr;
}

void writeLine(const ResultFile& file, const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), file.get());
  std::fwrite("\n", 1, 1, file.get());
}

bool closeResultFile(ResultFile& file, const std::string& path) {
  const bool hadErrors = std::ferror(file.get()) != 0;
  if (std::fclose(file.release()) != 0 || hadErrors) {
    pwr::logError("ERROR: Could not write all of %s\n", path.c_str());
    return false;
  }
  return true;
}
