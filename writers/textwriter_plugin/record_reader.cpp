#include "writers/textwriter_plugin/record_reader.h"

#include <algorithm>
#include <cstdlib>

#include "client/src/common/pw_log.h"

bool RecordBuffer::allocate() {
  m_data = static_cast<char*>(m_system.reallocate(nullptr, kFirstSize));
  m_size = m_data != nullptr ? kFirstSize : 0;
  if (m_data == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Failed to allocate buffer of size %zu\n", kFirstSize);
  }
  return m_data != nullptr;
}

bool RecordBuffer::growTo(std::size_t size) {
  while (m_size < size) {
    void* grown = m_system.reallocate(m_data, m_size * 2);
    if (grown == nullptr) {
      pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                            "WARNING: Failed to re-allocate buffer of size %zu\n", m_size * 2);
      release();
      return false;
    }
    m_data = static_cast<char*>(grown);
    m_size *= 2;
  }
  return true;
}

void RecordBuffer::release() {
  std::free(m_data);
  m_data = nullptr;
  m_size = 0;
}

RecordReader::RecordReader(std::FILE* stream, const std::string& path, std::uint64_t length,
                           RecordBuffer& buffer)
    : m_stream(stream), m_path(path), m_unread(length), m_buffer(buffer) {}

bool RecordReader::refill() {
  const std::size_t left = m_end - m_position;
  if (left == 0 && m_unread == 0) {
    return false;
  }
  const std::size_t wanted = left < sizeof(Length) ? sizeof(Length) : recordSize();
  // A record cut off at the end: nothing new is going to come.
  if (m_buffer.data() == nullptr || wanted > left + m_unread) {
    return stop();
  }
  return makeRoom(wanted) && read();
}

bool RecordReader::makeRoom(std::size_t wanted) {
  const std::size_t left = m_end - m_position;
  if (wanted <= m_buffer.size()) {
    std::memmove(m_buffer.data(), m_buffer.data() + m_position, left);
    m_position = 0;
    m_end = left;
    return true;
  }
  // A record that outgrows the buffer is read again from its start.
  if (std::fseek(m_stream, -static_cast<long>(left), SEEK_CUR) != 0) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag, "WARNING: fseek failed\n");
    return stop();
  }
  m_unread += left;
  m_position = m_end = 0;
  return m_buffer.growTo(wanted) || stop();
}

bool RecordReader::read() {
  const auto size =
      static_cast<std::size_t>(std::min<std::uint64_t>(m_buffer.size() - m_end, m_unread));
  const std::size_t got = std::fread(m_buffer.data() + m_end, 1, size, m_stream);
  if (got < size && std::ferror(m_stream) != 0) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Error reading file %s: %d\n", m_path.c_str(),
                          std::ferror(m_stream));
    return stop();
  }
  m_end += got;
  m_unread -= got;
  // A file that is shorter than it was.
  return got > 0 || stop();
}

bool RecordReader::stop() {
  m_failed = true;
  m_position = m_end = 0;
  m_unread = 0;
  return false;
}
