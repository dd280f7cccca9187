// A file that is written in large blocks.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qumetra {

/// Whether a `BlockFile` of this or another process has the regular file open right now.
bool isBeingWritten(const std::string& path);

/// Collects bytes and hands them to the kernel in large blocks. The first failure sticks: later
/// calls write nothing. Closing is a call with a result; the destructor only catches a forgotten
/// one. Not synchronised.
class BlockFile {
 public:
  /// Makes or truncates the file, with missing directories. A regular file is locked until it is
  /// closed: two that write one file at once would damage it, so the second fails, and leaves it as
  /// it is.
  explicit BlockFile(std::string path);
  BlockFile(const BlockFile&) = delete;
  BlockFile& operator=(const BlockFile&) = delete;
  ~BlockFile();

  /// Takes bytes. They are in the file after `sync`, or once there are enough for a block.
  void append(std::string_view bytes);
  /// Brings what is buffered to the file.
  void sync();
  /// Replaces bytes that were appended before. REQUIRES: `at` plus the size is within the file.
  void overwrite(std::uint64_t at, std::string_view bytes);
  /// Brings what is buffered to the file and closes it. Calling it twice is harmless.
  void close();

  /// The number of bytes appended so far.
  std::uint64_t size() const { return m_writtenBytes + m_buffer.size(); }
  /// The first failure as "FILE: reason"; empty when there was none.
  const std::string& error() const { return m_error; }

 private:
  /// Locks and empties a regular file; what is none has nothing to keep.
  void takeOver();
  void fail(int error);

  std::string m_path;
  std::string m_error;
  std::string m_buffer;
  std::uint64_t m_writtenBytes = 0;
  int m_descriptor = -1;
};

}  // namespace qumetra
