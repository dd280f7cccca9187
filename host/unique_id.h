// The identity that every named object of a run has.
#pragma once

#include <cstdint>

namespace pwr {

/// A 64-bit id, unique among the objects of a run. A copy of an object keeps its id.
class UniqueId {
 public:
  explicit UniqueId(std::uint64_t id);
  ~UniqueId();

  std::uint64_t getId() const;

 protected:
  UniqueId(const UniqueId&) = default;
  UniqueId& operator=(const UniqueId&) = default;

 private:
  std::uint64_t m_uniqueId;
};

}  // namespace pwr
