// Keys, names and attribute columns that the tables of samples have in common.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "writers/textwriter_plugin/backing_store_wrapper.h"

namespace pwr {
class DataDescriptor;
class DataHandle;
class Quantity;
}  // namespace pwr

/// The descriptor's id; 0 without one.
std::uint64_t idOf(const pwr::DataDescriptor* descriptor);

/// Tells columns, and traced tables, apart by the ids of entity and descriptor, never by names. The
/// ids share 64 bits: what an entity's id has above its lower 32 is lost next to a descriptor's.
inline std::uint64_t cellKey(std::uint64_t entityId, std::uint64_t descriptorId) {
  return descriptorId == 0 ? entityId : (entityId << 32) + descriptorId;
}

/// " (units)"; empty without a quantity. A quantity without units gives empty brackets.
std::string bracketedUnits(const pwr::Quantity* quantity);

/// The descriptor's name and, when it has attributes, the value of the first in brackets.
std::string descriptorTitle(const pwr::DataDescriptor& descriptor);

/// The handle's name; empty for null.
std::string nameOrEmpty(const pwr::DataHandle* handle);

/// Columns by the lower 32 bits of the attributes' ids.
using AttributeColumns = std::unordered_map<std::uint32_t, std::uint16_t>;

/// Adds a column named after the attribute's field name unless its id has one. Nothing is added for
/// null.
void addAttributeColumn(BackingStoreWrapper& store, AttributeColumns& columns,
                        const pwr::DataHandle* attribute);

/// The attribute's column. An id without a column gets column 0, where the sample's number stands:
/// readers of these tables know attributes that came too late by that.
std::uint16_t attributeColumn(const AttributeColumns& columns, std::uint64_t attributeId);
