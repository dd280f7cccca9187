#include "host/platform_metadata.h"

namespace pwr {

void PlatformMetadata::getPlatformNames(QMConfigFileParser* /*parser*/,
                                        std::list<std::string>& names,
                                        SystemMetadata& /*metadata*/) {
  // The configuration has no other names than the scan found.
  if (!m_name.empty()) {
    names.push_back(m_name);
  }
}

}  // namespace pwr
