// A result file that is written once, at the end of a collection.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

/// Closes a stream whose result nobody asks for any more.
struct CloseStream {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// An open stream; null when there is none.
using ResultFile = std::unique_ptr<std::FILE, CloseStream>;

/// Makes or empties the file at `path`, with the directories above it. Null on failure.
ResultFile createResultFile(const std::string& path);

/// Writes `text` with all its bytes, and a line end. A failure shows when the file is closed.
void writeLine(const ResultFile& file, const std::string& text);

/// Closes `file`, which then is null. Returns false, after an error that names `path`, when the
/// file has not taken all bytes. REQUIRES: `file` is not null.
bool closeResultFile(ResultFile& file, const std::string& path);
