// Whether a .pwr file declares what it refers to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>

#include "qumetra/readers/pwr_names.h"

namespace qumetra {

class PwrFindings;

/// Remembers which uids a file declares, and where it first refers to others. A declaration may
/// come later than what refers to it. Not synchronised.
class PwrReferences {
 public:
  /// The most undeclared uids that are remembered.
  static constexpr std::size_t kMostMissing = std::size_t{1} << 20;

  void declare(PwrUid uid);
  /// Something at `offset` refers to the uid.
  void refer(PwrUid uid, std::uint64_t offset);

  /// Warns of what was never declared: each uid once, in the order of the first uses.
  void warn(PwrFindings& findings) const;

 private:
  std::set<PwrUid> m_declared;
  std::map<PwrUid, std::uint64_t> m_missing;
};

}  // namespace qumetra
