#include "qumetra/readers/pwr_references.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "qumetra/readers/pwr_findings.h"

namespace qumetra {

void PwrReferences::declare(PwrUid uid) {
  m_declared.insert(uid);
  m_missing.erase(uid);
}

void PwrReferences::refer(PwrUid uid, std::uint64_t offset) {
  if (m_missing.size() < kMostMissing && m_declared.count(uid) == 0) {
    m_missing.emplace(uid, offset);
  }
}

void PwrReferences::warn(PwrFindings& findings) const {
  std::vector<std::pair<std::uint64_t, PwrUid>> missing;
  missing.reserve(m_missing.size());
  for (const auto& [uid, offset] : m_missing) {
    missing.emplace_back(offset, uid);
  }
  std::sort(missing.begin(), missing.end());
  for (const auto& [offset, uid] : missing) {
    findings.warning(offset, std::string("no record declares the ") + pwrNamedText(uid.kind) + ' ' +
                                 std::to_string(uid.number));
  }
}

}  // namespace qumetra
