// One sample of one metric: the message that carries measured values.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/data.h"
#include "host/messages.h"
#include "host/table_class.h"

namespace pwr {

class DataDescriptor;
class DataHandle;
class DynamicAttributeValueManager;
class EntityHandle;
class Quantity;

/// One value of a sample. Lives as long as the sample that holds it; what it points at lives for
/// the whole run, the additional information excepted, which lives as long as the element.
class DataElement {
 public:
  /// All pointers are borrowed. `entity` is never null; the others may be. `duration` is in ticks.
  DataElement(const EntityHandle* entity, const DataDescriptor* descriptor,
              const DataDescriptor* keltoDescriptor, Data value, std::uint64_t duration,
              const DynamicAttributeValueManager* additionalInfo);
  ~DataElement();

  const EntityHandle* getEntity() const;
  /// The state or kind that the value is for, or null.
  const DataDescriptor* getDescriptor() const;
  /// The descriptor to use in the import stream, or null.
  const DataDescriptor* getKeltoDescriptor() const;
  const Data* getValue() const;
  /// Ticks that the value covers.
  std::uint64_t getDuration() const;
  /// What this one value brings beside its attributes, or null.
  const DynamicAttributeValueManager* getAdditionalInfo() const;

 private:
  const EntityHandle* m_entity;
  const DataDescriptor* m_descriptor;
  const DataDescriptor* m_keltoDescriptor;
  Data m_value;
  std::uint64_t m_duration;
  const DynamicAttributeValueManager* m_additionalInfo;
};

/// The values that were taken together.
struct SampleData {
  /// Ticks of the collection's clock.
  std::uint64_t timestamp = 0;
  /// Borrowed.
  std::vector<const DataElement*> elements;
};

/// One sample of one metric, with all that is known of the metric. Several metrics may carry one
/// `metricId`, and the description may change from sample to sample: a reader that keeps a text
/// made from it keeps what the text was made from too.
class Metric : public WriterMessage {
 public:
  /// How values come about. Readers treat other numbers like `SAMPLED_VALUE` or as unknown.
  enum MetricType : std::uint64_t {
    SAMPLED_DELTA = 0,
    SAMPLED_RESIDENCY = 1,
    SAMPLED_VALUE = 2,
    TRACED_VALUE_TRANSITION = 3,
    TRACED_EVENT = 4,
  };
  /// A column: an entity and, where not null, one of its states.
  using Column = std::pair<const EntityHandle*, const DataDescriptor*>;

  Metric();
  ~Metric() override;
  std::uint8_t getMessageType() const override;

  /// The sample's values. Valid during the call that delivers the message.
  const SampleData& getData() const;
  /// Host side: replaces the values. The elements stay the caller's.
  void setData(SampleData data);

  std::string name;
  const Quantity* quantity = nullptr;
  std::uint32_t metricId = 0;
  /// The columns known in advance; samples may bring more. The entity of a pair may be null too.
  std::vector<Column> entities;
  std::vector<Data> states;
  std::string featureName;
  /// Empty for a metric without a group of its own.
  std::string groupName;
  std::vector<const EntityHandle*> entityList;
  std::vector<Data> metadataValues;
  /// Names the value column; may know the expected attributes (see `ColumnHandle`). May be null.
  const DataHandle* valueHandle = nullptr;
  const DataHandle* descriptorTitleHandle = nullptr;
  const DataHandle* entityTitleHandle = nullptr;
  /// The attributes of entities get columns of their own.
  bool writeEntityAttributes = false;
  TableClass tableClass = TableClass::Summary;
  MetricType metricType = SAMPLED_DELTA;

 private:
  SampleData m_data;
};

}  // namespace pwr
