// Limits of the process that a run needs to be wide.
#pragma once

#include <cstdint>

namespace qumetra {

/// Raises the limit of open files to the hard limit, since every store of a writer holds one.
/// Returns the limit that holds afterwards; a failure leaves it as it was.
std::uint64_t raiseOpenFileLimit();

}  // namespace qumetra
