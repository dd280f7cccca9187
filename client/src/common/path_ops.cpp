#include "client/src/common/path_ops.h"

#include <algorithm>

#include "client/src/common/deliberate_stop.h"

namespace pwr {

const std::string PathOps::m_pathSeparator = "/";

std::string PathOps::getFilenameFromPath(const std::string& path) {
  const auto separator = path.rfind(m_pathSeparator);
  return separator == std::string::npos ? path : path.substr(separator + m_pathSeparator.size());
}

std::string PathOps::getPathSeparator() { return m_pathSeparator; }

std::string PathOps::normalizePathSeparator(const std::string& path) {
  std::string normalized = path;
  std::replace(normalized.begin(), normalized.end(), '\\', m_pathSeparator.front());
  return normalized;
}

void extract_dir_and_file_from_path(const std::string& path, std::string& directory,
                                    std::string& file) {
  if (path.empty()) {
    stopDeliberately("client/src/common/pw_utils", "size > 0");
  }
  // A copy, since the caller may hand in the path itself as a result.
  const std::string whole = path;
  const auto slash = whole.rfind('/');
  if (slash == std::string::npos) {
    directory = "./";
    file = whole;
    return;
  }
  directory = whole.substr(0, slash + 1);
  file = whole.substr(slash + 1);
}

}  // namespace pwr
