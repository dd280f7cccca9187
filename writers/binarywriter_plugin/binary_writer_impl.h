// The state of a binary writer, and how messages become records. Inside of the writer only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/data.h"
#include "host/metric.h"
#include "writers/binarywriter_plugin/binary_format.h"
#include "writers/binarywriter_plugin/binary_writer.h"
#include "writers/binarywriter_plugin/recent_index.h"
#include "writers/binarywriter_plugin/sample_store.h"

namespace pwr {
class AttributeValueManager;
class CPUMetadata;
class DataDescriptor;
class DataElement;
class EntityHandle;
class Logger;
struct SystemMetadata;
}  // namespace pwr

/// Gathers finished records by their type, and writes them type by type. Numbers of texts and
/// descriptors, and what was told already, outlive a flush: a series of files tells each name once.
class BinaryWriter::Impl {
 public:
  Impl(std::string base, bool isContinuous);

  /// Another collection may have other objects where those of the last one stood.
  void startCollection();
  int writeMessage(const pwr::SystemMessage& message);
  int writeMessage(const pwr::Metric& metric);
  bool flushContinuousResults(const pwr::SystemMetadata& flushMetadata);
  int fini();

 private:
  /// A record under construction: head and payload.
  using Record = std::vector<char>;

  /// What is the same for all elements of a message.
  struct Sampling {
    const pwr::Metric& metric;
    /// The values do not stand for a span of time.
    bool noDuration;
    /// The record of the metric is there.
    bool isMetricTold = false;
  };
  /// A value as it goes into the file.
  struct Value {
    /// Microseconds.
    std::uint64_t duration;
    double number;
  };

  /// Tells a metric that no writer of the process has told.
  void tellMetric(const pwr::Metric& metric);
  int writeElement(Sampling& sampling, const pwr::DataElement& element);

  /// Returns 0, or 1 with a warning for a sampled value whose handle says that it is a descriptor
  /// and is none, or is null. REQUIRES: `data` is a handle.
  static int checkHandle(const Sampling& sampling, const pwr::Data& data);
  /// What a sample says. REQUIRES: `checkHandle` gave 0 for a handle.
  Value valueOf(const Sampling& sampling, const pwr::DataElement& element,
                const pwr::Data& data) const;
  std::uint64_t durationOf(const Sampling& sampling, const pwr::DataElement& element) const;

  // Numbers of names. A name that is new gets its record.
  std::uint16_t getStringStoreIdx_i(const std::string& text);
  /// 0 for null.
  std::uint16_t getDescriptorIdx_i(const pwr::DataDescriptor* descriptor);
  std::uint16_t addDescriptor(const pwr::DataDescriptor* descriptor);
  /// The number of the name under which a sample is filed: that of a state or an entity.
  std::uint16_t getSampleNameIdx_i(const Sampling& sampling, const pwr::DataElement& element);
  std::uint16_t getStateIdx_i(const pwr::DataElement& element);
  std::uint16_t addEntity(const pwr::EntityHandle* entity);
  /// The state that the descriptor of an element stands for; empty without one. Only deltas are
  /// named after their states, so the states that traced values hold are of no interest here.
  static std::string getState_i(const pwr::DataElement* element);
  static std::string getTypeString_i(pwr::Metric::MetricType type);
  /// Returns 0, or 1 and leaves `out` alone when there is no attribute in the first place, or none
  /// that has a text.
  static int getFirstDataAttributeAsString_i(const pwr::AttributeValueManager* attributes,
                                             std::string& out);

  // Records of names. Each appends one record, behind those of the texts that it needs.
  void createStringStoreMeta_i(const std::string& text, std::uint16_t index);
  void createDescriptorMeta_i(const pwr::DataDescriptor* descriptor, std::uint16_t index);
  void createMetricMeta_i(const pwr::Metric& metric);
  /// Appends nothing when the processor is not known.
  void createSystemMeta_i(const pwr::SystemMetadata& system);
  void packMetricTexts(const pwr::Metric& metric);
  Record packColumns(const pwr::Metric& metric);
  void packProcessor(const pwr::CPUMetadata& processor);
  void packSystemTexts(const pwr::SystemMetadata& system, const pwr::CPUMetadata& processor);

  /// `flushMetadata` may be null. Returns false when there is no output handle.
  bool flushResults_i(const pwr::SystemMetadata* flushMetadata, bool continuousFlush);
  /// Moves all records to the handle: to its buffer, and when they are many, through it.
  void flushBuffers_i(pwr::Logger& output);

  std::string basePath;
  bool continuous;
  const pwr::SystemMetadata* metadata = nullptr;
  /// Microseconds per tick.
  double tickScale = 0;
  std::uint16_t stringCount = 0;
  /// A value of 0 is a text without a number.
  std::map<std::string, std::uint16_t> stringIndices;
  std::uint32_t descriptorCount = 0;
  std::map<const pwr::DataDescriptor*, std::uint16_t> descriptorIndices;
  Record stringMessage;
  /// Kept from metric to metric: one without a quantity repeats that of the one before.
  Record metricMessage;
  Record descriptorMessage;
  Record systemMessage;
  /// Of all types but samples, which are too many.
  std::map<pwr::bin::MsgType, std::vector<char>> buffers;
  pwr::bin::SampleStore m_samples;

  // The same numbers by what samples bring, for speed.
  pwr::bin::RecentIndex<const pwr::EntityHandle*> m_entityNames;
  pwr::bin::RecentIndex<const pwr::DataDescriptor*> m_descriptors;
  pwr::bin::RecentIndex<std::string> m_stateNames;
};
