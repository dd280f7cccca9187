// Limits of the process that a run needs to be wide.
#pragma once

#include <cstdint>

namespace qumetra {

/// The limit of open files as it is now; 0 when the system does not tell.
std::uint64_t openFileLimit();

/// Raises the limit of open files to the hard limit, since every store of a writer holds one.
/// Returns the limit that holds afterwards; a failure leaves it as it was.
std::uint64_t raiseOpenFileLimit();

}  // namespace qumetra
