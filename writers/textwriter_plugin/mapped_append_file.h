// A file that grows by small pieces which outlive the process at once, without a system call each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "writers/textwriter_plugin/spill_system.h"

/// Appends to a file through a shared mapping of its end. What `append` has taken stands in the
/// file's pages when it returns, so it survives the end of the process by any signal (not of the
/// machine: nothing is synchronised to the disk).
///
/// The mapping is a window that moves along the file and doubles from `kFirstWindow` to
/// `kLargestWindow`. Its space is reserved before it is mapped: a full disk is then an error here,
/// not a signal at some later store. Where the file cannot be reserved or mapped, every piece is
/// written by a call of its own instead, so that what still fits is still taken.
///
/// While a window is mapped, the file is longer than what was appended, filled up with zero bytes;
/// `finish` cuts it. A process that ends without `finish` leaves the zero bytes behind.
///
/// Borrows the descriptor, which must be open for reading and writing, refer to an empty file and
/// stay open until `finish` or the end of this object. Not synchronised.
class MappedAppendFile {
 public:
  static constexpr std::size_t kFirstWindow = std::size_t{64} * 1024;
  static constexpr std::size_t kLargestWindow = std::size_t{1024} * 1024;

  MappedAppendFile(int descriptor, const SpillSystem& system);
  MappedAppendFile(const MappedAppendFile&) = delete;
  MappedAppendFile& operator=(const MappedAppendFile&) = delete;
  /// Finishes.
  ~MappedAppendFile();

  /// Appends `head` and, behind it, `body`: both or nothing. Returns 0, or the error number. The
  /// first error stays: later calls append nothing and return it, so that what the file holds has
  /// no gap. REQUIRES: `finish` has not been called.
  int append(std::string_view head, std::string_view body);

  /// Releases the window and cuts the file to `length()`. Calling it again does nothing. Returns 0,
  /// or the error number; the file may then still be longer.
  int finish();

  /// The number of bytes appended.
  std::uint64_t length() const {
    return m_windowStart + static_cast<std::uint64_t>(m_cursor - m_window);
  }

 private:
  int appendDirectly(std::string_view head, std::string_view body);
  bool moveWindow(std::size_t size);
  bool mapWindow(std::uint64_t start, std::size_t size);
  void releaseWindow();

  const SpillSystem& m_system;
  int m_descriptor;
  int m_error = 0;
  bool m_finished = false;
  /// No further window is tried.
  bool m_direct = false;
  std::size_t m_nextWindowSize = kFirstWindow;
  /// Where the window begins in the file; without a window, the length.
  std::uint64_t m_windowStart = 0;
  /// The window and the places of the next byte and of its end; all null without a window.
  char* m_window = nullptr;
  char* m_cursor = nullptr;
  char* m_windowEnd = nullptr;
};
