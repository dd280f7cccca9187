// Whether results can be written, found out before anything is measured.
#pragma once

#include <string>
#include <vector>

namespace qumetra {

struct LoadedWriter;

/// A file that is going to be made or written over.
struct OutputFile {
  std::string path;
  /// Whether it may be a symbolic link. Writers of results do not follow one.
  bool mayBeLink = false;
  /// Whether it has to be a regular file, which can be written over in the middle, and which nobody
  /// else is writing.
  bool mustBeRegular = false;
};

/// The files that a writer is known to make for an output base name. Writers that add names of
/// groups or numbers make more, in the same directory.
std::vector<OutputFile> resultFiles(const LoadedWriter& writer, const std::string& base);

/// Whether the file can be made or written over. Makes and changes nothing. A missing directory is
/// fine when it could be made. Returns "PATH: reason", or nothing when all is well.
std::string checkOutputFile(const OutputFile& file);

/// Whether the two paths mean the same file, be it there or not.
bool isSameFile(const std::string& first, const std::string& second);

}  // namespace qumetra
