#include "writers/binarywriter_plugin/binary_writer_impl.h"

#include <array>
#include <utility>

#include "host/logger.h"
#include "host/messages.h"
#include "host/services.h"
#include "host/system_metadata.h"
#include "writers/binarywriter_plugin/records.h"
#include "writers/output_handle.h"

namespace {

using pwr::bin::MsgType;

/// Longer names of files are cut.
constexpr std::size_t kFileNameSize = 1024;

/// The number of the next file: series of one process share their numbers.
int& seriesNumber() {
  static int num = 0;
  return num;
}

std::string seriesFileName(const std::string& base) {
  std::array<char, kFileNameSize> name{};
  pw_snprintf(name.data(), name.size(), "%s_%d.qmbin", base.c_str(), seriesNumber());
  return name.data();
}

std::string fileName(const std::string& base) {
  std::array<char, kFileNameSize> name{};
  pw_snprintf(name.data(), name.size(), "%s.qmbin", base.c_str());
  return name.data();
}

}  // namespace

BinaryWriter::Impl::Impl(std::string base, bool isContinuous)
    : basePath(std::move(base)),
      continuous(isContinuous),
      stringMessage(pwr::bin::makeRecord(MsgType::String, pwr::bin::kStringFixedSize)),
      metricMessage(pwr::bin::makeRecord(MsgType::Metric, pwr::bin::kMetricFixedSize)),
      descriptorMessage(pwr::bin::makeRecord(MsgType::Descriptor, pwr::bin::kDescriptorSize)),
      systemMessage(pwr::bin::makeRecord(MsgType::System, pwr::bin::kSystemSize)) {}

void BinaryWriter::Impl::startCollection() {
  m_entityNames.clear();
  m_descriptors.clear();
}

int BinaryWriter::Impl::writeMessage(const pwr::SystemMessage& message) {
  if (message.m_metadata == nullptr) {
    return 1;
  }
  metadata = message.m_metadata;
  // Divided in single precision, and widened only then: durations follow from it bit by bit.
  tickScale = static_cast<double>(1.0F / metadata->m_timestampFrequency);
  return 0;
}

bool BinaryWriter::Impl::flushContinuousResults(const pwr::SystemMetadata& flushMetadata) {
  return flushResults_i(&flushMetadata, true);
}

int BinaryWriter::Impl::fini() {
  if (!continuous) {
    flushResults_i(metadata, false);
    return 0;
  }
  pwr::Logger* const output = outputHandle("");
  return output == nullptr ? 0 : output->finish();
}

bool BinaryWriter::Impl::flushResults_i(const pwr::SystemMetadata* flushMetadata,
                                        bool continuousFlush) {
  const std::string name = continuousFlush ? seriesFileName(basePath) : fileName(basePath);
  pwr::Logger* const output = outputHandle(name.c_str());
  if (output == nullptr) {
    return false;
  }
  if (flushMetadata != nullptr) {
    createSystemMeta_i(*flushMetadata);
  }
  flushBuffers_i(*output);
  output->flush();
  pwr::bin::freeMemory(output->m_buffer);
  output->m_pendingBytes = 0;
  output->close();
  // A flush that failed midway goes on in the same file when it is tried again.
  seriesNumber() += continuousFlush ? 1 : 0;
  return true;
}

void BinaryWriter::Impl::flushBuffers_i(pwr::Logger& output) {
  std::size_t size = output.m_buffer.size();
  for (const auto& [type, records] : buffers) {
    size += records.size();
  }
  m_samples.prepareToMove(output, size);
  for (auto& [type, records] : buffers) {
    pwr::bin::appendBytes(output.m_buffer, records);
    pwr::bin::freeMemory(records);
  }
  m_samples.moveTo(output);
}
