// Who carries accesses to hardware out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class HWOperation;

namespace pwr {
class EntityHandle;
}

namespace qumetra {

/// Carries out the accesses that operations describe. The categories of an operation are texts from
/// elsewhere: a backend refuses what it does not understand. Not synchronised.
class AccessBackend {
 public:
  AccessBackend() = default;
  AccessBackend(const AccessBackend&) = delete;
  AccessBackend& operator=(const AccessBackend&) = delete;
  virtual ~AccessBackend();

  /// The bytes that the operation reads, `getSize()` of them; nothing when it cannot be read.
  virtual std::optional<std::vector<std::uint8_t>> read(const HWOperation& operation,
                                                        const std::string& target) = 0;
  /// Writes the operation's value. Returns whether that worked.
  virtual bool write(const HWOperation& operation, const std::string& target) = 0;
  /// The same at an entity. Here: the entity's name is the target.
  virtual bool write(const HWOperation& operation, const pwr::EntityHandle& target);
};

/// Has all accesses of the process go to `backend` as long as it lives, instead of where they went
/// before. Without any, all accesses fail. `backend` is borrowed.
class BackendInUse {
 public:
  explicit BackendInUse(AccessBackend& backend);
  BackendInUse(const BackendInUse&) = delete;
  BackendInUse& operator=(const BackendInUse&) = delete;
  ~BackendInUse();

 private:
  AccessBackend* m_former;
};

}  // namespace qumetra
