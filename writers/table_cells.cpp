// The operations of WriterPlugin that read a table as one flat list of columns.
#include "writers/table_cells.h"

#include <string>

#include "host/quantity.h"
#include "writers/writer_plugins.h"

namespace {

constexpr const char* kUnreadable = "Invalid";

/// The text of a cell that has no entity.
std::string singleCellText(const pwr::TableMessage& table, const pwr::DataHandle* handle) {
  std::string text = kUnreadable;
  if (handle == nullptr) {
    return text;
  }
  bool present = false;
  if (table.getFieldAsString(handle, text, present) == 0 && !present) {
    text.clear();
  }
  return text;  // A failed read may have left a text of its own, and then that is shown.
}

/// The units behind the name of an attribute that has some; empty for every other entity.
std::string unitsOf(const pwr::EntityHandle& entity) {
  if (entity.getHandleType() != pwr::DataHandle::kAttributeType) {
    return {};
  }
  const auto* attribute = dynamic_cast<const pwr::Attribute*>(&entity);
  if (attribute == nullptr || attribute->m_quantity == nullptr ||
      attribute->m_quantity->toQuantity() == pwr::Quantity::kNoQuantity) {
    return {};
  }
  return attribute->m_quantity->toUnitsString();
}

}  // namespace

void WriterPlugin::getColumnTitles(const pwr::TableMessage& table,
                                   std::deque<std::string>& titles) const {
  pwr::forEachColumn(
      table,
      [&](const pwr::DataHandle* handle) { titles.push_back(pwr::singleColumnTitle(handle)); },
      [&](const pwr::EntityHandle* entity, const pwr::DataHandle* field) {
        titles.push_back(getFieldNameFromHandle(table, entity, field));
      });
}

void WriterPlugin::getRowValues(const pwr::TableMessage& table,
                                std::deque<std::string>& values) const {
  pwr::forEachColumn(
      table,
      [&](const pwr::DataHandle* handle) { values.push_back(singleCellText(table, handle)); },
      [&](const pwr::EntityHandle* entity, const pwr::DataHandle* field) {
        values.push_back(getFieldValueFromHandle(table, entity, field));
      });
}

std::string WriterPlugin::getFieldNameFromHandle(const pwr::TableMessage& table,
                                                 const pwr::EntityHandle* entity,
                                                 const pwr::DataHandle* field) const {
  if (entity == nullptr) {
    return pwr::singleColumnTitle(field);
  }
  // One field per entity: the entity tells the columns apart. Several: the field names the column,
  // although the columns of two entities then have equal titles.
  const std::string title =
      table.getHandleCount() == 1 ? entity->getName() : pwr::singleColumnTitle(field);
  return title + unitsOf(*entity);
}

std::string WriterPlugin::getFieldValueFromHandle(const pwr::TableMessage& table,
                                                  const pwr::EntityHandle* entity,
                                                  const pwr::DataHandle* field) const {
  std::string text = kUnreadable;
  bool present = false;
  const bool isRead =
      entity != nullptr && table.getFieldAsString(entity, field, text, present) == 0;
  if (!isRead) {
    // The field may have a cell that is the same for all entities.
    if (field == nullptr || table.getFieldAsString(field, text, present) != 0) {
      return text;
    }
  }
  return present ? text : std::string();
}
