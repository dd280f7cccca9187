#include "qumetra/recording/table_writer.h"

#include <algorithm>
#include <string>
#include <vector>

namespace qumetra {
namespace {

using Cell = pwr::TableMessage::Cell;

/// Reads a cell over `text`, which is what a cell that nobody wrote leaves alone.
Cell readOver(const pwr::TableMessage& table, const pwr::EntityHandle* entity,
              const pwr::DataHandle* handle, std::string text) {
  const std::string before = text;
  bool present = false;
  const int status = entity == nullptr ? table.getFieldAsString(handle, text, present)
                                       : table.getFieldAsString(entity, handle, text, present);
  if (status != 0) {
    return text == before ? Cell{} : Cell{Cell::State::Failed, text};
  }
  return present ? Cell{Cell::State::Present, text} : Cell{Cell::State::Absent, ""};
}

Cell readCell(const pwr::TableMessage& table, const pwr::EntityHandle* entity,
              const pwr::DataHandle* handle) {
  Cell cell = readOver(table, entity, handle, "?");
  // A failed cell may leave just this text behind, but not another one too.
  return cell.state == Cell::State::Unwritten ? readOver(table, entity, handle, "!") : cell;
}

bool isWritten(const Cell& cell) { return cell.state != Cell::State::Unwritten; }

void appendCell(JsonText& json, const Cell& cell) {
  switch (cell.state) {
    case Cell::State::Present:
      json.text(cell.text);
      return;
    case Cell::State::Failed:
      json.beginObject();
      json.name("error");
      json.text(cell.text);
      json.endObject();
      return;
    case Cell::State::Absent:
    case Cell::State::Unwritten:
      json.null();
  }
}

/// Appends the cells of one table. A list of cells cannot tell that one of them is unwritten; a
/// list with such a cell stays empty, and its other cells become extra cells.
class CellWriter {
 public:
  CellWriter(JsonText& json, DefinitionWriter& definitions, const pwr::TableMessage& table)
      : m_json(json),
        m_definitions(definitions),
        m_table(table),
        m_shared(table.sharedHandlesBegin(), table.sharedHandlesEnd()),
        m_fields(table.fieldHandlesBegin(), table.fieldHandlesEnd()) {
    for (auto entity = table.entitiesBegin(); entity != table.entitiesEnd(); ++entity) {
      m_entities.push_back(entity->second);
    }
  }

  void append() {
    appendShape();
    appendShared();
    appendFields();
    collectOthers();
    appendExtra();
  }

 private:
  struct Place {
    const pwr::EntityHandle* entity;
    const pwr::DataHandle* handle;
    Cell cell;
  };
  using Places = std::vector<Place>;

  void appendShape() {
    appendHandles("shared", m_shared);
    appendHandles("fields", m_fields);
    appendHandles("entities", {m_entities.begin(), m_entities.end()});
  }

  void appendHandles(std::string_view name, const std::vector<const pwr::DataHandle*>& handles) {
    if (handles.empty()) {
      return;
    }
    m_json.name(name);
    m_json.beginList();
    for (const pwr::DataHandle* handle : handles) {
      m_json.raw(m_definitions.handleOrNull(handle));
    }
    m_json.endList();
  }

  Place place(const pwr::EntityHandle* entity, const pwr::DataHandle* handle) const {
    return {entity, handle, readCell(m_table, entity, handle)};
  }

  void appendShared() {
    Places places;
    for (const pwr::DataHandle* handle : m_shared) {
      places.push_back(place(nullptr, handle));
    }
    if (hasWritten(places)) {
      m_json.name("sharedCells");
      appendList(places);
    }
  }

  void appendFields() {
    std::vector<Places> fields;
    for (const pwr::DataHandle* handle : m_fields) {
      Places& places = fields.emplace_back();
      for (const pwr::EntityHandle* entity : m_entities) {
        places.push_back(place(entity, handle));
      }
      if (m_entities.empty()) {
        places.push_back(place(nullptr, handle));
      }
    }
    if (std::none_of(fields.begin(), fields.end(), hasWritten)) {
      return;
    }
    m_json.name("fieldCells");
    m_json.beginList();
    for (const Places& places : fields) {
      appendList(places);
    }
    m_json.endList();
  }

  static bool hasWritten(const Places& places) {
    return std::any_of(places.begin(), places.end(),
                       [](const Place& place) { return isWritten(place.cell); });
  }

  void appendList(const Places& places) {
    const bool isWhole = std::all_of(places.begin(), places.end(),
                                     [](const Place& place) { return isWritten(place.cell); });
    m_json.beginList();
    for (const Place& place : places) {
      if (isWhole) {
        appendCell(m_json, place.cell);
      } else {
        keepExtra(place);
      }
    }
    m_json.endList();
  }

  /// An extra cell needs a handle; a cell of a null handle can stand in a list only.
  void keepExtra(const Place& place) {
    if (isWritten(place.cell) && place.handle != nullptr) {
      m_extra.push_back(place);
    }
  }

  /// Cells beside the table's grid: a shared handle's for an entity, and a field's for no entity
  /// although there are some.
  void collectOthers() {
    for (const pwr::EntityHandle* entity : m_entities) {
      for (const pwr::DataHandle* handle : m_shared) {
        if (!contains(m_fields, handle)) {
          keepExtra(place(entity, handle));
        }
      }
    }
    for (const pwr::DataHandle* handle : m_fields) {
      if (!m_entities.empty() && !contains(m_shared, handle)) {
        keepExtra(place(nullptr, handle));
      }
    }
  }

  static bool contains(const std::vector<const pwr::DataHandle*>& handles,
                       const pwr::DataHandle* handle) {
    return std::find(handles.begin(), handles.end(), handle) != handles.end();
  }

  void appendExtra() {
    if (m_extra.empty()) {
      return;
    }
    m_json.name("extraCells");
    m_json.beginList();
    for (const Place& place : m_extra) {
      m_json.beginList();
      m_json.raw(m_definitions.handleOrNull(place.entity));
      m_json.raw(m_definitions.handle(*place.handle));
      appendCell(m_json, place.cell);
      m_json.endList();
    }
    m_json.endList();
  }

  JsonText& m_json;
  DefinitionWriter& m_definitions;
  const pwr::TableMessage& m_table;
  std::vector<const pwr::DataHandle*> m_shared;
  std::vector<const pwr::DataHandle*> m_fields;
  std::vector<const pwr::EntityHandle*> m_entities;
  Places m_extra;
};

}  // namespace

void appendTable(JsonText& json, DefinitionWriter& definitions, const pwr::TableMessage& table) {
  json.beginObject();
  json.numberMember("id", table.m_id);
  json.numberMember("metricId", table.m_metricId);
  json.textMember("title", table.getTitle());
  if (table.getQuantity() != nullptr) {
    json.rawMember("quantity", definitions.quantity(*table.getQuantity()));
  }
  if (table.getTextNotes() != nullptr) {
    json.name("notes");
    appendNotes(json, *table.getTextNotes());
  }
  json.numberMember("type", table.getTableMessageType());
  json.flagMember("skip", table.mustBeSkipped() != 0);
  json.flagMember("hasFieldHeaders", table.hasFieldHeaders());
  CellWriter(json, definitions, table).append();
  json.endObject();
}

void appendNotes(JsonText& json, const pwr::TextNotes& notes) {
  json.beginObject();
  for (const auto& [placement, texts] : notes) {
    json.name(std::to_string(placement));
    json.beginList();
    for (const std::string& text : texts) {
      json.text(text);
    }
    json.endList();
  }
  json.endObject();
}

}  // namespace qumetra
