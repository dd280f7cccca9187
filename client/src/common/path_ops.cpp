#include "client/src/common/path_ops.h"

#include <algorithm>
#include <utility>

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
  const auto slash = path.rfind('/');
  const bool hasDirectory = slash != std::string::npos;
  // Both parts are cut before either is stored, since the caller may hand in the path as a result.
  std::string directoryPart = hasDirectory ? path.substr(0, slash + 1) : "./";
  std::string filePart = hasDirectory ? path.substr(slash + 1) : path;
  directory = std::move(directoryPart);
  file = std::move(filePart);
}

}  // namespace pwr
