// Samples that wait, in one block of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "client/src/common/byte_packing.h"
#include "writers/binarywriter_plugin/recent_index.h"

namespace pwr::bin {

/// Samples in the order in which they came, in runs: those of one message. Most of what waiting
/// costs is moving bytes, so a waiting sample is a third of its record. What a message's samples
/// share stands once, and so do the names of a metric whose messages bring the same again and
/// again. The block fills from both ends, and is full when they meet. From the front:
///
///      0  u32  bytes in use from the front, these eight counted
///      4  u32  samples
///      8  runs, each of them
///           0  u64  ticks
///           8  u32  id of the metric
///          12  u32  samples of the run
///          16  u32  where the run's names end: bytes from the front
///          20  the samples, each of them
///                0  f32  duration in microseconds
///                4  f32  value
///
/// From the end downwards, the first sample's highest, stand names: u16 text, u16 descriptor.
///
/// Not synchronised.
class SampleBlock {
 public:
  static constexpr std::size_t kSize = 0x40000;
  static constexpr std::size_t kHeadSize = 8;
  static constexpr std::size_t kRunHeadSize = 20;
  static constexpr std::size_t kNumbersSize = 8;
  static constexpr std::size_t kNamesSize = 4;
  /// When each run brings the same names, of which one row stands in the block.
  static constexpr std::size_t kMostSamples = kSize / kNumbersSize;

  // A block that was not cleared yet has no room at all, and no memory.
  bool hasRoomForRun() const { return room() >= kRunHeadSize + kNumbersSize + kNamesSize; }
  bool hasRoomForSample() const { return room() >= kNumbersSize + kNamesSize; }

  /// REQUIRES: there is room for a run, and the last one was ended.
  void startRun(std::uint64_t timestamp, std::uint32_t metricId);
  /// REQUIRES: there is room for a sample, and a run to which it belongs.
  void append(float duration, std::uint16_t name, std::uint16_t descriptor, float value) {
    m_front = packNumber(value, packNumber(duration, m_front));
    m_back -= kNamesSize;
    packNumber(descriptor, packNumber(name, m_back));
  }
  /// A run without samples leaves no trace. Does nothing when there is no run.
  void endRun();

  bool isEmpty() const { return m_sampleCount == 0; }
  /// Makes an empty block.
  void clear();
  /// Makes an empty block without room, which has no memory.
  void release();

  /// The `kSize` bytes of the block. Valid until it changes. REQUIRES: it is not empty, and the
  /// last run was ended.
  const char* seal();

 private:
  /// The names of a metric's samples, as they stand in the block.
  struct Row {
    std::size_t end;
    std::size_t size;
  };

  std::size_t room() const { return static_cast<std::size_t>(m_back - m_front); }
  std::size_t placeOf(const char* at) const {
    return static_cast<std::size_t>(at - m_bytes.data());
  }
  Row& rowOf(std::uint32_t metricId);
  void reset(char* front, char* back);

  std::vector<char> m_bytes;
  /// What lies between the two is free.
  char* m_front = nullptr;
  char* m_back = nullptr;
  std::size_t m_sampleCount = 0;

  /// The run that is being added; null without one.
  char* m_run = nullptr;
  /// Where its names end.
  char* m_rowEnd = nullptr;
  std::uint32_t m_metricId = 0;

  /// Numbers of metrics: their places among the rows, plus one.
  RecentIndex<std::uint32_t> m_rowNumbers;
  std::vector<Row> m_rows;
};

/// How many samples a sealed block has.
std::size_t sampleCount(const char* block);

/// Writes the samples of a sealed block as records to `out`, which has room for them.
void writeRecords(const char* block, char* out);

}  // namespace pwr::bin
