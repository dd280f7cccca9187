#include "writers/binarywriter_plugin/sample_store.h"

#include "client/src/common/pw_log.h"
#include "host/logger.h"

namespace pwr::bin {

namespace {

void flush(pwr::Logger& output) {
  output.flush();
  output.m_pendingBytes = 0;
}

}  // namespace

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
  if (m_spilled.count() > 0) {
    flushSpilled(output);
  }
  output.m_buffer.insert(output.m_buffer.end(), m_block.data(), m_block.data() + m_used);
  m_spilled.clear();
  m_canSpill = true;
  m_block = {};
  m_used = 0;
}

void SampleStore::flushSpilled(pwr::Logger& output) {
  flush(output);
  std::size_t lost = 0;
  for (std::size_t i = 0; i < m_spilled.count(); ++i) {
    output.m_buffer.resize(kBlockSize);  // Each time: a host may empty it as it flushes.
    if (m_spilled.take(i, output.m_buffer.data())) {
      flush(output);
    } else {
      ++lost;
    }
  }
  output.m_buffer.clear();
  if (lost > 0) {
    logError("ERROR: Cannot read back %zu of %zu blocks of samples from %s\n", lost,
             m_spilled.count(), m_spilled.path().c_str());
  }
}

}  // namespace pwr::bin
