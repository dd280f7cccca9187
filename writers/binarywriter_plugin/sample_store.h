// The samples that are still to be written.
#pragma once

#include <cstddef>
#include <vector>

#include "writers/binarywriter_plugin/binary_format.h"
#include "writers/binarywriter_plugin/spilled_blocks.h"

namespace pwr {
class Logger;
}

namespace pwr::bin {

/// Records of samples in the order in which they came. Memory holds a block of them; full blocks
/// wait in a temp file. Where that file cannot be had, memory holds the rest too, and nothing is
/// lost. Not synchronised.
class SampleStore {
 public:
  /// 1 MiB of whole records.
  static constexpr std::size_t kBlockSize = 0x100000 / kSampleRecordSize * kSampleRecordSize;

  /// Room for one more record, which the caller fills before anything else happens to the store.
  char* append() {
    if (m_block.size() - m_used < kSampleRecordSize) {
      makeRoom();
    }
    m_used += kSampleRecordSize;
    return m_block.data() + m_used - kSampleRecordSize;
  }

  /// Moves all records to the handle. Where there is a temp file, what stands in the handle's
  /// buffer is flushed first, and then the file block by block; what cannot be read back is one
  /// error in the log. The records in memory are appended to the buffer and left there.
  void moveTo(pwr::Logger& output);

 private:
  void makeRoom();
  void flushSpilled(pwr::Logger& output);

  SpilledBlocks m_spilled{kBlockSize};
  bool m_canSpill = true;
  /// Holds `m_used` bytes of records.
  std::vector<char> m_block;
  std::size_t m_used = 0;
};

}  // namespace pwr::bin
