#include "writers/binarywriter_plugin/sample_store.h"

#include <cstring>

#include "client/src/common/pw_log.h"
#include "host/logger.h"
#include "writers/binarywriter_plugin/binary_format.h"
#include "writers/binarywriter_plugin/records.h"

namespace pwr::bin {

namespace {

constexpr std::size_t kMetricPlace = 8;
constexpr std::size_t kCountPlace = 12;

/// A block is full when a head and a sample find no room in it: no run begins in what is left.
constexpr std::size_t kLeastRun = SampleStore::kRunHeadSize + SampleStore::kWaitingSize;

void flush(pwr::Logger& output) {
  output.flush();
  output.m_pendingBytes = 0;
}

/// Calls `take(head, count)` for each run of `size` bytes.
template <typename Take>
void eachRun(const char* runs, std::size_t size, Take take) {
  for (std::size_t at = 0; size - at >= kLeastRun;) {
    const auto count = unpackNumber<std::uint32_t>(runs + at + kCountPlace);
    take(runs + at, count);
    at += SampleStore::kRunHeadSize + count * SampleStore::kWaitingSize;
  }
}

std::size_t recordsSize(const char* runs, std::size_t size) {
  std::size_t records = 0;
  eachRun(runs, size, [&](const char*, std::uint32_t count) { records += count; });
  return records * kSampleRecordSize;
}

/// Writes the records of the samples to `out`, which has room for them. The fields that a waiting
/// sample has stand in a record as they are.
void writeRecords(const char* runs, std::size_t size, char* out) {
  std::vector<char> record = makeRecord(MsgType::Sample, kSampleSize);
  eachRun(runs, size, [&](const char* head, std::uint32_t count) {
    std::memcpy(record.data() + kHeadSize + kTimestamp, head, kMetricPlace);
    std::memcpy(record.data() + kHeadSize + kSampleMetricId, head + kMetricPlace,
                kCountPlace - kMetricPlace);
    const char* sample = head + SampleStore::kRunHeadSize;
    for (std::uint32_t i = 0; i < count; ++i) {
      std::memcpy(out, record.data(), kSampleRecordSize);
      std::memcpy(out + kHeadSize + kSampleDuration, sample, 4);
      std::memcpy(out + kHeadSize + kSampleName, sample + 4, 8);
      out += kSampleRecordSize;
      sample += SampleStore::kWaitingSize;
    }
  });
}

void appendRecords(const char* runs, std::size_t size, std::vector<char>& out) {
  const std::size_t start = out.size();
  out.resize(start + recordsSize(runs, size));
  writeRecords(runs, size, out.data() + start);
}

}  // namespace

void SampleStore::startRun() {
  endRun();
  if (m_block.size() - m_used < kLeastRun) {
    makeRoom();
  }
  m_hasRun = true;
  m_runStart = m_used;
  m_runCount = 0;
  char* at = packNumber(m_timestamp, m_block.data() + m_used);
  packNumber(m_metricId, at);
  m_used += kRunHeadSize;
}

void SampleStore::endRun() {
  if (m_hasRun) {
    packNumber(m_runCount, m_block.data() + m_runStart + kCountPlace);
    m_hasRun = false;
  }
}

void SampleStore::makeRoom() {
  if (m_block.empty()) {
    m_block.resize(kBlockSize);
    return;
  }
  m_canSpill = m_canSpill && m_spilled.append(m_block.data());
  if (m_canSpill) {
    m_used = 0;
  } else {
    m_block.resize(2 * m_block.size());
  }
}

void SampleStore::moveTo(pwr::Logger& output) {
  endRun();
  if (m_spilled.count() > 0) {
    flushSpilled(output);
  }
  appendRecords(m_block.data(), m_used, output.m_buffer);
  m_spilled.clear();
  m_canSpill = true;
  m_block = {};
  m_used = 0;
}

void SampleStore::flushSpilled(pwr::Logger& output) {
  flush(output);
  std::size_t lost = 0;
  std::vector<char> block(kBlockSize);
  for (std::size_t i = 0; i < m_spilled.count(); ++i) {
    if (!m_spilled.take(i, block.data())) {
      ++lost;
      continue;
    }
    // Each time: a host may empty it as it flushes.
    output.m_buffer.resize(recordsSize(block.data(), block.size()));
    writeRecords(block.data(), block.size(), output.m_buffer.data());
    flush(output);
  }
  output.m_buffer.clear();
  if (lost > 0) {
    logError("ERROR: Cannot read back %zu of %zu blocks of samples from %s\n", lost,
             m_spilled.count(), m_spilled.path().c_str());
  }
}

}  // namespace pwr::bin
