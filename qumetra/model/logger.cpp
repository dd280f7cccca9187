#include "host/logger.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

#include "client/src/common/error_text.h"
#include "client/src/common/pw_log.h"
#include "qumetra/model/parent_directory.h"

namespace pwr {
namespace {

constexpr mode_t kFileMode = 0666;

/// A descriptor, or -1 with `errno` set.
int openUninterrupted(const char* fileName, int flags) {
  int descriptor = -1;
  do {
    descriptor = ::open(fileName, flags, kFileMode);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

/// Writes all bytes. Returns 0, or the number of the error that ended it.
int writeAll(int descriptor, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = ::write(descriptor, bytes, count);
    if (written == 0) {
      return EIO;
    }
    if (written < 0 && errno != EINTR) {
      return errno;
    }
    if (written > 0) {
      bytes += written;
      count -= static_cast<std::size_t>(written);
    }
  }
  return 0;
}

}  // namespace

Logger::Logger(std::string fileName) : m_fileName(std::move(fileName)) {}

Logger::~Logger() {
  if (m_descriptor >= 0) {
    ::close(m_descriptor);
  }
}

int Logger::finish() { return 0; }

void Logger::flush() {
  if (m_fileName.empty() || !open()) {
    return;
  }
  const int error = writeAll(m_descriptor, m_buffer.data(), m_buffer.size());
  if (error != 0) {
    reportFailure("write", error);
  }
}

void Logger::close() {
  if (m_descriptor < 0) {
    return;
  }
  const int descriptor = std::exchange(m_descriptor, -1);
  // An interrupted close has released the descriptor all the same.
  if (::close(descriptor) != 0 && errno != EINTR) {
    reportFailure("write", errno);
  }
}

bool Logger::open() {
  if (m_descriptor >= 0) {
    return true;
  }
  if (!m_started) {
    qumetra::makeParentDirectory(m_fileName);
  }
  const int placement = m_started ? O_APPEND : O_TRUNC;
  m_descriptor = openUninterrupted(m_fileName.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | placement);
  if (m_descriptor < 0) {
    reportFailure("create", errno);
    return false;
  }
  m_started = true;
  return true;
}

void Logger::reportFailure(const char* action, int error) {
  if (std::exchange(m_failureReported, true)) {
    return;
  }
  logError("ERROR: Cannot %s %s: %s\n", action, m_fileName.c_str(), errorText(error).c_str());
}

}  // namespace pwr
