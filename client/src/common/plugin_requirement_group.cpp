#include "client/src/common/plugin_requirement_group.h"

#include <utility>

namespace pwr {

PluginRequirementGroup::PluginRequirementGroup(bool requireAll)
    : PluginRequirement("SYSTEM"), m_requireAll(requireAll) {}
PluginRequirementGroup::PluginRequirementGroup(const PluginRequirementGroup& other) = default;
PluginRequirementGroup::~PluginRequirementGroup() = default;

bool PluginRequirementGroup::addPluginRequirement(std::shared_ptr<PluginRequirement> requirement) {
  m_children.push_back(std::move(requirement));
  return true;
}

bool PluginRequirementGroup::isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                                            const RequirementValues& values) const {
  if (m_children.empty()) {
    return true;
  }
  for (const auto& child : m_children) {
    if (child == nullptr) {
      continue;
    }
    const bool holds = child->isPluginRequirementSatisfied_i(metadata, values) != child->m_negate;
    if (holds != m_requireAll) {
      return holds;
    }
  }
  return m_requireAll;
}

}  // namespace pwr
