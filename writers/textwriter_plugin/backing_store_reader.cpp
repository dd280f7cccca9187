#include "writers/textwriter_plugin/backing_store_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "client/src/common/pw_log.h"

namespace {

constexpr std::uint64_t kSmallestBlock = 4096;
constexpr std::uint64_t kLargestFirstBlock = 0x100000;

}  // namespace

BackingStoreReader::BackingStoreReader(pwr::QMBufferProvider& store)
    : m_store(store), m_capacity(std::clamp(store.size(), kSmallestBlock, kLargestFirstBlock)) {
  m_store.resetForRead();
  m_block.reset(static_cast<char*>(std::malloc(m_capacity)));
  if (m_block == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Failed to allocate buffer of size %llu\n",
                          static_cast<unsigned long long>(m_capacity));
    m_failed = true;
  }
}

bool BackingStoreReader::refill() {
  if (m_failed) {
    return false;
  }
  const std::size_t left = m_end - m_position;
  const std::size_t lastRead = m_end;
  m_position = 0;
  m_end = 0;
  if (left > 0 && (!moveBack(left) || !makeRoom(left, lastRead))) {
    m_failed = true;
    return false;
  }
  const std::int64_t got = m_store.read(m_block.get(), m_capacity);
  // Without a new byte the store ends within a record, and asking again would never end.
  if (got <= static_cast<std::int64_t>(left)) {
    return false;
  }
  m_end = static_cast<std::size_t>(got);
  return true;
}

bool BackingStoreReader::moveBack(std::size_t count) {
  // The bytes go to the start of the block, where the next read is going to put them again.
  const std::int64_t moved = m_store.readBack(m_block.get(), count);
  if (moved == static_cast<std::int64_t>(count)) {
    return true;
  }
  if (moved >= 0) {
    std::fprintf(stderr, "ERROR: trying to rewind past the start of the buffer?!\n");
  } else {
    std::fprintf(stderr, "ERROR: couldn't rewind %zu bytes\n", count);
  }
  return false;
}

bool BackingStoreReader::makeRoom(std::size_t left, std::size_t lastRead) {
  if (left < sizeof(Length) || recordSize() <= lastRead) {
    return true;
  }
  const std::size_t doubled = m_capacity * 2;
  void* grown = std::realloc(m_block.get(), doubled);
  if (grown == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Failed to allocate buffer of size %zu bytes\n", doubled);
    return false;
  }
  static_cast<void>(m_block.release());  // realloc has taken it.
  m_block.reset(static_cast<char*>(grown));
  m_capacity = doubled;
  return true;
}
