// The order of a table's columns, for all that turn a table into a flat list.
#pragma once

#include <string>

#include "host/handles.h"
#include "host/table.h"

namespace pwr {

/// Visits the columns of `table` in their order: the shared handles; then for every entity every
/// field handle, or the field handles alone when there are no entities. `visitSingle` gets a
/// handle, `visitPair` an entity and a field handle. Each pointer may be null.
template <typename VisitSingle, typename VisitPair>
void forEachColumn(const TableMessage& table, VisitSingle visitSingle, VisitPair visitPair) {
  for (auto shared = table.sharedHandlesBegin(); shared != table.sharedHandlesEnd(); ++shared) {
    visitSingle(*shared);
  }
  const auto fieldsBegin = table.fieldHandlesBegin();
  const auto fieldsEnd = table.fieldHandlesEnd();
  if (table.getEntityCount() == 0) {
    for (auto field = fieldsBegin; field != fieldsEnd; ++field) {
      visitSingle(*field);
    }
    return;
  }
  for (auto entity = table.entitiesBegin(); entity != table.entitiesEnd(); ++entity) {
    for (auto field = fieldsBegin; field != fieldsEnd; ++field) {
      visitPair(entity->second, *field);
    }
  }
}

/// The title of a column that has no entity: the handle's name, or empty for a null handle.
inline std::string singleColumnTitle(const DataHandle* handle) {
  return handle == nullptr ? std::string() : handle->getName();
}

}  // namespace pwr
