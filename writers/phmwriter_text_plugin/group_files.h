// The result files of the PHM form: one per group of metrics.
#pragma once

#include <cstdio>
#include <map>
#include <string>

#include "writers/textwriter_plugin/result_file.h"

/// Opens the file of each group when it is first asked for. Borrows its texts.
class GroupFiles {
 public:
  /// Files are named `<base>_<group><suffix>`, that of the empty group `<base><suffix>`, and begin
  /// with `header` and a line end.
  GroupFiles(const std::string& base, const std::string& suffix, const std::string& header)
      : m_base(base), m_suffix(suffix), m_header(header) {}

  /// The open file of `group`, which stays this object's. Null, after a warning, when it cannot be
  /// made.
  std::FILE* open(const std::string& group);

  /// Closes all files. Returns false, after an error for each, when some have not taken all bytes.
  bool close();

 private:
  struct File {
    std::string path;
    ResultFile stream;
  };

  std::string pathOf(const std::string& group) const;

  const std::string& m_base;
  const std::string& m_suffix;
  const std::string& m_header;
  /// By the names as metrics give them: names that only map to one path are separate entries.
  std::map<std::string, File> m_files;
};
