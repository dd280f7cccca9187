// The records that describe a metric and the measured system.
#include "host/handles.h"
#include "host/metric.h"
#include "host/platform_metadata.h"
#include "host/quantity.h"
#include "host/system_metadata.h"
#include "writers/binarywriter_plugin/binary_writer_impl.h"
#include "writers/binarywriter_plugin/records.h"
#include "writers/sample_reading.h"
#include "writers/system_lookup.h"

using namespace pwr::bin;

std::string BinaryWriter::Impl::getTypeString_i(pwr::Metric::MetricType type) {
  // Only the low byte counts: 0x102 reads as a sampled value here, and nowhere else.
  return metricTypeName(
      static_cast<pwr::Metric::MetricType>(static_cast<std::uint64_t>(type) & 0xFFU));
}

BinaryWriter::Impl::Record BinaryWriter::Impl::createMetricMeta_i(const pwr::Metric& metric) {
  Record record = metricMessage;
  packMetricTexts(metric, record);
  packColumns(metric, record);
  setField(record, kEntityCount, static_cast<std::uint16_t>(metric.entities.size()));
  setField(record, kMetadataCount, static_cast<std::uint16_t>(metric.metadataValues.size()));
  setLength(record, record.size() - kHeadSize);
  return record;
}

void BinaryWriter::Impl::packMetricTexts(const pwr::Metric& metric, Record& record) {
  setField(record, kMetricId, metric.metricId);
  setField(record, kGroupName, getStringStoreIdx_i(metric.groupName));
  setField(record, kMetricName, getStringStoreIdx_i(metric.name));
  setField(record, kTypeName, getStringStoreIdx_i(getTypeString_i(metric.metricType)));
  if (metric.quantity == nullptr) {
    // What the last quantity left stays there, its flag too: the format's readers know.
    return;
  }
  setField(record, kQuantityName, getStringStoreIdx_i(metric.quantity->toQuantityString()));
  setField(record, kUnits, getStringStoreIdx_i(metric.quantity->toUnitsString()));
  setField(record, kHasQuantity, std::uint16_t{1});
}

void BinaryWriter::Impl::packColumns(const pwr::Metric& metric, Record& record) {
  for (const auto& [entity, descriptor] : metric.entities) {
    const std::uint16_t name =
        entity == nullptr ? std::uint16_t{0} : getStringStoreIdx_i(entity->getName());
    const std::uint32_t descriptorIndex = getDescriptorIdx_i(descriptor);
    appendField(record, descriptorIndex << 16U | name);
  }
  for (const pwr::Data& item : metric.metadataValues) {
    std::string text;
    item.toFormattedString(text);
    appendField(record, getStringStoreIdx_i(text));
  }
}

void BinaryWriter::Impl::createSystemMeta_i(const pwr::SystemMetadata& system) {
  setField(systemMessage, kFirstTimestamp, system.m_firstTimestamp);
  setField(systemMessage, kLastTimestamp, system.m_lastTimestamp);
  setField(systemMessage, kDuration, static_cast<float>(system.getCollectionDurationSec()));
  const pwr::CPUMetadata* processor = processorOf(&system);
  if (processor == nullptr) {
    return;
  }
  packProcessor(*processor);
  packSystemTexts(system, *processor);
  // Not behind what a flush that failed has left.
  buffers[MsgType::System] = systemMessage;
}

void BinaryWriter::Impl::packProcessor(const pwr::CPUMetadata& processor) {
  const pwr::CPUWords& words = processor.m_cpuWords;
  setField(systemMessage, kHighFrequency, words.highFrequencyMHz);
  setField(systemMessage, kLowFrequency, words.lowFrequencyMHz);
  setField(systemMessage, kCpuFrequency, words.cpuFrequencyMHz);
  setField(systemMessage, kBusFrequency, words.busFrequencyMHz);
  setField(systemMessage, kPlatformId, words.platformId);
  const pwr::TopTree& topology = processor.m_topology;
  setField(systemMessage, kPackageCount, static_cast<std::uint16_t>(topology.getNumPackages()));
  setField(systemMessage, kModuleCount, static_cast<std::uint16_t>(topology.getNumModules()));
  setField(systemMessage, kCoreCount, static_cast<std::uint16_t>(topology.getNumCores()));
  setField(systemMessage, kThreadCount, static_cast<std::uint16_t>(topology.getNumThreads()));
}

void BinaryWriter::Impl::packSystemTexts(const pwr::SystemMetadata& system,
                                         const pwr::CPUMetadata& processor) {
  setField(systemMessage, kPlatformName, getStringStoreIdx_i(system.m_platformName));
  setField(systemMessage, kCpuCodeName, getStringStoreIdx_i(system.getFormattedCPUCodeName()));
  setField(systemMessage, kNativeModelName,
           getStringStoreIdx_i(system.getCPUNativeModelName(processor.m_model)));
  setField(systemMessage, kPchNames,
           getStringStoreIdx_i(system.getFormattedPCHDeviceNamesStr(system.m_platformName)));
  setField(systemMessage, kHostName, getStringStoreIdx_i(system.m_hostName));
  // The name of the system before its type: numbers are given in this order.
  const std::uint16_t osName = getStringStoreIdx_i(system.m_osName);
  setField(systemMessage, kOsNameAgain, osName);
  setField(systemMessage, kOsType, getStringStoreIdx_i(system.m_osType));
  setField(systemMessage, kOsName, osName);
}
