#include "host/metric.h"

#include <utility>

namespace pwr {

DataElement::DataElement(const EntityHandle* entity, const DataDescriptor* descriptor,
                         const DataDescriptor* keltoDescriptor, Data value, std::uint64_t duration,
                         const DynamicAttributeValueManager* additionalInfo)
    : m_entity(entity),
      m_descriptor(descriptor),
      m_keltoDescriptor(keltoDescriptor),
      m_value(std::move(value)),
      m_duration(duration),
      m_additionalInfo(additionalInfo) {}
DataElement::~DataElement() = default;

const EntityHandle* DataElement::getEntity() const { return m_entity; }
const DataDescriptor* DataElement::getDescriptor() const { return m_descriptor; }
const DataDescriptor* DataElement::getKeltoDescriptor() const { return m_keltoDescriptor; }
const Data* DataElement::getValue() const { return &m_value; }
std::uint64_t DataElement::getDuration() const { return m_duration; }
const DynamicAttributeValueManager* DataElement::getAdditionalInfo() const {
  return m_additionalInfo;
}

Metric::Metric() = default;
Metric::~Metric() = default;
std::uint8_t Metric::getMessageType() const { return kMetric; }
const SampleData& Metric::getData() const { return m_data; }
void Metric::setData(SampleData data) { m_data = std::move(data); }

}  // namespace pwr
