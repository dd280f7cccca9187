// Conditions on the measured platform, to which features and metrics are tied.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace pwr {

struct SystemMetadata;

/// Keys and values that the host gives to an evaluation.
using RequirementValues = std::vector<std::pair<std::string, std::string>>;

/// One condition. The host builds requirements from its configuration and evaluates them; const
/// calls are not synchronised, since some of them give a remark once per process.
class PluginRequirement {
 public:
  PluginRequirement(const PluginRequirement& other);
  PluginRequirement& operator=(const PluginRequirement&) = delete;
  virtual ~PluginRequirement();

  /// Whether the condition holds, whatever `m_negate` says.
  virtual bool isPluginRequirementSatisfied_i(const SystemMetadata& metadata,
                                              const RequirementValues& values) const = 0;

  std::string m_name;
  /// Whether a group that holds this takes the opposite of what it says. Looked at by groups only.
  bool m_negate;

 protected:
  explicit PluginRequirement(std::string name, bool negate = false);
};

}  // namespace pwr
