// How results that are read back, and what is wrong with them, are printed.
#pragma once

#include <cstdint>
#include <string>

namespace qumetra::cli {

/// Prints what is wrong with files to standard error, with the file and the place in it. What is
/// wrong once is often wrong at every sample, so the first of a file are shown and the others
/// counted. Not synchronised.
class FaultLines {
 public:
  /// What comes is about this file.
  void startFile(const std::string& file);
  /// Tells how many lines of the file were not shown. Once per file.
  void endFile() const;

  /// `offset` in bytes from the front of the file.
  void print(std::uint64_t offset, const std::string& what);

 private:
  std::string m_file;
  std::uint64_t m_count = 0;
};

/// Prints lines to standard output, block by block. Throws `UsageError` when that is not possible.
/// Not synchronised.
class ResultLines {
 public:
  /// The line that is being made, to append to.
  std::string& line() { return m_out; }
  void endLine();
  /// Prints what was not printed yet.
  void flush();

 private:
  std::string m_out;
};

}  // namespace qumetra::cli
