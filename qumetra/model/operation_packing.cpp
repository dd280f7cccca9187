// The packed form of operations' descriptions; the header tells it field by field.
#include <algorithm>
#include <cstddef>
#include <utility>

#include "client/src/common/packed_numbers.h"
#include "client/src/common/serializer.h"
#include "host/operation_metadata.h"

namespace pwr {
namespace {

// The serializer's own texts cannot be told from missing ones when they are empty, and end at 65535
// bytes.
void writeText(Serializer& serializer, const std::string& text) {
  writeNumber(serializer, static_cast<std::uint32_t>(text.size()));
  serializer.write_to(text.data(), text.size());
}

/// False when the bytes fall short.
bool readText(Serializer& serializer, std::string& text) {
  constexpr std::uint32_t kPartBytes = 4096;
  std::uint32_t left = 0;
  if (!readNumber(serializer, left)) {
    return false;
  }
  // Part by part, since the length may be anything: memory grows with the bytes that are there.
  while (left > 0) {
    const std::uint32_t part = std::min(left, kPartBytes);
    const std::size_t end = text.size();
    text.resize(end + part);
    if (serializer.read_from(text.data() + end, part) != part) {
      return false;
    }
    left -= part;
  }
  return true;
}

bool readPairs(Serializer& serializer, std::vector<std::pair<std::string, std::string>>& pairs) {
  std::uint32_t count = 0;
  if (!readNumber(serializer, count)) {
    return false;
  }
  // Nothing is reserved: the count may be anything, the bytes are what they are.
  for (std::uint32_t index = 0; index < count; ++index) {
    std::string key;
    std::string value;
    if (!readText(serializer, key) || !readText(serializer, value)) {
      return false;
    }
    pairs.emplace_back(std::move(key), std::move(value));
  }
  return true;
}

/// Reads the whole record into `metadata`, which is of no use when the result is false.
bool readAll(Serializer& serializer, OperationMetadata& metadata) {
  std::uint32_t kind = 0;
  return readNumber(serializer, kind) && kind == OperationMetadata::kOperation &&
         readText(serializer, metadata.m_initValue) &&
         readText(serializer, metadata.m_operationName) &&
         readNumber(serializer, metadata.m_size) && readText(serializer, metadata.m_address) &&
         readPairs(serializer, metadata.m_pairs);
}

}  // namespace

void OperationMetadata::serialize_i(Serializer& serializer) const {
  writeNumber(serializer, m_kind);
  writeText(serializer, m_initValue);
  writeText(serializer, m_operationName);
  writeNumber(serializer, m_size);
  writeText(serializer, m_address);
  writeNumber(serializer, static_cast<std::uint32_t>(m_pairs.size()));
  for (const auto& [key, value] : m_pairs) {
    writeText(serializer, key);
    writeText(serializer, value);
  }
}

int OperationMetadata::deserialize_i(Serializer& serializer, unsigned int /*version*/) {
  OperationMetadata read({}, {}, 0);
  if (!readAll(serializer, read)) {
    return 1;
  }
  m_initValue = std::move(read.m_initValue);
  m_operationName = std::move(read.m_operationName);
  m_size = read.m_size;
  m_address = std::move(read.m_address);
  m_pairs = std::move(read.m_pairs);
  return 0;
}

}  // namespace pwr
