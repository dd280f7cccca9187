#include "qumetra/recording/line_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "qumetra/recording/recording_reader.h"

namespace qumetra {
namespace {

constexpr std::size_t kFirstBufferSize = std::size_t{256} << 10;

}  // namespace

LineReader::LineReader(std::string path) : m_path(std::move(path)), m_buffer(kFirstBufferSize) {
  m_descriptor = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status = {};
  if (m_descriptor < 0) {
    fail(errno);
  }
  const int error = ::fstat(m_descriptor, &status) != 0 ? errno
                    : S_ISDIR(status.st_mode)           ? EISDIR
                                                        : 0;
  if (error != 0) {
    ::close(m_descriptor);
    fail(error);
  }
  m_sizeBytes = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
}

LineReader::~LineReader() { ::close(m_descriptor); }

bool LineReader::next(TextLine& line) {
  std::size_t searched = 0;
  char* lineEnd = nullptr;
  while (lineEnd == nullptr) {
    char* from = m_buffer.data() + m_begin + searched;
    searched = m_end - m_begin;
    lineEnd = static_cast<char*>(
        std::memchr(from, '\n', static_cast<std::size_t>(m_buffer.data() + m_end - from)));
    if (lineEnd == nullptr && !fill()) {
      break;
    }
  }
  if (lineEnd == nullptr && m_begin == m_end) {
    return false;
  }
  line.text = m_buffer.data() + m_begin;
  line.hasLineEnd = lineEnd != nullptr;
  const std::size_t length =
      line.hasLineEnd ? static_cast<std::size_t>(lineEnd - line.text) : m_end - m_begin;
  const bool hasReturn = line.hasLineEnd && length > 0 && line.text[length - 1] == '\r';
  line.size = hasReturn ? length - 1 : length;
  line.text[line.size] = '\0';
  line.number = ++m_lineCount;
  m_begin += line.hasLineEnd ? length + 1 : length;
  m_bytesRead += line.hasLineEnd ? length + 1 : length;
  return true;
}

/// Reads what there is, behind the bytes that are left. Returns false at the end of the file.
bool LineReader::fill() {
  makeRoom();
  // One byte stays free: a last line without an end gets its zero byte there.
  const std::size_t room = m_buffer.size() - m_end - 1;
  ssize_t got = 0;
  do {
    got = ::read(m_descriptor, m_buffer.data() + m_end, room);
  } while (got < 0 && errno == EINTR);
  if (got < 0) {
    fail(errno);
  }
  m_end += static_cast<std::size_t>(got);
  return got > 0;
}

void LineReader::makeRoom() {
  if (m_begin > 0) {
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_end -= m_begin;
    m_begin = 0;
  }
  if (m_end > m_buffer.size() / 2) {
    m_buffer.resize(m_buffer.size() * 2);
  }
}

void LineReader::fail(int error) const {
  throw RecordingError(m_path + ": " + std::generic_category().message(error));
}

}  // namespace qumetra
