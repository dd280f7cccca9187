#include "host/unique_id.h"

namespace pwr {

UniqueId::UniqueId(std::uint64_t id) : m_uniqueId(id) {}
UniqueId::~UniqueId() = default;

std::uint64_t UniqueId::getId() const { return m_uniqueId; }

}  // namespace pwr
