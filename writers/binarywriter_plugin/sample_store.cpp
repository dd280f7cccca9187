#include "writers/binarywriter_plugin/sample_store.h"

#include <vector>

#include "client/src/common/pw_log.h"
#include "host/logger.h"
#include "writers/binarywriter_plugin/binary_format.h"

namespace pwr::bin {

namespace {

void flush(pwr::Logger& output) {
  output.flush();
  output.m_pendingBytes = 0;
}

void appendRecords(const char* block, std::vector<char>& out) {
  const std::size_t start = out.size();
  out.resize(start + sampleCount(block) * kSampleRecordSize);
  writeRecords(block, out.data() + start);
}

}  // namespace

void SampleStore::startMessage(std::uint64_t timestamp, std::uint32_t metricId) {
  m_block.endRun();
  if (!m_block.hasRoomForRun()) {
    if (!m_block.isEmpty()) {
      m_fullBlocks.append(m_block.seal());
    }
    m_block.clear();
  }
  m_timestamp = timestamp;
  m_metricId = metricId;
  m_block.startRun(timestamp, metricId);
}

void SampleStore::moveTo(pwr::Logger& output) {
  m_block.endRun();
  if (m_fullBlocks.count() > 0) {
    flushFullBlocks(output);
  }
  if (!m_block.isEmpty()) {
    appendRecords(m_block.seal(), output.m_buffer);
  }
  m_fullBlocks.clear();
  m_block.release();
}

void SampleStore::flushFullBlocks(pwr::Logger& output) {
  flush(output);
  const std::size_t count = m_fullBlocks.count();
  std::size_t lost = 0;
  std::vector<char> block(SampleBlock::kSize);
  while (m_fullBlocks.count() > 0) {
    // Each time, since a host may empty its buffer as it flushes; and first, so that want of memory
    // costs no block.
    output.m_buffer.reserve(SampleBlock::kMostSamples * kSampleRecordSize);
    if (!m_fullBlocks.takeFirst(block.data())) {
      ++lost;
      continue;
    }
    output.m_buffer.resize(sampleCount(block.data()) * kSampleRecordSize);
    writeRecords(block.data(), output.m_buffer.data());
    flush(output);
  }
  output.m_buffer.clear();
  if (lost > 0) {
    logError("ERROR: Cannot read back %zu of %zu blocks of samples from %s\n", lost, count,
             m_fullBlocks.path().c_str());
  }
}

}  // namespace pwr::bin
