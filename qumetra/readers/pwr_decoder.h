// The fields of .pwr records.
#pragma once

#include <cstdint>
#include <string>

#include "qumetra/readers/pwr_records.h"
#include "qumetra/readers/record_fields.h"

namespace qumetra {

/// The words that records of .pwr files begin with. They tell what fields come next.
enum PwrWord : std::uint32_t {
  kPwrHeaderWord = 0x02400000,
  kPwrTimedWord = 0x02400010,
  kPwrWakelockWord = 0x02400018,
  kPwrProcessWord = 0x0240001D,
  kPwrThreadWord = 0x0200001D,
  kPwrMagicWord = 0x08000000,
  kPwrHeadMarkerWord = 0x22000020
};

/// Decodes a whole record, its first word included, which is one of the above; the offset is left
/// as it is. Returns what is wrong, or an empty text; when something is, the record is of no use. A
/// sample reuses the room for attributes that the record has from an earlier one.
std::string decodePwrRecord(RecordFields fields, PwrRecord& record);

}  // namespace qumetra
