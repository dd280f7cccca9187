// Records of the import stream, packed field by field.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "client/src/common/byte_packing.h"
#include "client/src/common/deliberate_stop.h"

namespace kelto {

/// A record in the making, of at most `Capacity` bytes. Integers are little-endian whatever the
/// machine's order, and nothing stands between two fields.
///
///     PackedRecord<8> record;
///     record.u32(0x08000000);
///     record.u32(0xADDEDEFA);
///     writeRecord(id, record.data(), record.size());
///
/// REQUIRES: the fields fit, which callers check before they pack; the process stops otherwise.
template <std::size_t Capacity>
class PackedRecord {
 public:
  void u8(std::uint8_t value) { integer(value); }
  void u16(std::uint16_t value) { integer(value); }
  void u32(std::uint32_t value) { integer(value); }
  void u64(std::uint64_t value) { integer(value); }
  /// `count` times a 32-bit and a 64-bit number.
  void pairs(const std::uint32_t* firsts, const std::uint64_t* seconds, std::size_t count) {
    constexpr std::size_t kPairSize = sizeof(std::uint32_t) + sizeof(std::uint64_t);
    char* at = take(count * kPairSize);
    for (std::size_t i = 0; i < count; ++i) {
      at = pwr::packNumber(seconds[i], pwr::packNumber(firsts[i], at));
    }
  }
  void zeros(std::size_t count) { std::memset(take(count), 0, count); }
  /// The characters without a terminator.
  void text(std::string_view text) { std::memcpy(take(text.size()), text.data(), text.size()); }
  /// The characters with a terminator.
  void terminatedText(std::string_view characters) {
    text(characters);
    u8(0);
  }

  const char* data() const { return m_bytes.data(); }
  std::uint32_t size() const { return static_cast<std::uint32_t>(m_size); }

 private:
  template <typename Unsigned>
  void integer(Unsigned value) {
    pwr::packNumber(value, take(sizeof(Unsigned)));
  }

  /// Room for `count` bytes.
  char* take(std::size_t count) {
    if (Capacity - m_size < count) {
      pwr::stopDeliberately("writers/keltowriter_plugin/packed_record", "the field fits");
    }
    char* const at = m_bytes.data() + m_size;
    m_size += count;
    return at;
  }

  std::size_t m_size = 0;
  /// Not cleared: only what was packed is ever read.
  std::array<char, Capacity> m_bytes;
};

/// The words that open a record and tell which fields follow. They stand in files and never change.
enum RecordWord : std::uint32_t {
  kMagicWord = 0x08000000,
  /// size, type.
  kHeaderWord = 0x02400000,
  /// tsc, size, type.
  kTimedWord = 0x02400010,
  /// tid, pid, tsc, size, type.
  kWakelockWord = 0x02400018,
  /// event, 0, pid, 0, tsc, size, type.
  kProcessWord = 0x0240001D,
  /// event, 0, pid, tid, tsc.
  kThreadWord = 0x0200001D,
  /// A second word, 2 as a byte, start, resolution.
  kHeadMarkerWord = 0x22000020,
  kHeadMarkerSecondWord = 0x02000020,
};

/// The types of records, and the sub-types of samples and metadata. They stand in files and never
/// change.
enum RecordType : std::uint16_t {
  kProcessRecord = 0,
  kHardwareRecord = 18,
  kCollectionRecord = 44,
  kSystemRecord = 45,
  kPowerThresholdRecord = 63,
  kKernelWakelockRecord = 64,
  kUserWakelockRecord = 67,
  kPackageNameRecord = 68,
  kSampleRecord = 71,
  kMetadataRecord = 72,
};
enum RecordSubType : std::uint16_t { kAttributeSample = 6, kInfoMetadata = 7, kMetricMetadata = 8 };

}  // namespace kelto
