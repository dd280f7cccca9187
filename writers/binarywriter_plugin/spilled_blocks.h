// Blocks of bytes that wait on the disk, or where it does not take them, in memory.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "client/src/common/owned.h"

namespace pwr::bin {

/// Blocks of one size, first in, first out. They stand in a temp file that is made for the first of
/// them and removed at the end. Once the file cannot be made or has no room, memory holds the
/// blocks that follow. Not synchronised.
class SpilledBlocks {
 public:
  explicit SpilledBlocks(std::size_t blockSize);
  SpilledBlocks(const SpilledBlocks&) = delete;
  SpilledBlocks& operator=(const SpilledBlocks&) = delete;
  ~SpilledBlocks();

  /// Takes one block more. Throws `std::bad_alloc` when neither disk nor memory has room; the
  /// blocks before it are unharmed then.
  void append(const char* block);
  /// Moves the first block to `out`, which has room for it, and gives its room back. When the disk
  /// fails the block is gone, and the result false. REQUIRES: `count()` is not 0.
  bool takeFirst(char* out);
  /// How many there are.
  std::size_t count() const { return m_endOnDisk - m_firstOnDisk + m_inMemory.size(); }
  /// Forgets all blocks and removes the file.
  void clear();

  /// The path of the temp file, for messages. Empty when there is none.
  const std::string& path() const { return m_path; }

 private:
  bool open();
  bool appendToFile(const char* block);
  bool takeFromFile(std::size_t number, char* out);
  off_t placeOf(std::size_t number) const { return static_cast<off_t>(number * m_blockSize); }

  std::size_t m_blockSize;
  std::string m_path;
  OwnedFile m_file;
  /// Numbers of blocks in the file.
  std::size_t m_firstOnDisk = 0;
  std::size_t m_endOnDisk = 0;
  /// Those that came after the disk's. As long as there are none, the disk is tried.
  std::deque<std::vector<char>> m_inMemory;
};

}  // namespace pwr::bin
