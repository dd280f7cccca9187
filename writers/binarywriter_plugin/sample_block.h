// Samples that wait, in one block of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "client/src/common/byte_packing.h"
#include "writers/binarywriter_plugin/recent_index.h"

namespace pwr::bin {

/// Samples in the order in which they came, in runs: those of one message. Most of what waiting
/// costs is moving bytes, so a sample among many of a message waits as a third of its record. What
/// a message's samples share stands once, and so do the names of a metric whose messages bring the
/// same again and again. The block fills from both ends, and is full when they meet. From the
/// front:
///
///      0  u32  bytes in use from the front, these eight counted
///      4  u32  samples
///      8  runs, each of them
///           0  u64  ticks
///           8  u16  where its row stands: units of four bytes below the end of the block
///          10  u16  samples of the run
///          12  the samples, each of them
///                0  f32  duration in microseconds
///                4  f32  value
///
/// From the end downwards stand rows: u32 id of a metric, and below it, the first sample's highest,
/// names: u16 text, u16 descriptor. A run may have fewer samples than its row has names.
///
/// Not synchronised.
class SampleBlock {
 public:
  static constexpr std::size_t kSize = 0x40000;
  static constexpr std::size_t kHeadSize = 8;
  static constexpr std::size_t kRunHeadSize = 12;
  static constexpr std::size_t kRowHeadSize = 4;
  static constexpr std::size_t kNumbersSize = 8;
  static constexpr std::size_t kNamesSize = 4;
  /// No block has more: as many as when all samples share one row.
  static constexpr std::size_t kMostSamples = kSize / kNumbersSize;

  // False means in both that there is no room, and that nothing has changed. A block has neither
  // room nor memory before it is cleared for the first time.

  /// Begins the samples of a message. In a cleared block there is room. Throws `std::bad_alloc`;
  /// nothing has changed then. REQUIRES: the last run was ended.
  bool startRun(std::uint64_t timestamp, std::uint32_t metricId);
  /// Behind the start of a run there is room for one sample at least. REQUIRES: a run was started.
  bool append(float duration, std::uint16_t name, std::uint16_t descriptor, float value) {
    const std::uint32_t names = std::uint32_t{descriptor} << 16U | name;
    if (room() < kNumbersSize || !(isNextKnown(names) || addNames(names))) {
      return false;
    }
    m_names -= kNamesSize;
    m_front = packNumber(value, packNumber(duration, m_front));
    return true;
  }
  /// A run without samples leaves no trace. Does nothing when there is no run.
  void endRun();

  bool isEmpty() const { return m_sampleCount == 0; }
  /// Makes an empty block.
  void clear();
  /// Gives the memory back.
  void release();

  /// The `kSize` bytes of the block. Valid until it changes. REQUIRES: it is not empty, and the
  /// last run was ended.
  const char* seal();

 private:
  /// The names of a metric's last samples, as they stand in the block.
  struct Row {
    /// In units of four bytes below the end.
    std::uint16_t place;
    /// 0 for a metric that has no row yet.
    std::uint16_t count;
  };

  std::size_t room() const { return static_cast<std::size_t>(m_back - m_front); }
  /// Whether the row has these names where the next sample's stand.
  bool isNextKnown(std::uint32_t names) const {
    return m_names != m_namesEnd && unpackNumber<std::uint32_t>(m_names - kNamesSize) == names;
  }
  bool addNames(std::uint32_t names);
  bool startOwnRow();
  std::uint16_t addRow(std::uint32_t metricId);
  std::size_t runCount() const;
  void reset(char* front, char* back);

  std::vector<char> m_bytes;
  /// What lies between the two is free.
  char* m_front = nullptr;
  char* m_back = nullptr;
  std::size_t m_sampleCount = 0;

  /// The run that is being added; null without one.
  char* m_run = nullptr;
  std::uint32_t m_metricId = 0;
  std::uint16_t m_rowNumber = 0;
  Row m_row{};
  /// The next sample's names stand below the one, unless it is the other.
  char* m_names = nullptr;
  char* m_namesEnd = nullptr;
  /// The row is of this run, and grows with it.
  bool m_isOwnRow = false;

  /// Numbers of metrics: their places among the rows, plus one.
  RecentIndex<std::uint32_t> m_rowNumbers;
  std::vector<Row> m_rows;
};

/// Whether a block is as `SampleBlock::seal` gave it out, as far as reading it goes: all that its
/// numbers point at is there.
bool isWhole(const char* block);

/// How many samples a block has. REQUIRES: it is whole.
std::size_t sampleCount(const char* block);

/// Writes the samples of a block as records to `out`, which has room for them. REQUIRES: the block
/// is whole.
void writeRecords(const char* block, char* out);

}  // namespace pwr::bin
