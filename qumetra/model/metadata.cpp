#include "host/metadata.h"

#include <limits>

namespace pwr {

Metadata::Metadata(std::uint32_t kind) : m_kind(kind) {}
Metadata::~Metadata() = default;

std::uint32_t Metadata::getPluginID() const { return std::numeric_limits<std::uint32_t>::max(); }

}  // namespace pwr
