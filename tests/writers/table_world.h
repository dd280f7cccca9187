// Handles, entities and tables for the tests of what reads tables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/handles.h"
#include "host/quantity.h"
#include "host/table.h"
#include "qumetra/model/model.h"

namespace qumetra::test {

using Cell = pwr::TableMessage::Cell;

inline Cell present(std::string text) { return {Cell::State::Present, std::move(text)}; }
inline Cell absent() { return {Cell::State::Absent, {}}; }
inline Cell failed(std::string text) { return {Cell::State::Failed, std::move(text)}; }
inline Cell unwritten() { return {Cell::State::Unwritten, {}}; }

/// Makes the named objects of a test. They live as long as this does.
class TableWorld {
 public:
  const pwr::DataHandle* column(const std::string& name) {
    return &m_model.addColumnHandle({.name = name}, pwr::DataHandle::kOtherType);
  }

  /// The field name is empty unless given, and an empty text is part of every text.
  const pwr::EntityHandle* entity(const std::string& name, const std::string& fieldName = "") {
    return &m_model.addEntity({.name = name, .fieldName = fieldName});
  }

  const pwr::Attribute* attribute(const std::string& name, const pwr::Quantity* quantity,
                                  const std::string& fieldName = "") {
    return &m_model.addAttribute({.name = name, .fieldName = fieldName}, pwr::AttributeType::Data,
                                 quantity);
  }

  const pwr::Quantity* quantity(std::uint32_t code, const std::string& units) {
    return &m_model.addQuantity({.code = code, .name = "quantity", .units = units});
  }

 private:
  Model m_model;
};

inline pwr::TableMessage makeTable(std::uint8_t type, const std::string& title) {
  pwr::TableMessage table;
  table.setTableMessageType(type);
  table.setTitle(title);
  return table;
}

/// Adds the shared columns `handles`; column i gets the i-th of `texts`, if there are any.
inline void addShared(pwr::TableMessage& table, const std::vector<const pwr::DataHandle*>& handles,
                      const std::vector<std::string>& texts = {}) {
  for (std::size_t i = 0; i < handles.size(); ++i) {
    table.addSharedHandle(handles[i]);
    if (i < texts.size()) {
      table.setCell(nullptr, handles[i], present(texts[i]));
    }
  }
}

}  // namespace qumetra::test
