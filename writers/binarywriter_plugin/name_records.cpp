// Numbers of texts, descriptors and states, and the records that tell them.
#include <algorithm>

#include "host/attributes.h"
#include "host/handles.h"
#include "host/metric.h"
#include "writers/binarywriter_plugin/binary_writer_impl.h"
#include "writers/binarywriter_plugin/records.h"
#include "writers/sample_reading.h"

using pwr::bin::MsgType;
using pwr::bin::setField;

std::uint16_t BinaryWriter::Impl::getStringStoreIdx_i(const std::string& text) {
  std::uint16_t& index = stringIndices[text];
  if (index == 0) {
    // Numbers have 16 bits: after 65535 they begin anew, and the number 0 is as good as none.
    const auto next = static_cast<std::uint16_t>(stringCount + 1);
    createStringStoreMeta_i(text, next);
    stringCount = index = next;
  }
  return index;
}

void BinaryWriter::Impl::createStringStoreMeta_i(const std::string& text, std::uint16_t index) {
  setField(stringMessage, pwr::bin::kStringIndex, index);
  setField(stringMessage, pwr::bin::kStringLength, static_cast<std::uint16_t>(text.size()));
  pwr::bin::setLength(stringMessage, pwr::bin::kStringFixedSize + text.size());
  char* const at = pwr::bin::grow(buffers[MsgType::String], stringMessage.size() + text.size());
  std::copy(text.begin(), text.end(), std::copy(stringMessage.begin(), stringMessage.end(), at));
}

std::uint16_t BinaryWriter::Impl::addDescriptor(const pwr::DataDescriptor* descriptor) {
  std::uint16_t& index = descriptorIndices[descriptor];
  if (index == 0) {
    const auto next = static_cast<std::uint16_t>(descriptorCount + 1);
    createDescriptorMeta_i(descriptor, next);
    ++descriptorCount;
    index = next;
  }
  m_descriptors.add(descriptor, index);
  return index;
}

void BinaryWriter::Impl::createDescriptorMeta_i(const pwr::DataDescriptor* descriptor,
                                                std::uint16_t index) {
  std::string attribute;
  getFirstDataAttributeAsString_i(descriptor, attribute);
  setField(descriptorMessage, pwr::bin::kDescriptorIndex, index);
  setField(descriptorMessage, pwr::bin::kDescriptorAttribute, getStringStoreIdx_i(attribute));
  setField(descriptorMessage, pwr::bin::kDescriptorName,
           getStringStoreIdx_i(descriptor->getName()));
  pwr::bin::appendBytes(buffers[MsgType::Descriptor], descriptorMessage);
}

std::uint16_t BinaryWriter::Impl::addEntity(const pwr::EntityHandle* entity) {
  const std::uint16_t index = getStringStoreIdx_i(entity->getName());
  m_entityNames.add(entity, index);
  return index;
}

std::uint16_t BinaryWriter::Impl::addState() {
  const std::uint16_t index = getStringStoreIdx_i(m_state);
  m_stateNames.add(m_state, index);
  return index;
}

int BinaryWriter::Impl::getFirstDataAttributeAsString_i(
    const pwr::AttributeValueManager* attributes, std::string& out) {
  return namedFirstAttributeText(*attributes, out);
}
