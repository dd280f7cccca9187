#include "client/src/common/serializer.h"

#include <algorithm>
#include <cstring>

#include "client/src/common/pw_log.h"

namespace pwr {
namespace {

constexpr std::size_t kFirstRoomBytes = 128;

}  // namespace

Serializer::Serializer(std::size_t size) : m_buffer(size, 0) {}

Serializer::Serializer(const std::vector<std::uint8_t>& bytes)
    : m_buffer(bytes), m_givenBytes(bytes.size()) {}

int Serializer::write_to(const void* source, std::size_t count) {
  if (count == 0 || source == nullptr) {
    return source == nullptr ? 1 : 0;
  }
  if (!grow(count)) {
    return 1;
  }
  std::memcpy(m_buffer.data() + m_writeOffset, source, count);
  m_writeOffset += count;
  return 0;
}

int Serializer::write_to(const std::string& text) {
  const auto length = static_cast<std::uint16_t>(text.size());
  const int status = write_to(&length, sizeof length);
  return status != 0 ? status : write_to(text.data(), text.size());
}

std::size_t Serializer::read_from(void* destination, std::size_t count) {
  if (destination == nullptr || count == 0 || count > bytesLeft()) {
    return 0;
  }
  std::memcpy(destination, m_buffer.data() + m_readOffset, count);
  m_readOffset += count;
  return count;
}

std::size_t Serializer::read_from(std::string& text) {
  std::uint16_t length = 0;
  if (read_from(&length, sizeof length) == 0 || length > bytesLeft()) {
    return 0;
  }
  text.append(reinterpret_cast<const char*>(m_buffer.data()) + m_readOffset, length);
  m_readOffset += length;
  return length;
}

char* Serializer::read_string(char* text, std::size_t length) {
  if (text != nullptr) {
    text[length] = '\0';
  }
  return text;
}

void Serializer::rewind_read(std::size_t count) {
  if (count > m_readOffset) {
    logPlainWarning("WARNING: trying to rewind %zu bytes, but only %zu bytes actually read!\n",
                    count, static_cast<std::size_t>(m_readOffset));
    return;
  }
  m_readOffset -= count;
}

std::size_t Serializer::size() const { return m_writeOffset; }

bool Serializer::empty() const { return m_writeOffset == 0; }

std::vector<std::uint8_t> Serializer::get_buffer() {
  m_buffer.resize(m_writeOffset);
  m_givenBytes = std::min(m_givenBytes, m_buffer.size());
  return m_buffer;
}

bool Serializer::grow(std::size_t count) {
  const std::size_t most = m_buffer.max_size();
  if (count > most - m_writeOffset) {
    return false;
  }
  const std::size_t needed = m_writeOffset + count;
  std::size_t room = m_buffer.empty() ? kFirstRoomBytes : m_buffer.size();
  while (room < needed) {
    room = room > most / 2 ? most : room * 2;
  }
  if (room > m_buffer.size()) {
    m_buffer.resize(room);
  }
  return true;
}

std::size_t Serializer::bytesLeft() const {
  const std::size_t readable = std::max<std::size_t>(m_writeOffset, m_givenBytes);
  return readable > m_readOffset ? readable - m_readOffset : 0;
}

}  // namespace pwr
