#include "qumetra/readers/byte_source.h"

#include <cerrno>
#include <system_error>

namespace qumetra {
namespace {

ReadError errorOf(const std::string& path) {
  return ReadError(path + ": " + std::generic_category().message(errno));
}

}  // namespace

ByteSource::~ByteSource() = default;

FileSource::FileSource(const std::string& path)
    : m_path(path), m_file(std::fopen(path.c_str(), "rb")) {
  if (m_file == nullptr) {
    throw errorOf(path);
  }
}

FileSource::~FileSource() = default;

std::size_t FileSource::read(char* out, std::size_t size) {
  const std::size_t got = std::fread(out, 1, size, m_file.get());
  if (got < size && std::ferror(m_file.get()) != 0) {
    throw errorOf(m_path);
  }
  return got;
}

}  // namespace qumetra
