// A small machine made of files, in the place of procfs and sysfs.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "tests/support/temp_dir.h"

namespace qumetra::test {

/// The roots of a procfs and a sysfs in a directory of its own, empty at first.
class FakeMachine {
 public:
  std::string procfs() const { return m_directory.file("proc"); }
  std::string sysfs() const { return m_directory.file("sys"); }

  void writeProc(const std::string& name, const std::string& text);
  void writeSys(const std::string& name, const std::string& text);
  void removeSys(const std::string& name);

  /// A CPU's place in the topology.
  void addCpu(unsigned cpu, int package, unsigned core);
  /// Two packages with two cores each and two hardware threads per core, online: CPU n and n + 4
  /// share a core, CPUs 0 1 4 5 are in package 0.
  void addTwoPackages();

  /// An idle state with its counters, the time in microseconds.
  void addIdleState(unsigned cpu, unsigned state, const std::string& name, std::uint64_t time,
                    std::uint64_t usage);
  void setIdleState(unsigned cpu, unsigned state, std::uint64_t time, std::uint64_t usage);

 private:
  TempDir m_directory;
};

/// A line of procfs's stat for one CPU.
std::string cpuLine(unsigned cpu, const std::array<std::uint64_t, 8>& modes);

/// What procfs tells of a process. Times are in clock ticks.
struct ProcessText {
  unsigned pid = 1;
  std::string name = "process";
  char state = 'S';
  unsigned parentPid = 0;
  std::uint64_t userTime = 0;
  std::uint64_t systemTime = 0;
  std::uint64_t startTime = 0;
};

/// The text of procfs's <pid>/stat.
std::string processStat(const ProcessText& process);

}  // namespace qumetra::test
