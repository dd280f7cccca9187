#include "qumetra/recording/surrogates.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace qumetra {
namespace {

constexpr std::size_t kEscapeSize = 6;

/// The number of the \uXXXX escape that `at` begins with, or -1 when it begins with something else.
int escapeNumber(const char* at, const char* end) {
  if (static_cast<std::size_t>(end - at) < kEscapeSize || at[0] != '\\' || at[1] != 'u') {
    return -1;
  }
  unsigned number = 0;
  const auto [last, error] = std::from_chars(at + 2, at + kEscapeSize, number, 16);
  return error == std::errc() && last == at + kEscapeSize ? static_cast<int>(number) : -1;
}

bool isHigh(int number) { return number >= 0xd800 && number <= 0xdbff; }
bool isLow(int number) { return number >= 0xdc00 && number <= 0xdfff; }
bool standsForByte(int number) { return number >= 0xdc80 && number <= 0xdcff; }

/// Copies a text over itself, escape by escape.
class Replacer {
 public:
  Replacer(char* text, std::size_t size)
      : m_begin(text), m_read(text), m_write(text), m_end(text + size) {}

  SurrogateResult run() {
    while (m_read != m_end) {
      copyPlainText();
      if (m_read != m_end) {
        copyEscape();
      }
    }
    m_result.size = static_cast<std::size_t>(m_write - m_begin);
    return m_result;
  }

 private:
  void copyPlainText() {
    const auto left = static_cast<std::size_t>(m_end - m_read);
    const void* escape = std::memchr(m_read, '\\', left);
    copy(escape == nullptr ? left
                           : static_cast<std::size_t>(static_cast<const char*>(escape) - m_read));
  }

  void copyEscape() {
    const int number = escapeNumber(m_read, m_end);
    if (standsForByte(number)) {
      *m_write++ = static_cast<char>(number & 0xff);
      m_read += kEscapeSize;
      return;
    }
    if (isHigh(number) && isLow(escapeNumber(m_read + kEscapeSize, m_end))) {
      copy(2 * kEscapeSize);
      return;
    }
    if (isHigh(number) || isLow(number)) {
      noteFault();
      return;
    }
    // Two bytes are a whole short escape, and of a longer one enough: its digits are plain text.
    copy(std::min<std::size_t>(2, static_cast<std::size_t>(m_end - m_read)));
  }

  void noteFault() {
    if (!m_result.isFaulty) {
      m_result.isFaulty = true;
      m_result.faultAt = static_cast<std::size_t>(m_read - m_begin);
    }
    std::memset(m_read, ' ', kEscapeSize);
    copy(kEscapeSize);
  }

  void copy(std::size_t count) {
    if (m_write != m_read) {
      std::memmove(m_write, m_read, count);
    }
    m_read += count;
    m_write += count;
  }

  char* m_begin;
  char* m_read;
  char* m_write;
  char* m_end;
  SurrogateResult m_result;
};

}  // namespace

SurrogateResult replaceLoneSurrogates(char* text, std::size_t size) {
  return Replacer(text, size).run();
}

}  // namespace qumetra
