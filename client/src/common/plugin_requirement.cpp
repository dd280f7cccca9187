#include "client/src/common/plugin_requirement.h"

namespace pwr {

PluginRequirement::PluginRequirement(std::string name, bool negate)
    : m_name(std::move(name)), m_negate(negate) {}
PluginRequirement::PluginRequirement(const PluginRequirement& other) = default;
PluginRequirement::~PluginRequirement() = default;

}  // namespace pwr
