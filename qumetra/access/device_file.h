// A file of the kernel's that is read and written at given places.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qumetra {

/// An open file, closed at the end. What is short counts as failed.
class DeviceFile {
 public:
  /// `flags` are open's. Use by `isOpen`.
  DeviceFile(const std::string& path, int flags)
      : m_descriptor(::open(path.c_str(), flags | O_CLOEXEC)) {}
  DeviceFile(const DeviceFile&) = delete;
  DeviceFile& operator=(const DeviceFile&) = delete;
  ~DeviceFile() {
    if (isOpen()) {
      ::close(m_descriptor);
    }
  }

  bool isOpen() const { return m_descriptor >= 0; }

  std::optional<std::vector<std::uint8_t>> readAt(std::uint64_t offset, std::size_t count) const {
    std::vector<std::uint8_t> bytes(count);
    const ssize_t got = ::pread(m_descriptor, bytes.data(), count, static_cast<off_t>(offset));
    return got == static_cast<ssize_t>(count) ? std::optional(std::move(bytes)) : std::nullopt;
  }

  bool writeAt(std::uint64_t offset, const void* bytes, std::size_t count) const {
    const ssize_t put = ::pwrite(m_descriptor, bytes, count, static_cast<off_t>(offset));
    return put == static_cast<ssize_t>(count);
  }

 private:
  int m_descriptor;
};

}  // namespace qumetra
