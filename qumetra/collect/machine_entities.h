// The entities of the machine that all collectors share.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/topology.h"

namespace pwr {
class EntityHandle;
}

namespace qumetra {

class Model;

/// The tree "Package 0" / "Core 0" / "CPU 0" and the whole machine, "System", as entities of the
/// model. Every collector that measures a CPU gets the same object for it.
class MachineEntities {
 public:
  /// Makes the entities of `topology` at once. The model is borrowed and must outlive this object.
  MachineEntities(Model& model, std::string sysfs,
                  const std::vector<pwr::ThreadLocation>& topology);
  MachineEntities(const MachineEntities&) = delete;
  MachineEntities& operator=(const MachineEntities&) = delete;
  ~MachineEntities();

  /// The hardware thread of that number; one that came later is looked up in sysfs and added.
  const pwr::EntityHandle& cpu(std::uint32_t number);
  const pwr::EntityHandle& system();

 private:
  const pwr::EntityHandle& addCpu(const pwr::ThreadLocation& location);

  Model& m_model;
  std::string m_sysfs;
  const pwr::EntityHandle* m_system = nullptr;
  std::map<std::uint32_t, const pwr::EntityHandle*> m_packages;
  std::map<std::pair<std::uint32_t, std::uint32_t>, const pwr::EntityHandle*> m_cores;
  std::map<std::uint32_t, const pwr::EntityHandle*> m_cpus;
};

}  // namespace qumetra
