#include "writers/binarywriter_plugin/sample_block.h"

#include <cstring>

#include "writers/binarywriter_plugin/binary_format.h"
#include "writers/binarywriter_plugin/records.h"

namespace pwr::bin {

namespace {

constexpr std::size_t kBlockSampleCount = 4;

constexpr std::size_t kRunMetric = 8;
constexpr std::size_t kRunCount = 12;
constexpr std::size_t kRunRowEnd = 16;

std::uint32_t small(std::size_t number) { return static_cast<std::uint32_t>(number); }

/// Writes the records of one run to `out`, and returns the place behind them. The fields that a
/// waiting sample has stand in a record as they are.
char* writeRun(const char* run, std::size_t count, const char* row, char* record, char* out) {
  std::memcpy(record + kHeadSize + kTimestamp, run, kRunMetric);
  std::memcpy(record + kHeadSize + kSampleMetricId, run + kRunMetric, kRunCount - kRunMetric);
  const char* numbers = run + SampleBlock::kRunHeadSize;
  for (std::size_t i = 0; i < count; ++i) {
    row -= SampleBlock::kNamesSize;
    std::memcpy(out, record, kSampleRecordSize);
    std::memcpy(out + kHeadSize + kSampleDuration, numbers, 4);
    std::memcpy(out + kHeadSize + kSampleName, row, SampleBlock::kNamesSize);
    std::memcpy(out + kHeadSize + kSampleValue, numbers + 4, 4);
    numbers += SampleBlock::kNumbersSize;
    out += kSampleRecordSize;
  }
  return out;
}

}  // namespace

void SampleBlock::startRun(std::uint64_t timestamp, std::uint32_t metricId) {
  m_run = m_front;
  m_rowEnd = m_back;
  m_metricId = metricId;
  packNumber(metricId, packNumber(timestamp, m_run));
  m_front += kRunHeadSize;
}

void SampleBlock::endRun() {
  if (m_run == nullptr) {
    return;
  }
  const auto size = static_cast<std::size_t>(m_rowEnd - m_back);
  if (size == 0) {
    m_front = m_run;
    m_run = nullptr;
    return;
  }
  Row& known = rowOf(m_metricId);
  if (size <= known.size && std::memcmp(&m_bytes[known.end - size], m_back, size) == 0) {
    m_back = m_rowEnd;
  } else {
    known = {placeOf(m_rowEnd), size};
  }
  packNumber(small(size / kNamesSize), m_run + kRunCount);
  packNumber(small(known.end), m_run + kRunRowEnd);
  m_sampleCount += size / kNamesSize;
  m_run = nullptr;
}

SampleBlock::Row& SampleBlock::rowOf(std::uint32_t metricId) {
  static_assert(kSize / (kRunHeadSize + kNumbersSize + kNamesSize) < 0xFFFF,
                "the number of a row has 16 bits");
  std::uint16_t number = m_rowNumbers.find(metricId);
  if (number == 0) {
    m_rows.push_back({});
    number = static_cast<std::uint16_t>(m_rows.size());
    m_rowNumbers.add(metricId, number);
  }
  return m_rows[number - 1U];
}

void SampleBlock::clear() {
  m_bytes.resize(kSize);
  reset(m_bytes.data() + kHeadSize, m_bytes.data() + kSize);
}

void SampleBlock::release() {
  reset(nullptr, nullptr);
  m_bytes = {};
}

void SampleBlock::reset(char* front, char* back) {
  m_front = front;
  m_back = back;
  m_sampleCount = 0;
  m_run = nullptr;
  m_rowNumbers.clear();
  m_rows.clear();
}

const char* SampleBlock::seal() {
  packNumber(small(m_sampleCount), packNumber(small(placeOf(m_front)), m_bytes.data()));
  return m_bytes.data();
}

std::size_t sampleCount(const char* block) {
  return unpackNumber<std::uint32_t>(block + kBlockSampleCount);
}

void writeRecords(const char* block, char* out) {
  std::vector<char> record = makeRecord(MsgType::Sample, kSampleSize);
  const char* const end = block + unpackNumber<std::uint32_t>(block);
  for (const char* run = block + SampleBlock::kHeadSize; run < end;) {
    const std::size_t count = unpackNumber<std::uint32_t>(run + kRunCount);
    const char* const row = block + unpackNumber<std::uint32_t>(run + kRunRowEnd);
    out = writeRun(run, count, row, record.data(), out);
    run += SampleBlock::kRunHeadSize + count * SampleBlock::kNumbersSize;
  }
}

}  // namespace pwr::bin
