#include "host/attributes.h"

namespace pwr {

AttributeValueManager::AttributeValueManager() = default;
AttributeValueManager::AttributeValueManager(const AttributeValueManager& other) = default;
AttributeValueManager::~AttributeValueManager() = default;

void AttributeValueManager::addAttributeValue(const Attribute* attribute, const Data& value) {
  m_order.emplace_back(attribute, value);
  m_values.insert_or_assign(attribute, value);
}

AttributeValueManager::const_iterator AttributeValueManager::begin() const {
  return m_order.begin();
}
AttributeValueManager::const_iterator AttributeValueManager::end() const { return m_order.end(); }
std::size_t AttributeValueManager::getAttributeCount() const { return m_order.size(); }

void AttributeValueManager::setAttributeValues(const std::vector<Entry>& entries) {
  m_values.clear();
  m_order.clear();
  for (const auto& [attribute, value] : entries) {
    addAttributeValue(attribute, value);
  }
}

DynamicAttributeValueManager::DynamicAttributeValueManager() = default;
DynamicAttributeValueManager::DynamicAttributeValueManager(Map values)
    : m_values(std::move(values)) {}
DynamicAttributeValueManager::~DynamicAttributeValueManager() = default;

DynamicAttributeValueManager::const_iterator DynamicAttributeValueManager::begin() const {
  return m_values.begin();
}
DynamicAttributeValueManager::const_iterator DynamicAttributeValueManager::end() const {
  return m_values.end();
}

ExpectedAttributeManager::ExpectedAttributeManager() = default;
ExpectedAttributeManager::ExpectedAttributeManager(std::vector<const Attribute*> attributes)
    : m_attributes(std::move(attributes)) {}
ExpectedAttributeManager::~ExpectedAttributeManager() = default;

ExpectedAttributeManager::const_iterator ExpectedAttributeManager::begin() const {
  return m_attributes.data();
}
ExpectedAttributeManager::const_iterator ExpectedAttributeManager::end() const {
  return m_attributes.data() + m_attributes.size();
}
std::size_t ExpectedAttributeManager::getAttributeCount() const { return m_attributes.size(); }

}  // namespace pwr
