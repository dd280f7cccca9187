#include "qumetra/model/handle_registry.h"

#include <algorithm>

#include "host/handles.h"
#include "qumetra/model/model.h"

namespace qumetra {
namespace {

const pwr::DataHandle* findIn(const HandleTable& table, std::uint64_t id) {
  const auto found = table.find(id);
  return found == table.end() ? nullptr : found->second;
}

}  // namespace

HandleRegistry& HandleRegistry::instance() {
  static HandleRegistry s_registry;
  return s_registry;
}

HandleRegistry::HandleRegistry() : m_nextId(Model::kFirstReservedId) {}

void HandleRegistry::attach(const HandleTable& table) { m_tables.push_back(&table); }

void HandleRegistry::detach(const HandleTable& table) {
  m_tables.erase(std::remove(m_tables.begin(), m_tables.end(), &table), m_tables.end());
}

std::uint64_t HandleRegistry::drawId() { return m_nextId++; }

void HandleRegistry::addRuntimeHandle(const pwr::DataHandle& handle) {
  m_runtimeHandles.emplace(handle.getId(), &handle);
}

const pwr::DataHandle* HandleRegistry::find(std::uint64_t id) const {
  if (const pwr::DataHandle* const handle = findIn(m_runtimeHandles, id)) {
    return handle;
  }
  for (auto table = m_tables.rbegin(); table != m_tables.rend(); ++table) {
    if (const pwr::DataHandle* const handle = findIn(**table, id)) {
      return handle;
    }
  }
  return nullptr;
}

}  // namespace qumetra
