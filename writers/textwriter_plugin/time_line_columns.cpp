#include "writers/textwriter_plugin/time_line_columns.h"

#include "host/data.h"
#include "host/handles.h"
#include "host/quantity.h"

std::uint64_t idOf(const pwr::DataDescriptor* descriptor) {
  return descriptor == nullptr ? 0 : descriptor->getId();
}

std::string bracketedUnits(const pwr::Quantity* quantity) {
  return quantity == nullptr ? std::string() : " (" + quantity->toUnitsString() + ")";
}

std::string descriptorTitle(const pwr::DataDescriptor& descriptor) {
  std::string title = descriptor.getName();
  if (descriptor.getAttributeCount() != 0) {
    std::string value;
    descriptor.begin()->second.toFormattedString(value);
    title += " (" + value + ")";
  }
  return title;
}

std::string nameOrEmpty(const pwr::DataHandle* handle) {
  return handle == nullptr ? std::string() : handle->getName();
}

void addAttributeColumn(BackingStoreWrapper& store, AttributeColumns& columns,
                        const pwr::DataHandle* attribute) {
  if (attribute == nullptr) {
    return;
  }
  const auto id = static_cast<std::uint32_t>(attribute->getId());
  if (!columns.contains(id)) {
    columns.emplace(id, store.addColumn(attribute->getFieldName()));
  }
}

std::uint16_t attributeColumn(const AttributeColumns& columns, std::uint64_t attributeId) {
  const auto found = columns.find(static_cast<std::uint32_t>(attributeId));
  return found == columns.end() ? std::uint16_t{0} : found->second;
}
