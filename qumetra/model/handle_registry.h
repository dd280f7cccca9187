// How handles are found by their ids, and where the ids of objects made at run time come from.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace pwr {
class DataHandle;
}

namespace qumetra {

/// Handles by id. An id that is taken by something that is no handle has null.
using HandleTable = std::unordered_map<std::uint64_t, const pwr::DataHandle*>;

/// The process-wide directory behind `DataHandle::get`: the tables of the living models, and the
/// handles made at run time, which stay for good. Not synchronised.
class HandleRegistry {
 public:
  /// The directory lives until everything that used it in its constructor is gone.
  static HandleRegistry& instance();

  /// `table` is borrowed and looked into until it is detached.
  void attach(const HandleTable& table);
  void detach(const HandleTable& table);

  /// The next id for an object that is made at run time.
  std::uint64_t drawId();
  /// `handle` must live until the process ends.
  void addRuntimeHandle(const pwr::DataHandle& handle);

  /// Null when no handle has the id. The table attached last is asked first.
  const pwr::DataHandle* find(std::uint64_t id) const;

 private:
  HandleRegistry();

  std::vector<const HandleTable*> m_tables;
  HandleTable m_runtimeHandles;
  std::uint64_t m_nextId;
};

}  // namespace qumetra
