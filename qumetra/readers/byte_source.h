// Where readers get bytes from.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace qumetra {

/// A file that cannot be opened or read. `what()` is one line: the path and the reason.
class ReadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A run of bytes, read from front to end. Not synchronised.
class ByteSource {
 public:
  virtual ~ByteSource();

  /// Reads up to `size` bytes to `out` and returns how many; fewer than `size` only at the end.
  virtual std::size_t read(char* out, std::size_t size) = 0;
};

/// The bytes of a file, through the buffer of a stream. Throws `ReadError`.
class FileSource : public ByteSource {
 public:
  explicit FileSource(const std::string& path);
  ~FileSource() override;

  std::size_t read(char* out, std::size_t size) override;

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::string m_path;
  std::unique_ptr<std::FILE, Closer> m_file;
};

}  // namespace qumetra
