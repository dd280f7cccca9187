#include "qumetra/access/backend_router.h"

#include "client/src/common/hw_operation.h"

namespace qumetra {

BackendRouter::BackendRouter() = default;
BackendRouter::~BackendRouter() = default;

void BackendRouter::add(const std::string& operationName, AccessBackend& backend) {
  m_backends[operationName] = &backend;
}

std::optional<std::vector<std::uint8_t>> BackendRouter::read(const HWOperation& operation,
                                                             const std::string& target) {
  AccessBackend* const backend = find(operation);
  return backend != nullptr ? backend->read(operation, target) : std::nullopt;
}

bool BackendRouter::write(const HWOperation& operation, const std::string& target) {
  AccessBackend* const backend = find(operation);
  return backend != nullptr && backend->write(operation, target);
}

bool BackendRouter::write(const HWOperation& operation, const pwr::EntityHandle& target) {
  AccessBackend* const backend = find(operation);
  return backend != nullptr && backend->write(operation, target);
}

AccessBackend* BackendRouter::find(const HWOperation& operation) const {
  const auto found = m_backends.find(operation.m_name);
  return found == m_backends.end() ? nullptr : found->second;
}

}  // namespace qumetra
