// Blocks of bytes that wait in a temp file.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace pwr::bin {

/// Blocks of one size, in a temp file that is made for the first of them and removed at the end.
/// Not synchronised.
class SpilledBlocks {
 public:
  explicit SpilledBlocks(std::size_t blockSize);
  SpilledBlocks(const SpilledBlocks&) = delete;
  SpilledBlocks& operator=(const SpilledBlocks&) = delete;
  ~SpilledBlocks();

  /// Takes one block more. False when the file cannot be made or has no room; the blocks before it
  /// are unharmed then.
  bool append(const char* block);
  /// Moves a block to `out`, which has room for it, and gives its room on the disk back. False when
  /// the disk fails. REQUIRES: `number` is below `count()`, and was not taken before.
  bool take(std::size_t number, char* out);
  std::size_t count() const { return m_count; }
  /// Forgets all blocks and removes the file.
  void clear();

  /// The path of the temp file, for messages. Empty when there is none.
  const std::string& path() const { return m_path; }

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  bool open();
  off_t placeOf(std::size_t number) const { return static_cast<off_t>(number * m_blockSize); }

  std::size_t m_blockSize;
  std::size_t m_count = 0;
  std::string m_path;
  std::unique_ptr<std::FILE, Closer> m_file;
};

}  // namespace pwr::bin
