// A finished table, not as a grid but as handles, entities and the cells between them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/messages.h"
#include "host/text_notes.h"

namespace pwr {

class DataHandle;
class EntityHandle;
class Quantity;

/// One row of a table together with all that describes the table. A table of `kTitleTable` has no
/// row: it only announces the columns. Cells exist for each shared handle and, for each field
/// handle, once per entity, or once when there are no entities.
///
/// Owns its cells and its lists; handles, entities, quantity and notes are borrowed and live for
/// the whole run. Handles in the lists may be null.
class TableMessage : public WriterMessage {
 public:
  static constexpr std::uint8_t kTitleTable = 0;
  static constexpr std::uint8_t kValueTable = 1;

  using HandleIterator = const DataHandle* const*;
  /// Ordered by the entity's id.
  using EntityMap = std::map<std::uint64_t, const EntityHandle*>;

  /// What reading a cell gives.
  struct Cell {
    enum class State : std::uint8_t {
      Present,   ///< the read succeeds and gives `text`
      Absent,    ///< the read succeeds, and there is nothing
      Failed,    ///< the read fails and leaves `text` behind
      Unwritten  ///< the read fails and leaves the caller's text alone
    };
    State state = State::Unwritten;
    std::string text;
  };

  TableMessage();
  ~TableMessage() override;
  std::uint8_t getMessageType() const override;

  /// Non-zero means that the table must not appear in a summary.
  virtual int mustBeSkipped() const;
  /// Four slots that only the host uses.
  virtual void hostSlot1() const;
  virtual void hostSlot2() const;
  virtual void hostSlot3() const;
  virtual void hostSlot4() const;
  virtual HandleIterator sharedHandlesBegin() const;
  virtual HandleIterator sharedHandlesEnd() const;
  virtual HandleIterator fieldHandlesBegin() const;
  virtual HandleIterator fieldHandlesEnd() const;
  virtual EntityMap::const_iterator entitiesBegin() const;
  virtual EntityMap::const_iterator entitiesEnd() const;

  std::string getTitle() const;
  /// May be null.
  const Quantity* getQuantity() const;
  /// May be null.
  const TextNotes* getTextNotes() const;
  std::uint8_t getTableMessageType() const;
  std::uint32_t getEntityCount() const;
  /// The number of field handles.
  std::uint32_t getHandleCount() const;
  std::uint32_t getSharedHandleCount() const;
  /// The number of columns: shared handles, and field handles times the entities or one.
  std::uint32_t getFieldCount() const;
  bool hasFieldHeaders() const;

  /// Reads the cell of a shared handle, or of a field handle of a table without entities. Returns 0
  /// on success and then sets `present`, and `out` when there is something. Returns 1 when the cell
  /// cannot be read; what `out` then holds is the cell's to decide.
  int getFieldAsString(const DataHandle* handle, std::string& out, bool& present) const;
  /// The same for the cell of a field handle and one entity.
  int getFieldAsString(const EntityHandle* entity, const DataHandle* handle, std::string& out,
                       bool& present) const;

  /// Sets `out` to the quantity's units between `prefix` and `suffix` and returns true. Returns
  /// false and leaves `out` alone when `quantity` is null or has no units.
  static bool quantityToUnits(const Quantity* quantity, std::string& out, const std::string& prefix,
                              const std::string& suffix);

  /// The table that the row belongs to is told by `m_metricId` and `m_id` together.
  std::uint32_t m_metricId = 0;

  // Host side: filling a table.
  void setTitle(std::string title);
  void setQuantity(const Quantity* quantity);
  void setTextNotes(const TextNotes* notes);
  void setTableMessageType(std::uint8_t type);
  void setSkipped(bool skipped);
  void setHasFieldHeaders(bool hasFieldHeaders);
  void addSharedHandle(const DataHandle* handle);
  void addFieldHandle(const DataHandle* handle);
  /// REQUIRES: `entity` is not null and its id is not in the table yet.
  void addEntity(const EntityHandle* entity);
  /// Sets or replaces a cell. `entity` is null for shared handles and tables without entities.
  void setCell(const EntityHandle* entity, const DataHandle* handle, Cell cell);

 private:
  using CellKey = std::pair<const EntityHandle*, const DataHandle*>;
  struct CellKeyHash {
    std::size_t operator()(const CellKey& key) const;
  };

  std::string m_title;
  const Quantity* m_quantity = nullptr;
  const TextNotes* m_notes = nullptr;
  std::uint8_t m_type = kTitleTable;
  bool m_skipped = false;
  bool m_hasFieldHeaders = false;
  std::vector<const DataHandle*> m_sharedHandles;
  std::vector<const DataHandle*> m_fieldHandles;
  EntityMap m_entities;
  std::unordered_map<CellKey, Cell, CellKeyHash> m_cells;
};

}  // namespace pwr
