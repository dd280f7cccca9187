// What the tool itself says to the user.
#pragma once

#include <string>

namespace qumetra::cli {

/// Writes "qumetra: " and the line to standard error.
void printError(const std::string& line);
/// Writes the line as it is to standard error.
void printNote(const std::string& line);
/// Writes what was asked for to standard output. Throws `UsageError` when it cannot be written.
void printResult(const std::string& text);

}  // namespace qumetra::cli
