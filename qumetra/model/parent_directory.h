// The directories that a file needs.
#pragma once

#include <string>

namespace qumetra {

/// Makes the directories above a file that is going to be made, where they are missing. A failure
/// shows when the file is opened.
void makeParentDirectory(const std::string& file);

}  // namespace qumetra
