#include "writers/textwriter_plugin/row_sink.h"

#include <algorithm>

RowSink::RowSink(std::FILE* out, bool echo)
    : m_out(out), m_echo(echo), m_block(std::make_unique_for_overwrite<char[]>(kBlockSize)) {}

bool RowSink::finish() {
  writeOut({m_block.get(), m_used});
  m_used = 0;
  return !m_failed;
}

void RowSink::appendLarge(std::string_view text) {
  finish();
  if (text.size() > kBlockSize) {
    writeOut(text);
    return;
  }
  append(text);
}

void RowSink::appendBlanks(std::size_t count) {
  while (count > 0) {
    if (m_used == kBlockSize) {
      finish();
    }
    const std::size_t some = std::min(count, kBlockSize - m_used);
    std::memset(m_block.get() + m_used, ' ', some);
    m_used += some;
    count -= some;
  }
}

void RowSink::writeOut(std::string_view text) {
  if (text.empty()) {
    return;
  }
  if (!m_failed && std::fwrite(text.data(), 1, text.size(), m_out) != text.size()) {
    m_failed = true;
  }
  if (m_echo) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
  }
}
