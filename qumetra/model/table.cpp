#include "host/table.h"

#include <functional>

#include "host/handles.h"
#include "host/quantity.h"

namespace pwr {

TableMessage::TableMessage() = default;
TableMessage::~TableMessage() = default;
std::uint8_t TableMessage::getMessageType() const { return kTable; }

int TableMessage::mustBeSkipped() const { return m_skipped ? 1 : 0; }
void TableMessage::hostSlot1() const {}
void TableMessage::hostSlot2() const {}
void TableMessage::hostSlot3() const {}
void TableMessage::hostSlot4() const {}

TableMessage::HandleIterator TableMessage::sharedHandlesBegin() const {
  return m_sharedHandles.data();
}
TableMessage::HandleIterator TableMessage::sharedHandlesEnd() const {
  return m_sharedHandles.data() + m_sharedHandles.size();
}
TableMessage::HandleIterator TableMessage::fieldHandlesBegin() const {
  return m_fieldHandles.data();
}
TableMessage::HandleIterator TableMessage::fieldHandlesEnd() const {
  return m_fieldHandles.data() + m_fieldHandles.size();
}
TableMessage::EntityMap::const_iterator TableMessage::entitiesBegin() const {
  return m_entities.begin();
}
TableMessage::EntityMap::const_iterator TableMessage::entitiesEnd() const {
  return m_entities.end();
}

std::string TableMessage::getTitle() const { return m_title; }
const Quantity* TableMessage::getQuantity() const { return m_quantity; }
const TextNotes* TableMessage::getTextNotes() const { return m_notes; }
std::uint8_t TableMessage::getTableMessageType() const { return m_type; }
std::uint32_t TableMessage::getEntityCount() const {
  return static_cast<std::uint32_t>(m_entities.size());
}
std::uint32_t TableMessage::getHandleCount() const {
  return static_cast<std::uint32_t>(m_fieldHandles.size());
}
std::uint32_t TableMessage::getSharedHandleCount() const {
  return static_cast<std::uint32_t>(m_sharedHandles.size());
}
std::uint32_t TableMessage::getFieldCount() const {
  const std::size_t columnsPerField = m_entities.empty() ? 1 : m_entities.size();
  return static_cast<std::uint32_t>(m_sharedHandles.size() +
                                    m_fieldHandles.size() * columnsPerField);
}
bool TableMessage::hasFieldHeaders() const { return m_hasFieldHeaders; }

int TableMessage::getFieldAsString(const DataHandle* handle, std::string& out,
                                   bool& present) const {
  return getFieldAsString(nullptr, handle, out, present);
}

int TableMessage::getFieldAsString(const EntityHandle* entity, const DataHandle* handle,
                                   std::string& out, bool& present) const {
  const auto found = m_cells.find({entity, handle});
  if (found == m_cells.end()) {
    return 1;
  }
  const Cell& cell = found->second;
  switch (cell.state) {
    case Cell::State::Present:
      out = cell.text;
      present = true;
      return 0;
    case Cell::State::Absent:
      present = false;
      return 0;
    case Cell::State::Failed:
      out = cell.text;
      return 1;
    case Cell::State::Unwritten:
      break;
  }
  return 1;
}

bool TableMessage::quantityToUnits(const Quantity* quantity, std::string& out,
                                   const std::string& prefix, const std::string& suffix) {
  if (quantity == nullptr) {
    return false;
  }
  const std::string units = quantity->toUnitsString();
  if (units.empty()) {
    return false;
  }
  out = prefix + units + suffix;
  return true;
}

void TableMessage::setTitle(std::string title) { m_title = std::move(title); }
void TableMessage::setQuantity(const Quantity* quantity) { m_quantity = quantity; }
void TableMessage::setTextNotes(const TextNotes* notes) { m_notes = notes; }
void TableMessage::setTableMessageType(std::uint8_t type) { m_type = type; }
void TableMessage::setSkipped(bool skipped) { m_skipped = skipped; }
void TableMessage::setHasFieldHeaders(bool hasFieldHeaders) { m_hasFieldHeaders = hasFieldHeaders; }
void TableMessage::addSharedHandle(const DataHandle* handle) { m_sharedHandles.push_back(handle); }
void TableMessage::addFieldHandle(const DataHandle* handle) { m_fieldHandles.push_back(handle); }

void TableMessage::addEntity(const EntityHandle* entity) {
  if (entity != nullptr) {
    m_entities.emplace(entity->getId(), entity);
  }
}

void TableMessage::setCell(const EntityHandle* entity, const DataHandle* handle, Cell cell) {
  m_cells.insert_or_assign({entity, handle}, std::move(cell));
}

std::size_t TableMessage::CellKeyHash::operator()(const CellKey& key) const {
  // Objects are aligned, so the low bits say nothing; an odd factor spreads the rest.
  constexpr std::size_t kSpread = 0x9E3779B97F4A7C15U;
  const std::size_t entity = std::hash<const EntityHandle*>{}(key.first);
  const std::size_t handle = std::hash<const DataHandle*>{}(key.second);
  return (entity * kSpread + handle) * kSpread;
}

}  // namespace pwr
