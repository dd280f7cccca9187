#include "writers/binarywriter_plugin/sample_store.h"

#include "client/src/common/pw_log.h"
#include "host/logger.h"
#include "writers/binarywriter_plugin/binary_format.h"
#include "writers/binarywriter_plugin/records.h"

namespace pwr::bin {

namespace {

void flush(pwr::Logger& output) {
  output.flush();
  output.m_pendingBytes = 0;
}

}  // namespace

void SampleStore::startBlock() {
  if (!m_block.isEmpty()) {
    m_fullBlocks.append(m_block.seal());
  }
  m_block.clear();
  m_block.startRun(m_timestamp, m_metricId);
}

void SampleStore::prepareToMove(pwr::Logger& output, std::size_t size) {
  m_block.endRun();
  std::size_t samples = m_block.isEmpty() ? 0 : sampleCount(m_block.seal());
  if (m_fullBlocks.count() > 0) {
    m_takenBlock.resize(SampleBlock::kSize);
    samples = SampleBlock::kMostSamples;
  }
  output.m_buffer.reserve(size + samples * kSampleRecordSize);
}

void SampleStore::moveTo(pwr::Logger& output) {
  if (m_fullBlocks.count() > 0) {
    flushFullBlocks(output);
  }
  if (!m_block.isEmpty()) {
    const char* const block = m_block.seal();
    writeRecords(block, grow(output.m_buffer, sampleCount(block) * kSampleRecordSize));
  }
  m_fullBlocks.clear();
  m_block.release();
  freeMemory(m_takenBlock);
}

void SampleStore::flushFullBlocks(pwr::Logger& output) {
  flush(output);
  const std::size_t count = m_fullBlocks.count();
  std::size_t lost = 0;
  char* const block = m_takenBlock.data();
  while (m_fullBlocks.count() > 0) {
    // A host may have given the memory away as it flushed. This comes before a block is taken, so
    // that want of memory costs none.
    output.m_buffer.reserve(SampleBlock::kMostSamples * kSampleRecordSize);
    if (!m_fullBlocks.takeFirst(block) || !isWhole(block)) {
      ++lost;
      continue;
    }
    // What was flushed is written over: to empty the buffer first would clear it for nothing.
    output.m_buffer.resize(sampleCount(block) * kSampleRecordSize);
    writeRecords(block, output.m_buffer.data());
    flush(output);
  }
  output.m_buffer.clear();
  if (lost > 0) {
    logError("ERROR: Cannot read back %zu of %zu blocks of samples from %s\n", lost, count,
             m_fullBlocks.path().c_str());
  }
}

}  // namespace pwr::bin
