// What .qmbin files say, as text for people or as JSON Lines for programs.
#pragma once

#include <string>
#include <vector>

namespace qumetra::cli {

/// Prints what the files say, as one series, to standard output, and what is wrong with them to
/// standard error. Returns the exit status: `kFaulty` when something is. Throws `ReadError` and
/// `UsageError`.
int dumpQmbin(const std::vector<std::string>& files, bool asJson);

/// Reads the files as one series, prints for each how much there is, and on standard error what is
/// wrong. Returns the exit status. Throws the same.
int checkQmbin(const std::vector<std::string>& files);

}  // namespace qumetra::cli
