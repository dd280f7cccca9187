#include "client/src/common/backing_store.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "client/src/common/error_text.h"
#include "client/src/common/owned.h"
#include "client/src/common/pw_files.h"
#include "client/src/common/pw_log.h"

namespace pwr {
namespace {

/// The doubled word is part of the text, by which users search their logs.
constexpr const char* kResetFailure = "WARNING: WARNING: couldn't reset buffer for reading!\n";

/// Null when there is no memory. Never null for want of bytes.
OwnedBytes allocateBlock(std::uint64_t size) {
  return OwnedBytes(static_cast<char*>(std::malloc(size == 0 ? 1 : size)));
}

/// False with the reason in `errno`.
bool readFully(int file, char* destination, std::uint64_t count) {
  while (count > 0) {
    const ssize_t got = ::read(file, destination, count);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got <= 0) {
      errno = got == 0 ? EIO : errno;  // The file is shorter than what was written to it.
      return false;
    }
    destination += got;
    count -= static_cast<std::uint64_t>(got);
  }
  return true;
}

bool writeFully(int file, const char* source, std::uint64_t count) {
  while (count > 0) {
    const ssize_t put = ::write(file, source, count);
    if (put < 0 && errno == EINTR) {
      continue;
    }
    if (put < 0) {
      return false;
    }
    source += put;
    count -= static_cast<std::uint64_t>(put);
  }
  return true;
}

bool seek(int file, std::uint64_t position) {
  if (::lseek(file, static_cast<off_t>(position), SEEK_SET) >= 0) {
    return true;
  }
  streamErrnoWarning("seekg error");
  return false;
}

}  // namespace

bool QMExtensibleBackingStore::s_wasWorkingDirCreated = false;

QMExtensibleBackingStore::QMExtensibleBackingStore(std::uint64_t maxBufferSize)
    : m_maxBufferSize(maxBufferSize) {
  if (!init_i()) {
    const int error = errno;
    logError("ERROR: Failed to initialize temporary file %s: errnum=%d: %s\n", m_path.c_str(),
             error, errorText(error).c_str());
    // Users of the store catch exactly this: a character pointer.
    throw "Couldn't initialize buffer\n";
  }
}

QMExtensibleBackingStore::~QMExtensibleBackingStore() { destroy_i(); }

std::string QMExtensibleBackingStore::getUniquePath() {
  return qm_temp_directory_path() + "_qmet" + "_" + std::to_string(::getpid()) + "_" +
         std::to_string(std::rand());
}

bool QMExtensibleBackingStore::prepareWorkingDirectory_i() {
  if (s_wasWorkingDirCreated) {
    return true;
  }
  if (qm_temp_directory_path().empty()) {
    logPlainWarning("WARNING: couldn't prepare working directory for QMExtensibleBackingStore!\n");
    return false;
  }
  s_wasWorkingDirCreated = true;
  return true;
}

bool QMExtensibleBackingStore::init_i() {
  if (!prepareWorkingDirectory_i()) {
    return false;
  }
  m_path = getUniquePath();
  m_file = ::open(m_path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (m_file < 0) {
    streamErrnoWarning("open error");
    return false;
  }
  m_buffer.resize(1);
  return true;
}

void QMExtensibleBackingStore::destroy_i() noexcept {
  if (m_file < 0) {
    return;
  }
  ::close(m_file);
  ::unlink(m_path.c_str());
  m_file = -1;
}

std::int64_t QMExtensibleBackingStore::read(void* destination, std::uint64_t count) {
  if (m_readHead > m_size) {
    return -1;
  }
  if (!isInside_i(m_readHead) && !rewind_i(m_readHead)) {
    return -1;
  }
  bool failed = false;
  const std::uint64_t copied = copyForward_i(static_cast<char*>(destination), count, failed);
  return failed ? -1 : static_cast<std::int64_t>(copied);
}

std::int64_t QMExtensibleBackingStore::peek(void* destination, std::uint64_t count) {
  const std::uint64_t oldHead = m_readHead;
  const std::uint64_t oldStart = m_bufferStart;
  if (!isInside_i(m_readHead) && !rewind_i(m_readHead)) {
    return -1;
  }
  bool failed = false;
  const std::uint64_t copied = copyForward_i(static_cast<char*>(destination), count, failed);
  m_readHead = oldHead;
  const bool moved = m_bufferStart != oldStart;
  if (moved && m_bufferStart != oldHead) {
    rewind_i(oldHead);  // A failure here is met again, and told, by whoever reads next.
  }
  return static_cast<std::int64_t>(copied);
}

std::uint64_t QMExtensibleBackingStore::copyForward_i(char* destination, std::uint64_t count,
                                                      bool& failed) {
  std::uint64_t copied = 0;
  while (copied < count && m_readHead < m_size) {
    if (m_readHead == bufferEnd_i() && !rewind_i(m_readHead)) {
      failed = true;
      break;
    }
    const std::uint64_t there = std::min(bufferEnd_i(), m_size) - m_readHead;
    const std::uint64_t part = std::min(count - copied, there);
    std::memcpy(destination + copied, m_buffer.data() + (m_readHead - m_bufferStart), part);
    m_readHead += part;
    copied += part;
  }
  return copied;
}

std::int64_t QMExtensibleBackingStore::readBack(void* destination, std::uint64_t count) {
  if (m_readHead > m_size) {
    return -1;
  }
  if (!isInside_i(m_readHead) && !rewind_i(startBeforeReadHead_i())) {
    return -1;
  }
  std::uint64_t left = count;
  while (left > 0 && m_readHead > 0) {
    if (m_readHead <= m_bufferStart && !rewind_i(startBeforeReadHead_i())) {
      return -1;
    }
    const std::uint64_t there = m_readHead - m_bufferStart;
    const std::uint64_t part = std::min(left, there);
    std::memcpy(static_cast<char*>(destination) + (left - part), m_buffer.data() + (there - part),
                part);
    m_readHead -= part;
    left -= part;
  }
  return static_cast<std::int64_t>(count - left);
}

std::int64_t QMExtensibleBackingStore::write(const void* source, std::uint64_t count) {
  const char* bytes = static_cast<const char*>(source);
  if (count > 0 && isInside_i(m_writeHead) && count <= bufferEnd_i() - m_writeHead) {
    store_i(bytes, count);
    return static_cast<std::int64_t>(count);
  }
  return writeAcrossWindows_i(bytes, count);
}

void QMExtensibleBackingStore::store_i(const char* source, std::uint64_t count) {
  std::memcpy(m_buffer.data() + (m_writeHead - m_bufferStart), source, count);
  m_writeHead += count;
  m_size = std::max(m_size, m_writeHead);
  m_dirty = true;
}

std::int64_t QMExtensibleBackingStore::writeAcrossWindows_i(const char* source,
                                                            std::uint64_t count) {
  m_writeHead = std::min(m_writeHead, m_size);
  if (!isInside_i(m_writeHead) && !rewind_i(m_writeHead)) {
    return -1;
  }
  std::uint64_t left = count;
  while (left > 0) {
    const std::uint64_t part = std::min(left, bufferEnd_i() - m_writeHead);
    if (part > 0) {
      store_i(source, part);
      source += part;
      left -= part;
      continue;
    }
    const bool hasRoom = m_writeHead == m_size ? makeRoomAtEnd_i() : rewind_i(m_writeHead);
    if (!hasRoom) {
      return -1;
    }
  }
  return static_cast<std::int64_t>(count);
}

bool QMExtensibleBackingStore::makeRoomAtEnd_i() {
  if (m_buffer.size() < m_maxBufferSize) {
    m_buffer.resize(std::min<std::uint64_t>(m_buffer.size() * 2, m_maxBufferSize));
    return true;
  }
  if (m_dirty) {
    return flush_i();
  }
  // A full window that the file holds already, as after `resetForReadBack`, has only to move on.
  m_bufferStart = m_writeHead;
  return true;
}

std::uint64_t QMExtensibleBackingStore::size() const { return m_size; }

void QMExtensibleBackingStore::resetForRead() {
  m_readHead = 0;
  if (!rewind_i(m_readHead)) {
    logPlainWarning(kResetFailure);
  }
}

void QMExtensibleBackingStore::resetForReadBack() {
  m_readHead = m_size;
  if (!rewind_i(startBeforeReadHead_i())) {
    logPlainWarning(kResetFailure);
  }
}

void QMExtensibleBackingStore::writeToReadHead() { m_writeHead = m_readHead; }

QMBufferProvider* QMExtensibleBackingStore::clone(std::uint64_t /*size*/) const {
  return std::make_unique<QMExtensibleBackingStore>(kDefaultMaxBufferSize).release();
}

std::int32_t QMExtensibleBackingStore::insert(std::uint64_t position, const void* source,
                                              std::uint64_t count) {
  if (position > size()) {
    return -1;
  }
  const OwnedBytes first = allocateBlock(count);
  const OwnedBytes second = allocateBlock(count);
  if (!first || !second) {
    return -1;
  }
  const std::uint64_t oldReadHead = m_readHead;
  m_readHead = position;
  m_writeHead = position;
  char* scratch[] = {first.get(), second.get()};
  const bool done =
      source == nullptr || shiftTail_i(static_cast<const char*>(source), count, scratch);
  m_readHead = oldReadHead;
  return done ? 0 : -1;
}

bool QMExtensibleBackingStore::shiftTail_i(const char* source, std::uint64_t count,
                                           char* scratch[2]) {
  const char* block = source;
  auto length = static_cast<std::int64_t>(count);
  int spare = 0;
  while (length > 0) {
    // A full block lands on bytes that are still wanted: they are saved first.
    const std::int64_t saved =
        static_cast<std::uint64_t>(length) == count ? read(scratch[spare], count) : 0;
    if (saved < 0 || write(block, static_cast<std::uint64_t>(length)) < 0) {
      return false;
    }
    block = scratch[spare];
    length = saved;
    spare = 1 - spare;
  }
  return true;
}

bool QMExtensibleBackingStore::rewind_i(std::uint64_t position) {
  if (position > m_size) {
    std::fprintf(stderr, "ERROR rewinding to index larger than available!\n");
    return false;
  }
  if (!flush_i()) {
    std::fprintf(stderr, "ERROR flushing dirty buffer while rewinding!\n");
    return false;
  }
  m_loaded = false;
  if (!seek(m_file, position)) {
    return false;
  }
  m_bufferStart = position;
  const std::uint64_t count = std::min<std::uint64_t>(m_buffer.size(), m_size - position);
  if (!readFully(m_file, m_buffer.data(), count)) {
    streamErrnoWarning("read error");
    return false;
  }
  m_loaded = true;
  return true;
}

bool QMExtensibleBackingStore::flush_i() {
  if (!m_dirty) {
    return true;
  }
  const std::uint64_t count = std::min<std::uint64_t>(m_buffer.size(), m_size - m_bufferStart);
  if (!seek(m_file, m_bufferStart)) {
    return false;
  }
  if (!writeFully(m_file, m_buffer.data(), count)) {
    streamErrnoWarning("write error while flushing to disk!\n");
    return false;
  }
  m_bufferStart += count;
  m_dirty = false;
  return true;
}

}  // namespace pwr
