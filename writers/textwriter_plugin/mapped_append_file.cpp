#include "writers/textwriter_plugin/mapped_append_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

namespace {

std::size_t pageSize() {
  static const auto s_size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  return s_size;
}

std::size_t roundUpToPage(std::size_t size) {
  return (size + pageSize() - 1) / pageSize() * pageSize();
}

char* copyTo(char* place, std::string_view bytes) {
  if (!bytes.empty()) {
    std::memcpy(place, bytes.data(), bytes.size());
  }
  return place + bytes.size();
}

}  // namespace

MappedAppendFile::MappedAppendFile(int descriptor, const SpillSystem& system)
    : m_system(system), m_descriptor(descriptor) {}

MappedAppendFile::~MappedAppendFile() { finish(); }

int MappedAppendFile::append(std::string_view head, std::string_view body) {
  const std::size_t size = head.size() + body.size();
  if (size > static_cast<std::size_t>(m_windowEnd - m_cursor) && !moveWindow(size)) {
    return appendDirectly(head, body);
  }
  m_cursor = copyTo(copyTo(m_cursor, head), body);
  return 0;
}

int MappedAppendFile::appendDirectly(std::string_view head, std::string_view body) {
  std::string piece;
  piece.reserve(head.size() + body.size());
  piece.append(head).append(body);
  std::size_t done = 0;
  while (m_error == 0 && done < piece.size()) {
    const ssize_t written = m_system.write(m_descriptor, piece.data() + done, piece.size() - done,
                                           static_cast<off_t>(m_windowStart + done));
    if (written > 0) {
      done += static_cast<std::size_t>(written);
    } else if (written == 0 || errno != EINTR) {
      m_error = written == 0 ? EIO : errno;
    }
  }
  if (m_error == 0) {
    m_windowStart += piece.size();
  }
  return m_error;
}

bool MappedAppendFile::moveWindow(std::size_t size) {
  if (m_direct) {
    return false;
  }
  releaseWindow();
  const std::uint64_t length = m_windowStart;
  const std::uint64_t start = length / pageSize() * pageSize();
  const auto used = static_cast<std::size_t>(length - start);
  const std::size_t windowSize = std::max(roundUpToPage(used + size), m_nextWindowSize);
  if (!mapWindow(start, windowSize)) {
    m_direct = true;
    return false;
  }
  m_cursor = m_window + used;
  m_nextWindowSize = std::min(m_nextWindowSize * 2, kLargestWindow);
  return true;
}

bool MappedAppendFile::mapWindow(std::uint64_t start, std::size_t size) {
  int error = EINTR;
  while (error == EINTR) {
    error = m_system.reserve(m_descriptor, static_cast<off_t>(start), static_cast<off_t>(size));
  }
  if (error != 0) {
    return false;
  }
  void* window = m_system.map(m_descriptor, static_cast<off_t>(start), size);
  if (window == nullptr) {
    return false;
  }
  m_windowStart = start;
  m_window = static_cast<char*>(window);
  m_windowEnd = m_window + size;
  return true;
}

void MappedAppendFile::releaseWindow() {
  if (m_window == nullptr) {
    return;
  }
  m_windowStart = length();
  ::munmap(m_window, static_cast<std::size_t>(m_windowEnd - m_window));
  m_window = m_cursor = m_windowEnd = nullptr;
}

int MappedAppendFile::finish() {
  if (m_finished) {
    return 0;
  }
  m_finished = true;
  releaseWindow();
  return ::ftruncate(m_descriptor, static_cast<off_t>(m_windowStart)) == 0 ? 0 : errno;
}
