#include "writers/binarywriter_plugin/sample_block.h"

#include <cstring>

#include "writers/binarywriter_plugin/binary_format.h"

namespace pwr::bin {

namespace {

constexpr std::size_t kBlockSampleCount = 4;

constexpr std::size_t kRunRow = 8;
constexpr std::size_t kRunCount = 10;
/// Rows are found by units of so many bytes.
constexpr std::size_t kUnit = 4;
/// Metrics whose messages fail with the first element have no samples, but rows.
constexpr std::size_t kMostRows = 0xFFFF;

static_assert(SampleBlock::kSize / kUnit <= 0x10000, "the place of a row has 16 bits");
static_assert(SampleBlock::kMostSamples <= 0xFFFF, "the samples of a run have 16 bits");

/// The head of a record and three bytes that are written over: one store instead of two.
constexpr std::uint32_t kRecordHead = kSampleSize | static_cast<std::uint32_t>(MsgType::Sample)
                                                        << 16U;

/// One run of a block.
struct Run {
  explicit Run(const char* at)
      : head(at),
        rowPlace(unpackNumber<std::uint16_t>(at + kRunRow) * kUnit),
        count(unpackNumber<std::uint16_t>(at + kRunCount)) {}

  const char* samples() const { return head + SampleBlock::kRunHeadSize; }
  const char* end() const { return samples() + count * SampleBlock::kNumbersSize; }
  /// The bytes below the end of the block that the row needs.
  std::size_t rowEnd() const {
    return rowPlace + SampleBlock::kRowHeadSize + count * SampleBlock::kNamesSize;
  }

  const char* head;
  std::size_t rowPlace;
  std::size_t count;
};

std::size_t frontSize(const char* block) { return unpackNumber<std::uint32_t>(block); }

/// Writes the records of one run to `out`, and returns the place behind them.
char* writeRun(const Run& run, const char* row, char* out) {
  const auto timestamp = unpackNumber<std::uint64_t>(run.head);
  row -= SampleBlock::kRowHeadSize;
  const auto metricId = unpackNumber<std::uint32_t>(row);
  for (const char* sample = run.samples(); sample != run.end();
       sample += SampleBlock::kNumbersSize) {
    row -= SampleBlock::kNamesSize;
    packNumber(kRecordHead, out);
    char* const payload = out + kHeadSize;
    packNumber(timestamp, payload + kTimestamp);
    std::memcpy(payload + kSampleDuration, sample, 4);
    packNumber(metricId, payload + kSampleMetricId);
    std::memcpy(payload + kSampleName, row, SampleBlock::kNamesSize);
    std::memcpy(payload + kSampleValue, sample + 4, 4);
    out += kSampleRecordSize;
  }
  return out;
}

}  // namespace

bool SampleBlock::startRun(std::uint64_t timestamp, std::uint32_t metricId) {
  if (room() < kRunHeadSize + kRowHeadSize + kNumbersSize + kNamesSize ||
      m_rows.size() == kMostRows) {
    return false;
  }
  m_rowNumber = m_rowNumbers.find(metricId);
  if (m_rowNumber == 0) {
    m_rowNumber = addRow(metricId);
  }
  m_row = m_rows[m_rowNumber - 1U];
  m_metricId = metricId;
  m_run = m_front;
  m_front = packNumber(timestamp, m_run) + (kRunHeadSize - sizeof timestamp);
  m_isOwnRow = false;
  m_names = m_bytes.data() + kSize - m_row.place * kUnit - kRowHeadSize;
  m_namesEnd = m_names - m_row.count * kNamesSize;
  return true;
}

bool SampleBlock::addNames(std::uint32_t names) {
  if (!m_isOwnRow && !startOwnRow()) {
    return false;
  }
  if (room() < kNumbersSize + kNamesSize) {
    return false;
  }
  m_back -= kNamesSize;
  packNumber(names, m_back);
  m_namesEnd = m_back;
  return true;
}

/// The samples so far have the names of the metric's last row: they begin the new one.
bool SampleBlock::startOwnRow() {
  const std::size_t size = runCount() * kNamesSize;
  if (room() < kRowHeadSize + size + kNumbersSize + kNamesSize) {
    return false;
  }
  const auto used = static_cast<std::size_t>(m_bytes.data() + kSize - m_back);
  m_row.place = static_cast<std::uint16_t>(used / kUnit);
  m_back -= kRowHeadSize;
  packNumber(m_metricId, m_back);
  m_back -= size;
  if (size > 0) {
    std::memcpy(m_back, m_names, size);
  }
  m_names = m_namesEnd = m_back;
  m_isOwnRow = true;
  return true;
}

void SampleBlock::endRun() {
  if (m_run == nullptr) {
    return;
  }
  const std::size_t count = runCount();
  if (count == 0) {
    m_front = m_run;
  } else {
    packNumber(m_row.place, m_run + kRunRow);
    packNumber(static_cast<std::uint16_t>(count), m_run + kRunCount);
    m_sampleCount += count;
  }
  if (m_isOwnRow) {
    m_row.count = static_cast<std::uint16_t>(count);
    m_rows[m_rowNumber - 1U] = m_row;
  }
  m_run = nullptr;
}

std::uint16_t SampleBlock::addRow(std::uint32_t metricId) {
  m_rows.push_back({});
  const auto number = static_cast<std::uint16_t>(m_rows.size());
  m_rowNumbers.add(metricId, number);
  return number;
}

std::size_t SampleBlock::runCount() const {
  return (static_cast<std::size_t>(m_front - m_run) - kRunHeadSize) / kNumbersSize;
}

void SampleBlock::clear() {
  m_bytes.resize(kSize);
  reset(m_bytes.data() + kHeadSize, m_bytes.data() + kSize);
}

void SampleBlock::release() {
  reset(nullptr, nullptr);
  std::vector<char>().swap(m_bytes);
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
  const auto front = static_cast<std::uint32_t>(m_front - m_bytes.data());
  packNumber(static_cast<std::uint32_t>(m_sampleCount), packNumber(front, m_bytes.data()));
  return m_bytes.data();
}

bool isWhole(const char* block) {
  const std::size_t front = frontSize(block);
  if (front < SampleBlock::kHeadSize || front > SampleBlock::kSize) {
    return false;
  }
  const char* const end = block + front;
  const char* at = block + SampleBlock::kHeadSize;
  std::size_t samples = 0;
  while (static_cast<std::size_t>(end - at) >= SampleBlock::kRunHeadSize) {
    const Run run(at);
    const auto room = static_cast<std::size_t>(end - run.samples());
    if (run.count * SampleBlock::kNumbersSize > room || run.rowEnd() > SampleBlock::kSize - front) {
      return false;
    }
    samples += run.count;
    at = run.end();
  }
  return at == end && samples == sampleCount(block);
}

std::size_t sampleCount(const char* block) {
  return unpackNumber<std::uint32_t>(block + kBlockSampleCount);
}

void writeRecords(const char* block, char* out) {
  const char* const end = block + frontSize(block);
  for (const char* at = block + SampleBlock::kHeadSize; at != end;) {
    const Run run(at);
    out = writeRun(run, block + SampleBlock::kSize - run.rowPlace, out);
    at = run.end();
  }
}

}  // namespace pwr::bin
