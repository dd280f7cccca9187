// The samples that are still to be written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "writers/binarywriter_plugin/sample_block.h"
#include "writers/binarywriter_plugin/spilled_blocks.h"

namespace pwr {
class Logger;
}

namespace pwr::bin {

/// Samples in the order in which they came. Memory holds a block of them; full blocks wait in a
/// temp file. Where that file cannot be had, memory holds the rest too, and nothing is lost. Not
/// synchronised.
///
/// What wants memory that cannot be had throws `std::bad_alloc`, and keeps the samples before it.
class SampleStore {
 public:
  /// What is appended from here on are samples of this metric at this time.
  void startMessage(std::uint64_t timestamp, std::uint32_t metricId) {
    m_timestamp = timestamp;
    m_metricId = metricId;
    m_block.endRun();
    if (!m_block.startRun(timestamp, metricId)) {
      startBlock();
    }
  }

  /// The duration is in microseconds. REQUIRES: a message was started, and none of its samples has
  /// thrown.
  void append(float duration, std::uint16_t name, std::uint16_t descriptor, float value) {
    if (!m_block.append(duration, name, descriptor, value)) {
      startMessage(m_timestamp, m_metricId);  // The rest is a run of its own.
      m_block.append(duration, name, descriptor, value);
    }
  }

  /// Sees to the memory that `moveTo` needs when the handle's buffer has `size` bytes. Throws
  /// `std::bad_alloc`.
  void prepareToMove(pwr::Logger& output, std::size_t size);
  /// Moves all samples to the handle, as records. When there is more than a block of them, what
  /// stands in the handle's buffer is flushed first, and then block by block; blocks that cannot be
  /// read back are one error in the log. The records of the last block are appended to the buffer
  /// and left there. Throws only for a handle that gives memory away as it flushes, and for want of
  /// what replaces it; what was not flushed is kept then. REQUIRES: that was prepared.
  void moveTo(pwr::Logger& output);

 private:
  void startBlock();
  void flushFullBlocks(pwr::Logger& output);

  SpilledBlocks m_fullBlocks{SampleBlock::kSize};
  SampleBlock m_block;
  /// Where full blocks are read back to.
  std::vector<char> m_takenBlock;
  std::uint64_t m_timestamp = 0;
  std::uint32_t m_metricId = 0;
};

}  // namespace pwr::bin
