// What .pwr files say, as text for people or as JSON Lines for programs, and whether they are
// whole.
#pragma once

#include <string>
#include <vector>

namespace qumetra::cli {

/// Prints every record of the files, one after the other, to standard output, and what is wrong
/// with them to standard error. Returns the exit status: `kFaulty` when something is. Throws
/// `ReadError` and `UsageError`.
int dumpPwr(const std::vector<std::string>& files, bool asJson);

/// Prints for each file how much there is and where its first fault is, and what is wrong to
/// standard error. Warnings do not count. Returns and throws the same.
int checkPwr(const std::vector<std::string>& files);

}  // namespace qumetra::cli
