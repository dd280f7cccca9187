#include "writers/textwriter_plugin/spill_file.h"

#include <stdio.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

SpillFile::SpillFile() = default;
SpillFile::SpillFile(SpillFile&&) noexcept = default;

SpillFile& SpillFile::operator=(SpillFile&& other) noexcept {
  if (this != &other) {
    close();
    m_stream = std::move(other.m_stream);
    m_writing = std::move(other.m_writing);
    m_length = other.m_length;
    m_failed = other.m_failed;
  }
  return *this;
}

SpillFile::~SpillFile() { close(); }

bool SpillFile::openForWriting(const std::string& path, const SpillSystem& system) {
  std::FILE* stream = nullptr;
  if (!system.open(stream, path, "wb")) {
    return false;
  }
  m_stream.reset(stream);
  m_writing = std::make_unique<MappedAppendFile>(::fileno(stream), system);
  m_length = 0;
  m_failed = false;
  return true;
}

int SpillFile::append(std::string_view text) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    m_failed = true;
    return EFBIG;
  }
  const auto length = static_cast<std::int32_t>(text.size());
  char head[sizeof length];
  std::memcpy(head, &length, sizeof length);
  const int error = m_writing->append(std::string_view(head, sizeof head), text);
  m_failed = error != 0;
  return error;
}

bool SpillFile::reopenForReading(const std::string& path, const SpillSystem& system) {
  close();
  std::FILE* stream = nullptr;
  if (!system.open(stream, path, "rb")) {
    return false;
  }
  m_stream.reset(stream);
  return true;
}

void SpillFile::close() {
  if (m_writing != nullptr) {
    m_length = m_writing->length();
    // A file that cannot be cut is read to its known length all the same.
    m_writing->finish();
    m_writing.reset();
  }
  m_stream.reset();
}

std::uint64_t SpillFile::length() const {
  return m_writing != nullptr ? m_writing->length() : m_length;
}
