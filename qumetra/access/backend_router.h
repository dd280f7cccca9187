// Different kinds of operations carried out by different backends.
#pragma once

#include <map>
#include <string>

#include "qumetra/model/access_backend.h"

namespace qumetra {

/// Hands each operation to the backend for its name, and refuses operations that have none. A
/// router for a live machine has backends for "PCI" and "AGGR-TELEM": memory-mapped registers are
/// not to be touched by an ordinary program.
class BackendRouter : public AccessBackend {
 public:
  BackendRouter();
  ~BackendRouter() override;

  /// `backend` is borrowed.
  void add(const std::string& operationName, AccessBackend& backend);

  std::optional<std::vector<std::uint8_t>> read(const HWOperation& operation,
                                                const std::string& target) override;
  bool write(const HWOperation& operation, const std::string& target) override;
  bool write(const HWOperation& operation, const pwr::EntityHandle& target) override;

 private:
  AccessBackend* find(const HWOperation& operation) const;

  std::map<std::string, AccessBackend*> m_backends;
};

}  // namespace qumetra
