// A result file that is written once, at the end of a collection.
#pragma once

#include <string>

#include "client/src/common/owned.h"

/// An open stream; null when there is none.
using ResultFile = pwr::OwnedFile;

/// Makes or empties the file at `path`, with the directories above it. Null on failure.
ResultFile createResultFile(const std::string& path);

/// Writes `text` with all its bytes, and a line end. A failure shows when the file is closed.
void writeLine(const ResultFile& file, const std::string& text);

/// Closes `file`, which then is null. Returns false, after an error that names `path`, when the
/// file has not taken all bytes. REQUIRES: `file` is not null.
bool closeResultFile(ResultFile& file, const std::string& path);
