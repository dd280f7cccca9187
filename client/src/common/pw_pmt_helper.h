// Keeps the platform's telemetry devices awake while a collection runs.
//
// A device that suspends loses its counters. Its runtime power setting, a delay in milliseconds, is
// made short at the start of a collection and put back at its end. Everything here is for one
// thread. Failures are conditional warnings with the tag "pmt-helper".
#pragma once

#include <cstdio>
#include <map>
#include <string>

namespace pwr {

/// The delays that devices had before `pmtSetAutoSuspendDelay`, by device index.
extern std::map<int, int> s_pmtOriginalAutoSuspendDelayMap;

/// How the delay is read from and written to a device's open file. Each returns whether it worked.
struct PmtDelayAccess {
  bool (*readDelay)(FILE* file, int& delay);
  bool (*writeDelay)(FILE* file, int delay);
};

/// The access to the attributes of a real device.
PmtDelayAccess pmtSystemDelayAccess();
/// For tests on a tree of ordinary files: opening empties those, so that nothing is left to read.
void setPmtDelayAccess(PmtDelayAccess access);

/// The directory of the device behind telemetry device `index`: what its link below `sysfsRoot()`
/// leads to without the last three parts. Empty when there is no such link, or one without three
/// parts to drop.
std::string pmtGetSourcePath(int index);

/// Sets the delay of all devices, of which there may be 256, and remembers the former ones. A
/// second call before they were restored remembers what the first one set. A file that cannot be
/// opened is the end of the search, except for device 0's.
void pmtSetAutoSuspendDelay();

/// Puts the remembered delays back, by the same search, and forgets them.
void pmtRestoreAutoSuspendDelay();

}  // namespace pwr
