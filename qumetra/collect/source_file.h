// Files of procfs and sysfs: small, made anew by the kernel at every read.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qumetra {

/// A file that is opened once and read many times, always from its beginning. Movable.
class SourceFile {
 public:
  SourceFile() = default;
  /// Opens the file; `isOpen` tells whether that worked, and `errno` why not.
  explicit SourceFile(const std::string& path);
  SourceFile(SourceFile&& other) noexcept;
  SourceFile& operator=(SourceFile&& other) noexcept;
  ~SourceFile();

  bool isOpen() const { return m_descriptor >= 0; }
  void close();

  /// Reads the whole file into `buffer` and returns the text in it, valid until the buffer changes.
  /// The buffer grows as needed and is worth keeping. Nothing when a read fails.
  std::optional<std::string_view> readAll(std::string& buffer) const;
  /// Reads a file that holds one unsigned number. Nothing when it does not, or when the read fails.
  std::optional<std::uint64_t> readNumber() const;

 private:
  int m_descriptor = -1;
};

/// The content of a small text file without blanks and line ends around it; nothing when it cannot
/// be read.
std::optional<std::string> readText(const std::string& path);
/// The unsigned number that is the whole of a small text file; nothing when it is none.
std::optional<std::uint64_t> readNumber(const std::string& path);

}  // namespace qumetra
