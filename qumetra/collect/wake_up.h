// Waiting for the next thing to do.
#pragma once

#include <cstdint>

namespace qumetra {

class ChildProcess;
class StopSignal;

/// Waits until the clock has reached `deadline` (in ticks), a request came, or the command ended;
/// now and then it returns without a reason. `child` may be null.
void waitFor(std::uint64_t deadline, StopSignal& stop, const ChildProcess* child);

}  // namespace qumetra
