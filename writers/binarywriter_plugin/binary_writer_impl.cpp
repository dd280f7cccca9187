#include "writers/binarywriter_plugin/binary_writer_impl.h"

#include <array>
#include <utility>

#include "host/environment.h"
#include "host/handles.h"
#include "host/logger.h"
#include "host/messages.h"
#include "host/pwset.h"
#include "host/services.h"
#include "host/system_metadata.h"
#include "writers/binarywriter_plugin/records.h"
#include "writers/sample_reading.h"

namespace {

using pwr::bin::MsgType;

/// Longer names of files are cut.
constexpr std::size_t kFileNameSize = 1024;

/// The ids of the metrics that were told, by whichever writer of the process. A metric is told once
/// in the life of a process, so a second collection does not tell it again.
pwr::PWSet<std::uint32_t>& metricsWithMetadataSent() {
  static pwr::PWSet<std::uint32_t> s_metrics;
  return s_metrics;
}

/// The name of the next file: series of one process share their numbers.
std::string seriesFileName(const std::string& base) {
  static int num = 0;
  std::array<char, kFileNameSize> name{};
  pw_snprintf(name.data(), name.size(), "%s_%d.qmbin", base.c_str(), num);
  ++num;
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

int BinaryWriter::Impl::writeMessage(const pwr::Metric& metric) {
  const pwr::SampleData& data = metric.getData();
  Sampling sampling{metric, hasNoDuration(metric)};
  m_samples.startMessage(data.timestamp, metric.metricId);
  for (const pwr::DataElement* element : data.elements) {
    if (writeElement(sampling, *element) != 0) {
      return 1;
    }
  }
  return 0;
}

int BinaryWriter::Impl::writeElement(Sampling& sampling, const pwr::DataElement& element) {
  // Numbers are given in the order of first use: descriptor, metric, name of the sample.
  const std::uint16_t descriptor = getDescriptorIdx_i(element.getDescriptor());
  const pwr::Data& data = *element.getValue();
  if (data.m_tag == pwr::Data::kHandle && checkHandle(sampling, data) != 0) {
    return 1;
  }
  if (!sampling.isMetricTold) {
    sampling.isMetricTold = true;
    tellMetric(sampling.metric);
  }
  const Value value = valueOf(sampling, element, data);
  const std::uint16_t name = getSampleNameIdx_i(sampling, element);
  m_samples.append(static_cast<float>(value.duration), name, descriptor,
                   static_cast<float>(value.number));
  return 0;
}

void BinaryWriter::Impl::tellMetric(const pwr::Metric& metric) {
  if (metricsWithMetadataSent().add(metric.metricId)) {
    createMetricMeta_i(metric);
  }
}

bool BinaryWriter::Impl::flushContinuousResults(const pwr::SystemMetadata& flushMetadata) {
  return flushResults_i(&flushMetadata, true);
}

int BinaryWriter::Impl::fini() {
  if (!continuous) {
    flushResults_i(metadata, false);
    return 0;
  }
  pwr::Logger* output =
      g_pluginEnvironment == nullptr ? nullptr : g_pluginEnvironment->getFileOutputHandle("");
  return output == nullptr ? 0 : output->finish();
}

bool BinaryWriter::Impl::flushResults_i(const pwr::SystemMetadata* flushMetadata,
                                        bool continuousFlush) {
  if (g_pluginEnvironment == nullptr) {
    return false;
  }
  const std::string name = continuousFlush ? seriesFileName(basePath) : fileName(basePath);
  pwr::Logger* output = g_pluginEnvironment->getFileOutputHandle(name.c_str());
  if (output == nullptr) {
    return false;
  }
  if (flushMetadata != nullptr) {
    createSystemMeta_i(*flushMetadata);
  }
  flushBuffers_i(*output);
  output->flush();
  output->m_buffer = {};
  output->m_pendingBytes = 0;
  output->close();
  return true;
}

void BinaryWriter::Impl::flushBuffers_i(pwr::Logger& output) {
  for (auto& [type, records] : buffers) {
    pwr::bin::appendBytes(output.m_buffer, records);
    records = {};
  }
  m_samples.moveTo(output);
}
