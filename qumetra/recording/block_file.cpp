#include "qumetra/recording/block_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "qumetra/model/parent_directory.h"

namespace qumetra {
namespace {

constexpr std::size_t kBlockSize = std::size_t{1} << 20;
constexpr mode_t kMode = 0666;

/// Calls `write` with the bytes that are left and the number of those done until all are written.
/// Returns 0 or the error number.
template <typename Write>
int writeAll(std::string_view bytes, Write write) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = write(bytes.substr(done), done);
    if (count == 0) {
      return EIO;
    }
    if (count < 0 && errno != EINTR) {
      return errno;
    }
    done += count < 0 ? 0 : static_cast<std::size_t>(count);
  }
  return 0;
}

bool isRegular(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// False when somebody else has the file locked. A file system without locks refuses nobody.
bool lock(int descriptor, int kind) {
  return ::flock(descriptor, kind | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

}  // namespace

bool isBeingWritten(const std::string& path) {
  // Without waiting for the other end of a pipe.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) {
    return false;
  }
  const bool isTaken = isRegular(descriptor) && !lock(descriptor, LOCK_SH);
  ::close(descriptor);
  return isTaken;
}

BlockFile::BlockFile(std::string path) : m_path(std::move(path)) {
  makeParentDirectory(m_path);
  // Not truncated before it is locked.
  m_descriptor = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kMode);
  if (m_descriptor < 0) {
    fail(errno);
    return;
  }
  takeOver();
}

BlockFile::~BlockFile() { close(); }

void BlockFile::append(std::string_view bytes) {
  if (!m_error.empty()) {
    return;
  }
  m_buffer += bytes;
  if (m_buffer.size() >= kBlockSize) {
    sync();
  }
}

void BlockFile::sync() {
  if (!m_error.empty()) {
    return;
  }
  const int error = writeAll(m_buffer, [this](std::string_view bytes, std::size_t /*at*/) {
    return ::write(m_descriptor, bytes.data(), bytes.size());
  });
  if (error != 0) {
    fail(error);
    return;
  }
  m_writtenBytes += m_buffer.size();
  m_buffer.clear();
}

void BlockFile::overwrite(std::uint64_t at, std::string_view bytes) {
  sync();
  if (!m_error.empty()) {
    return;
  }
  const int error = writeAll(bytes, [this, at](std::string_view left, std::size_t done) {
    return ::pwrite(m_descriptor, left.data(), left.size(), static_cast<off_t>(at + done));
  });
  if (error != 0) {
    fail(error);
  }
}

void BlockFile::close() {
  sync();
  if (m_descriptor >= 0 && ::close(m_descriptor) != 0 && m_error.empty()) {
    fail(errno);
  }
  m_descriptor = -1;
}

void BlockFile::takeOver() {
  if (!isRegular(m_descriptor)) {
    return;
  }
  if (!lock(m_descriptor, LOCK_EX)) {
    m_error = m_path + ": is being written by another process";
  } else if (::ftruncate(m_descriptor, 0) != 0) {
    fail(errno);
  }
}

void BlockFile::fail(int error) {
  m_error = m_path + ": " + std::generic_category().message(error);
  m_buffer.clear();
}

}  // namespace qumetra
