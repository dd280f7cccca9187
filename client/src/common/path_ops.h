// Operations on the text of a path. The file system is not asked.
#pragma once

#include <string>

namespace pwr {

/// Operations over the separator of paths.
class PathOps {
 public:
  /// The part behind the last separator; the whole path when it has none.
  static std::string getFilenameFromPath(const std::string& path);
  static std::string getPathSeparator();
  /// The path with each backslash, the separator of other systems, turned into this one's.
  static std::string normalizePathSeparator(const std::string& path);

  static const std::string m_pathSeparator;
};

/// Cuts `path` behind its last "/": `directory` keeps the slash, and `file` is the rest, which may
/// be empty. Without a "/", `directory` is "./".
/// REQUIRES: `path` is not empty; an empty one ends the process deliberately.
void extract_dir_and_file_from_path(const std::string& path, std::string& directory,
                                    std::string& file);

}  // namespace pwr
