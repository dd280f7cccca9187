// Requirements of which all, or any, must hold.
#pragma once

#include <memory>
#include <vector>

#include "client/src/common/plugin_requirement.h"

namespace pwr {

/// A requirement made of others, which it evaluates in order up to the first that decides. An empty
/// group holds, also one of which any must hold.
class PluginRequirementGroup : public PluginRequirement {
 public:
  explicit PluginRequirementGroup(bool requireAll);
  PluginRequirementGroup(const PluginRequirementGroup& other);
  ~PluginRequirementGroup() override;

  /// Appends a requirement, which may be in several groups. Returns true.
  bool addPluginRequirement(std::shared_ptr<PluginRequirement> requirement);
  bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                      const RequirementValues& values) const override;

  std::vector<std::shared_ptr<PluginRequirement>> m_children;
  bool m_requireAll;
};

}  // namespace pwr
