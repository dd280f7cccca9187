// Whether results can be written, found out before anything is measured.
#pragma once

#include <string>
#include <vector>

namespace qumetra {

struct LoadedWriter;

/// The files that a writer is known to make for an output base name. Writers that add names of
/// groups or numbers make more, in the same directory.
std::vector<std::string> resultFiles(const LoadedWriter& writer, const std::string& base);

/// Whether `path` can be made or written over. Makes and changes nothing. A missing directory is
/// fine when it could be made. Returns "PATH: reason", or nothing when all is well.
std::string checkOutputFile(const std::string& path);

}  // namespace qumetra
