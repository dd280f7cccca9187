// Files for benchmarks.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "client/src/common/pw_files.h"

namespace qumetra::bench {

/// The path of a file next to the temp files of what is measured; the file is removed at the end.
class Scratch {
 public:
  explicit Scratch(const std::string& name)
      : m_path(pwr::qm_temp_directory_path() + "bench_" + std::to_string(::getpid()) + "_" + name) {
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch() { ::unlink(m_path.c_str()); }

  const std::string& path() const { return m_path; }

 private:
  std::string m_path;
};

/// The whole of a file; empty when it cannot be read.
inline std::string bytesOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

/// Writes and empties `block`. A failure ends the program: there is nothing to measure then.
inline void writeBlock(int file, std::vector<char>& block) {
  if (::write(file, block.data(), block.size()) != static_cast<ssize_t>(block.size())) {
    std::abort();
  }
  block.clear();
}

}  // namespace qumetra::bench
