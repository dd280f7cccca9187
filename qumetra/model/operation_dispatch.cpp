// Operations carried out by the backend that is in use.
#include <utility>

#include "client/src/common/hw_operation.h"
#include "host/handles.h"
#include "qumetra/model/access_backend.h"

namespace qumetra {
namespace {

constexpr int kRefused = 1;

AccessBackend*& backendInUse() {
  static AccessBackend* s_backend = nullptr;
  return s_backend;
}

/// The operation if it can be carried out at all, else null.
HWOperation* executable(pwr::Operation* operation) {
  return backendInUse() != nullptr ? dynamic_cast<HWOperation*>(operation) : nullptr;
}

}  // namespace

AccessBackend::~AccessBackend() = default;

bool AccessBackend::write(const HWOperation& operation, const pwr::EntityHandle& target) {
  return write(operation, target.getName());
}

BackendInUse::BackendInUse(AccessBackend& backend)
    : m_former(std::exchange(backendInUse(), &backend)) {}

BackendInUse::~BackendInUse() { backendInUse() = m_former; }

}  // namespace qumetra

namespace pwr {

int Operation::dispatchRead(Operation* operation, const std::string& target) {
  HWOperation* const access = qumetra::executable(operation);
  if (access == nullptr) {
    return qumetra::kRefused;
  }
  auto bytes = qumetra::backendInUse()->read(*access, target);
  if (!bytes) {
    return qumetra::kRefused;
  }
  access->m_buffer = std::move(*bytes);
  return 0;
}

int Operation::dispatchWrite(Operation* operation, const std::string& target) {
  const HWOperation* const access = qumetra::executable(operation);
  const bool done = access != nullptr && qumetra::backendInUse()->write(*access, target);
  return done ? 0 : qumetra::kRefused;
}

int Operation::dispatchWrite(Operation* operation, const EntityHandle* target) {
  const HWOperation* const access = qumetra::executable(operation);
  const bool done =
      access != nullptr && target != nullptr && qumetra::backendInUse()->write(*access, *target);
  return done ? 0 : qumetra::kRefused;
}

}  // namespace pwr
