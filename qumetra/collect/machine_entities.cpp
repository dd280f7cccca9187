#include "qumetra/collect/machine_entities.h"

#include <utility>

#include <fmt/format.h>

#include "host/handles.h"
#include "qumetra/collect/named.h"
#include "qumetra/collect/topology_scan.h"
#include "qumetra/model/model.h"

namespace qumetra {
namespace {

/// The entity under `key`, made when it is new.
template <typename Map>
const pwr::EntityHandle& findOrAdd(Model& model, Map& entities, const typename Map::key_type& key,
                                   std::string name, const pwr::EntityHandle* parent) {
  const pwr::EntityHandle*& entity = entities[key];
  if (entity == nullptr) {
    entity = &model.addEntity(named(std::move(name)), parent);
  }
  return *entity;
}

}  // namespace

MachineEntities::MachineEntities(Model& model, std::string sysfs,
                                 const std::vector<pwr::ThreadLocation>& topology)
    : m_model(model), m_sysfs(std::move(sysfs)) {
  for (const pwr::ThreadLocation& location : topology) {
    addCpu(location);
  }
}

MachineEntities::~MachineEntities() = default;

const pwr::EntityHandle& MachineEntities::cpu(std::uint32_t number) {
  const auto found = m_cpus.find(number);
  return found != m_cpus.end() ? *found->second : addCpu(locateCpu(m_sysfs, number));
}

const pwr::EntityHandle& MachineEntities::system() {
  if (m_system == nullptr) {
    m_system = &m_model.addEntity(named("System"));
  }
  return *m_system;
}

const pwr::EntityHandle& MachineEntities::addCpu(const pwr::ThreadLocation& location) {
  const pwr::EntityHandle& package = findOrAdd(
      m_model, m_packages, location.package, fmt::format("Package {}", location.package), nullptr);
  const pwr::EntityHandle& core =
      findOrAdd(m_model, m_cores, std::pair(location.package, location.core),
                fmt::format("Core {}", location.core), &package);
  return findOrAdd(m_model, m_cpus, location.id, fmt::format("CPU {}", location.id), &core);
}

}  // namespace qumetra
