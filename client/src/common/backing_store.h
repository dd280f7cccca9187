// A byte sequence of unbounded length with a small footprint in memory.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "client/src/common/buffer_provider.h"

namespace pwr {

/// Keeps a window of the sequence in memory and all else in a temp file of its own, which lives as
/// long as the object. The window grows 1, 2, 4 … bytes up to the limit while bytes are appended,
/// so that many small sequences stay small; only from then on does appending touch the disk.
///
///     pwr::QMExtensibleBackingStore store(0x100000);
///     store.write(record, recordSize);
///     store.resetForRead();
///     while (store.read(record, recordSize) > 0) { ... }
///
/// Failures of the disk are told in the log as they happen and show as results of -1. Bytes already
/// stored stay where they are, and an operation may be tried again.
class QMExtensibleBackingStore : public QMBufferProvider {
 public:
  /// The limit that every user of large sequences takes, in bytes.
  static constexpr std::uint64_t kDefaultMaxBufferSize = 0x100000;

  /// Makes the temp file in `pwr::qm_temp_directory_path()`. `maxBufferSize` is in bytes; a limit
  /// of 0 works like 1. When the file cannot be made, logs an error and throws a `const char*`.
  explicit QMExtensibleBackingStore(std::uint64_t maxBufferSize);
  QMExtensibleBackingStore(const QMExtensibleBackingStore&) = delete;
  QMExtensibleBackingStore& operator=(const QMExtensibleBackingStore&) = delete;
  /// Removes the temp file.
  ~QMExtensibleBackingStore() override;

  std::int64_t read(void* destination, std::uint64_t count) override;
  std::int64_t write(const void* source, std::uint64_t count) override;
  std::int64_t peek(void* destination, std::uint64_t count) override;
  std::uint64_t size() const override;
  void resetForRead() override;
  void resetForReadBack() override;
  void writeToReadHead() override;
  /// The clone's limit is `kDefaultMaxBufferSize`, whatever `size` says, and no bytes are copied.
  QMBufferProvider* clone(std::uint64_t size) const override;
  std::int32_t insert(std::uint64_t position, const void* source, std::uint64_t count) override;
  std::int64_t readBack(void* destination, std::uint64_t count) override;

  /// The path of the temp file, for messages.
  const std::string& path() const { return m_path; }

 private:
  static std::string getUniquePath();
  static bool prepareWorkingDirectory_i();
  bool init_i();
  void destroy_i() noexcept;

  /// Moves the window so that it starts at `position`, and loads it.
  bool rewind_i(std::uint64_t position);
  /// Brings the window to the file, if the file lacks it, and moves the window behind what it held.
  bool flush_i();

  /// Copies from the read head on, as far as bytes and the disk allow.
  std::uint64_t copyForward_i(char* destination, std::uint64_t count, bool& failed);
  /// Writes what may not fit into the window.
  std::int64_t writeAcrossWindows_i(const char* source, std::uint64_t count);
  /// Stores bytes at the write head. REQUIRES: they fit into the window there.
  void store_i(const char* source, std::uint64_t count);
  /// Gives the write head room. REQUIRES: it stands at the window's end and at the sequence's.
  bool makeRoomAtEnd_i();
  /// Stores `source` at the heads, which stand at one place, and all that follows behind it.
  /// `scratch` are two blocks of `count` bytes.
  bool shiftTail_i(const char* source, std::uint64_t count, char* scratch[2]);

  std::uint64_t bufferEnd_i() const { return m_bufferStart + m_buffer.size(); }
  /// A head at the window's end counts as inside, though nothing can be read or written there
  /// before the window has moved.
  bool isInside_i(std::uint64_t head) const {
    return m_loaded && head >= m_bufferStart && head <= bufferEnd_i();
  }
  /// Where the window would start if it ended at the read head.
  std::uint64_t startBeforeReadHead_i() const {
    return m_readHead - std::min<std::uint64_t>(m_readHead, m_buffer.size());
  }

  /// Whether this process has prepared the directory of the temp files.
  static bool s_wasWorkingDirCreated;

  /// The temp file's descriptor, -1 when there is none.
  int m_file = -1;
  /// The window holds bytes that the file lacks.
  bool m_dirty = false;
  /// False after a failed move: what the window holds is not what it stands for.
  bool m_loaded = true;
  std::uint64_t m_readHead = 0;
  std::uint64_t m_writeHead = 0;
  std::uint64_t m_size = 0;
  /// Position of the window's first byte, in the sequence and in the file.
  std::uint64_t m_bufferStart = 0;
  std::uint64_t m_maxBufferSize;
  std::vector<char> m_buffer = std::vector<char>(1);
  std::string m_path;
};

}  // namespace pwr
