// The host's outputs, as writers use them.
#pragma once

namespace pwr {
class Logger;
}  // namespace pwr

/// The host's output for a file name. Null without an environment, and where that one has none.
pwr::Logger* outputHandle(const char* name);

/// Brings the bytes in the buffer of `output` to its file, takes them and their memory from the
/// buffer, and releases the file: a host keeps its outputs, one for each file of a long run.
/// Returns false when the host threw while it wrote: some of the bytes may be in the file then.
bool bringOut(pwr::Logger& output);
