// Time as a measurement sees it.
#pragma once

#include <cstdint>

namespace qumetra {

class ChildProcess;
class StopSignal;

/// The time of a measurement, and waiting for it; a test has its own.
class MeasurementClock {
 public:
  MeasurementClock() = default;
  MeasurementClock(const MeasurementClock&) = delete;
  MeasurementClock& operator=(const MeasurementClock&) = delete;
  virtual ~MeasurementClock();

  /// Now, in ticks.
  virtual std::uint64_t now() = 0;
  /// Waits as `qumetra::waitFor` does. It may return much later than asked: other programs keep
  /// the machine busy. `child` may be null.
  virtual void waitUntil(std::uint64_t deadline, StopSignal& stop, const ChildProcess* child) = 0;
};

/// The machine's own, CLOCK_MONOTONIC.
class SystemClock : public MeasurementClock {
 public:
  ~SystemClock() override;
  std::uint64_t now() override;
  void waitUntil(std::uint64_t deadline, StopSignal& stop, const ChildProcess* child) override;
};

}  // namespace qumetra
