// The state of a binary writer, and how messages become records. Inside of the writer only.
#pragma once

#include <array>
#include <bitset>
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
    pwr::Metric::MetricType type;
    /// Elements bring values; otherwise their durations or just their being there count.
    bool isSampled;
    /// The values do not stand for a span of time.
    bool noDuration;
    /// What values are multiplied by.
    double scale;
  };

  Sampling samplingOf(const pwr::Metric& metric) const;
  /// Microseconds.
  inline std::uint64_t durationOf(const Sampling& sampling, const pwr::DataElement& element) const;
  /// Sets `value`, which is 0, to what the file tells of `data`. Returns 0, or 1 with a warning for
  /// a sampled value whose handle says that it is a descriptor and is none, or is null.
  static inline int readValue(const Sampling& sampling, const pwr::Data& data,
                              std::uint64_t duration, double& value);
  /// The same for all but reals.
  static int readRareValue(const Sampling& sampling, const pwr::Data& data, std::uint64_t duration,
                           double& value);
  /// Tells a metric that no writer of the process has told.
  void tellMetric(const pwr::Metric& metric);

  // Numbers of names. A name that is new gets its record.
  std::uint16_t getStringStoreIdx_i(const std::string& text);
  /// 0 for null.
  std::uint16_t getDescriptorIdx_i(const pwr::DataDescriptor* descriptor) {
    if (descriptor == nullptr) {
      return 0;
    }
    const std::uint16_t recent = m_descriptors.find(descriptor);
    return recent != 0 ? recent : addDescriptor(descriptor);
  }
  std::uint16_t addDescriptor(const pwr::DataDescriptor* descriptor);
  inline std::uint16_t getEntityIdx_i(const pwr::EntityHandle* entity);
  std::uint16_t addEntity(const pwr::EntityHandle* entity);
  inline std::uint16_t getStateIdx_i(const pwr::DataDescriptor* descriptor,
                                     std::uint16_t descriptorIndex);
  inline std::uint16_t readStateIdx(const pwr::DataDescriptor* descriptor);
  /// Of the state in `m_state`.
  std::uint16_t addState();
  /// Sets `out` to the state that the descriptor of an element stands for; empty for null. Only
  /// deltas are named after their states, so the states that traced values hold are of no interest
  /// here.
  static inline void getState_i(const pwr::DataDescriptor* descriptor, std::string& out);
  static std::string getTypeString_i(pwr::Metric::MetricType type);
  /// Returns 0, or 1 and leaves `out` alone when there is no attribute in the first place, or none
  /// that has a text.
  static int getFirstDataAttributeAsString_i(const pwr::AttributeValueManager* attributes,
                                             std::string& out);

  // Records of names. Each appends one record, behind those of the texts that it needs.
  void createStringStoreMeta_i(const std::string& text, std::uint16_t index);
  void createDescriptorMeta_i(const pwr::DataDescriptor* descriptor, std::uint16_t index);
  /// Only makes the record.
  Record createMetricMeta_i(const pwr::Metric& metric);
  /// Appends nothing when the processor is not known.
  void createSystemMeta_i(const pwr::SystemMetadata& system);
  void packMetricTexts(const pwr::Metric& metric, Record& record);
  void packColumns(const pwr::Metric& metric, Record& record);
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
  /// The ids of metrics that were told, with a 1 each.
  pwr::bin::RecentIndex<std::uint32_t> m_toldMetrics;
  /// The state that was read last. Kept for its memory.
  std::string m_state;

  /// States of this message, at the remainders of their descriptors' numbers. The attributes that
  /// states come from may change, so they are read anew for each message; but within one, each of
  /// many entities brings the same states.
  struct RecentState {
    const pwr::DataDescriptor* descriptor = nullptr;
    std::uint16_t index = 0;
  };
  static constexpr std::size_t kRecentStates = 64;
  std::array<RecentState, kRecentStates> m_recentStates;
  /// Which of them are of this message.
  std::bitset<kRecentStates> m_statesRead;
};
