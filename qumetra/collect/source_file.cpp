#include "qumetra/collect/source_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <utility>

#include "qumetra/collect/kernel_text.h"

namespace qumetra {
namespace {

constexpr std::size_t kFirstBufferSize = 4096;
/// Far above any file of procfs or sysfs that is read here; a root of the user's may hold anything.
constexpr std::size_t kLargestFile = std::size_t{64} << 20;

ssize_t readAt(int descriptor, char* to, std::size_t size, std::size_t offset) {
  ssize_t count = 0;
  do {
    count = ::pread(descriptor, to, size, static_cast<off_t>(offset));
  } while (count < 0 && errno == EINTR);
  return count;
}

}  // namespace

SourceFile::SourceFile(const std::string& path)
    // A pipe in the place of a file must not stop a collection for ever.
    : m_descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}

SourceFile::SourceFile(SourceFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

SourceFile& SourceFile::operator=(SourceFile&& other) noexcept {
  std::swap(m_descriptor, other.m_descriptor);
  return *this;
}

SourceFile::~SourceFile() { close(); }

void SourceFile::close() {
  if (isOpen()) {
    ::close(std::exchange(m_descriptor, -1));
  }
}

std::optional<std::string_view> SourceFile::readAll(std::string& buffer) const {
  if (buffer.size() < kFirstBufferSize) {
    buffer.resize(kFirstBufferSize);
  }
  std::size_t length = 0;
  // A short read is not the end: the kernel may hand such files out in pieces.
  while (true) {
    if (length == buffer.size()) {
      buffer.resize(buffer.size() * 2);
    }
    const ssize_t count =
        readAt(m_descriptor, buffer.data() + length, buffer.size() - length, length);
    if (count < 0) {
      return std::nullopt;
    }
    length += static_cast<std::size_t>(count);
    if (count == 0 || length > kLargestFile) {
      return std::string_view(buffer).substr(0, length);
    }
  }
}

std::optional<std::uint64_t> SourceFile::readNumber() const {
  std::array<char, 32> text{};
  const ssize_t count = readAt(m_descriptor, text.data(), text.size(), 0);
  if (count <= 0) {
    return std::nullopt;
  }
  return parseNumber(trimmed({text.data(), static_cast<std::size_t>(count)}));
}

std::optional<std::string> readText(const std::string& path) {
  const SourceFile file(path);
  std::string buffer;
  if (!file.isOpen()) {
    return std::nullopt;
  }
  const std::optional<std::string_view> text = file.readAll(buffer);
  if (!text) {
    return std::nullopt;
  }
  return std::string(trimmed(*text));
}

std::optional<std::uint64_t> readNumber(const std::string& path) {
  const SourceFile file(path);
  return file.isOpen() ? file.readNumber() : std::nullopt;
}

}  // namespace qumetra
