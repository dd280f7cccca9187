// The samples that are still to be written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "client/src/common/byte_packing.h"
#include "writers/binarywriter_plugin/spilled_blocks.h"

namespace pwr {
class Logger;
}

namespace pwr::bin {

/// Samples in the order in which they came. Memory holds a block of them; full blocks wait in a
/// temp file. Where that file cannot be had, memory holds the rest too, and nothing is lost. Not
/// synchronised.
///
/// A waiting sample is less than half of its record, since most of what waiting costs is moving
/// bytes. Samples of one message stand behind a head of their own, anew in each block:
///
///      0  u64  ticks
///      8  u32  id of the metric
///     12  u32  how many samples follow, each of them
///                0  f32  duration in microseconds
///                4  u16  text
///                6  u16  descriptor
///                8  f32  value
class SampleStore {
 public:
  static constexpr std::size_t kBlockSize = 0x40000;
  static constexpr std::size_t kRunHeadSize = 16;
  static constexpr std::size_t kWaitingSize = 12;

  /// What is appended from here on are samples of this metric at this time.
  void startMessage(std::uint64_t timestamp, std::uint32_t metricId) {
    endRun();
    m_timestamp = timestamp;
    m_metricId = metricId;
  }

  /// The duration is in microseconds. REQUIRES: a message was started.
  void append(float duration, std::uint16_t name, std::uint16_t descriptor, float value) {
    if (!m_hasRun || m_block.size() - m_used < kWaitingSize) {
      startRun();
    }
    char* at = m_block.data() + m_used;
    at = packNumber(duration, at);
    at = packNumber(name, at);
    at = packNumber(descriptor, at);
    packNumber(value, at);
    m_used += kWaitingSize;
    ++m_runCount;
  }

  /// Moves all samples to the handle, as records. Where there is a temp file, what stands in the
  /// handle's buffer is flushed first, and then the file block by block; what cannot be read back
  /// is one error in the log. The records of the samples in memory are appended to the buffer and
  /// left there.
  void moveTo(pwr::Logger& output);

 private:
  void startRun();
  void endRun();
  void makeRoom();
  void flushSpilled(pwr::Logger& output);

  SpilledBlocks m_spilled{kBlockSize};
  bool m_canSpill = true;
  /// Holds `m_used` bytes.
  std::vector<char> m_block;
  std::size_t m_used = 0;

  std::uint64_t m_timestamp = 0;
  std::uint32_t m_metricId = 0;
  /// Samples are being added behind the head at `m_runStart`, which learns their number at its end.
  bool m_hasRun = false;
  std::size_t m_runStart = 0;
  std::uint32_t m_runCount = 0;
};

}  // namespace pwr::bin
