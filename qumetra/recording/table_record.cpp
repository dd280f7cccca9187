#include "qumetra/recording/table_record.h"

#include <set>
#include <vector>

#include "qumetra/recording/record_values.h"

namespace qumetra {
namespace {

using Cell = pwr::TableMessage::Cell;

/// The columns and entities of a table in the order in which the record gives them.
struct Shape {
  std::vector<const pwr::DataHandle*> shared;
  std::vector<const pwr::DataHandle*> fields;
  std::vector<const pwr::EntityHandle*> entities;
};

Shape readShape(RecordObject& record, const Definitions& definitions) {
  Shape shape;
  record.forEach("shared",
                 [&](RecordValue ref) { shape.shared.push_back(definitions.handleOrNull(ref)); });
  record.forEach("fields",
                 [&](RecordValue ref) { shape.fields.push_back(definitions.handleOrNull(ref)); });
  std::set<const pwr::EntityHandle*> seen;
  record.forEach("entities", [&](RecordValue ref) {
    shape.entities.push_back(&definitions.entity(ref));
    if (!seen.insert(shape.entities.back()).second) {
      ref.fail("an entity given twice", "it once");
    }
  });
  return shape;
}

void applyShape(const Shape& shape, pwr::TableMessage& table) {
  for (const auto* handle : shape.shared) {
    table.addSharedHandle(handle);
  }
  for (const auto* handle : shape.fields) {
    table.addFieldHandle(handle);
  }
  for (const auto* entity : shape.entities) {
    table.addEntity(entity);
  }
}

Cell readCell(RecordValue value) {
  if (value.isNull()) {
    return {Cell::State::Absent, ""};
  }
  if (value.isString()) {
    return {Cell::State::Present, std::string(value.string())};
  }
  if (!value.isObject()) {
    value.failType("a string, null or {\"error\":\"text\"}");
  }
  RecordObject failure(value);
  const std::string text(failure.require("error").string());
  failure.finish();
  return {Cell::State::Failed, text};
}

/// Calls `set` with the position and content of each cell of a list, which is empty or has `size`
/// cells.
template <typename Set>
void readCells(RecordValue value, std::size_t size, Set set) {
  if (value.list().size() == 0) {
    return;
  }
  std::size_t position = 0;
  for (const RecordValue cell : value.list(static_cast<std::uint32_t>(size))) {
    set(position++, cell);
  }
}

void readFieldCells(RecordValue value, const Shape& shape, pwr::TableMessage& table) {
  const bool hasEntities = !shape.entities.empty();
  const std::size_t cellsPerField = hasEntities ? shape.entities.size() : 1;
  readCells(value, shape.fields.size(), [&](std::size_t field, RecordValue cells) {
    readCells(cells, cellsPerField, [&](std::size_t position, RecordValue cell) {
      const auto* entity = hasEntities ? shape.entities[position] : nullptr;
      table.setCell(entity, shape.fields[field], readCell(cell));
    });
  });
}

void readAllCells(RecordObject& record, const Shape& shape, const Definitions& definitions,
                  pwr::TableMessage& table) {
  if (const auto cells = record.find("sharedCells")) {
    readCells(*cells, shape.shared.size(), [&](std::size_t position, RecordValue cell) {
      table.setCell(nullptr, shape.shared[position], readCell(cell));
    });
  }
  if (const auto cells = record.find("fieldCells")) {
    readFieldCells(*cells, shape, table);
  }
  record.forEach("extraCells", [&](RecordValue value) {
    const RecordList parts = value.list(3);
    table.setCell(definitions.entityOrNull(parts[0]), &definitions.handle(parts[1]),
                  readCell(parts[2]));
  });
}

}  // namespace

void readTable(RecordObject& record, Model& model, const Definitions& definitions,
               pwr::TableMessage& table) {
  table.m_id = record.integer<std::uint32_t>("id");
  table.m_metricId = record.integer<std::uint32_t>("metricId");
  table.setTitle(record.string("title"));
  table.setQuantity(definitions.quantityOrNull(record.find("quantity")));
  if (const auto notes = record.findNotNull("notes")) {
    table.setTextNotes(&model.addNotes(readNotes(*notes)));
  }
  table.setTableMessageType(record.integer<std::uint8_t>("type"));
  table.setSkipped(record.boolean("skip"));
  table.setHasFieldHeaders(record.boolean("hasFieldHeaders"));
  const Shape shape = readShape(record, definitions);
  applyShape(shape, table);
  readAllCells(record, shape, definitions, table);
  record.finish();
}

}  // namespace qumetra
