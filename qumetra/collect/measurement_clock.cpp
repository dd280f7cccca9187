#include "qumetra/collect/measurement_clock.h"

#include "qumetra/collect/clock.h"
#include "qumetra/collect/wake_up.h"

namespace qumetra {

MeasurementClock::~MeasurementClock() = default;

SystemClock::~SystemClock() = default;

std::uint64_t SystemClock::now() { return monotonicTicks(); }

void SystemClock::waitUntil(std::uint64_t deadline, StopSignal& stop, const ChildProcess* child) {
  waitFor(deadline, stop, child);
}

}  // namespace qumetra
