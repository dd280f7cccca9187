// A file as a stream of lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qumetra {

/// One line of a file. The text may be changed in place, its terminating zero byte included.
struct TextLine {
  /// `size` bytes without the line end and a carriage return before it, then a zero byte.
  char* text = nullptr;
  std::size_t size = 0;
  /// Counts from 1.
  std::uint64_t number = 0;
  /// False for a last line that just ends with the file.
  bool hasLineEnd = false;
};

/// Reads a file line by line through one buffer that grows with the longest line only. Not
/// synchronised.
class LineReader {
 public:
  /// Opens the file. Throws `RecordingError` ("FILE: reason") when that fails.
  explicit LineReader(std::string path);
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  ~LineReader();

  /// Sets `line` to the next line, which stays valid until the next call. Returns false at the end
  /// of the file. Throws `RecordingError` ("FILE: reason") when reading fails.
  bool next(TextLine& line);

  const std::string& path() const { return m_path; }
  /// The bytes of all lines so far, their ends included.
  std::uint64_t bytesRead() const { return m_bytesRead; }
  std::uint64_t lineCount() const { return m_lineCount; }
  /// The size of the file when it was opened; 0 for what has none.
  std::uint64_t sizeBytes() const { return m_sizeBytes; }

 private:
  bool fill();
  void makeRoom();
  [[noreturn]] void fail(int error) const;

  std::string m_path;
  int m_descriptor = -1;
  std::uint64_t m_sizeBytes = 0;
  std::uint64_t m_bytesRead = 0;
  std::uint64_t m_lineCount = 0;
  /// Bytes from `m_begin` to `m_end` are not yet given out.
  std::vector<char> m_buffer;
  std::size_t m_begin = 0;
  std::size_t m_end = 0;
};

}  // namespace qumetra
