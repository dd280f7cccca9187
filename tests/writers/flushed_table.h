// A table of cells as its report shows it.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "writers/textwriter_plugin/backing_store_wrapper.h"

namespace qumetra::test {

/// What `flush` returns and writes.
struct FlushedTable {
  int result;
  std::string text;
};

inline FlushedTable flushed(BackingStoreWrapper& table, const std::string& delimiter = ",",
                            bool leadingNewline = false) {
  char* bytes = nullptr;
  std::size_t size = 0;
  std::FILE* out = ::open_memstream(&bytes, &size);
  const int result = table.flush(out, delimiter, leadingNewline);
  std::fclose(out);
  std::string text(bytes, size);
  std::free(bytes);
  return {result, text};
}

}  // namespace qumetra::test
