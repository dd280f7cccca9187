// The end of the process where a caller broke a rule that nothing can mend.
#pragma once

namespace pwr {

/// Writes one line with `where`, a path of the source without its ending, and the broken
/// `condition` to standard error, and aborts: the same in every kind of build.
[[noreturn]] void stopDeliberately(const char* where, const char* condition);

}  // namespace pwr
