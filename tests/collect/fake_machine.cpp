#include "tests/collect/fake_machine.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace qumetra::test {
namespace {

std::string cpuFolder(unsigned cpu) { return "devices/system/cpu/cpu" + std::to_string(cpu); }

std::string stateFolder(unsigned cpu, unsigned state) {
  return cpuFolder(cpu) + "/cpuidle/state" + std::to_string(state);
}

}  // namespace

void FakeMachine::writeProc(const std::string& name, const std::string& text) {
  writeFile(procfs() + "/" + name, text);
}

void FakeMachine::writeSys(const std::string& name, const std::string& text) {
  writeFile(sysfs() + "/" + name, text);
}

void FakeMachine::removeSys(const std::string& name) {
  ASSERT_GT(std::filesystem::remove_all(sysfs() + "/" + name), 0U) << name;
}

void FakeMachine::addCpu(unsigned cpu, int package, unsigned core) {
  const std::string folder = cpuFolder(cpu) + "/topology";
  writeSys(folder + "/physical_package_id", std::to_string(package) + "\n");
  writeSys(folder + "/core_id", std::to_string(core) + "\n");
}

void FakeMachine::addTwoPackages() {
  for (unsigned cpu = 0; cpu < 8; ++cpu) {
    addCpu(cpu, cpu % 4 < 2 ? 0 : 1, cpu % 2);
  }
  writeSys("devices/system/cpu/online", "0-7\n");
}

void FakeMachine::addIdleState(unsigned cpu, unsigned state, const std::string& name,
                               std::uint64_t time, std::uint64_t usage) {
  writeSys(stateFolder(cpu, state) + "/name", name + "\n");
  setIdleState(cpu, state, time, usage);
}

void FakeMachine::setIdleState(unsigned cpu, unsigned state, std::uint64_t time,
                               std::uint64_t usage) {
  writeSys(stateFolder(cpu, state) + "/time", std::to_string(time) + "\n");
  writeSys(stateFolder(cpu, state) + "/usage", std::to_string(usage) + "\n");
}

std::string cpuLine(unsigned cpu, const std::array<std::uint64_t, 8>& modes) {
  std::string line = "cpu" + std::to_string(cpu);
  for (const std::uint64_t mode : modes) {
    line += " " + std::to_string(mode);
  }
  return line + " 0 0\n";
}

std::string processStat(const ProcessText& process) {
  return std::to_string(process.pid) + " (" + process.name + ") " + process.state + " " +
         std::to_string(process.parentPid) + " 5 6 7 8 9 10 11 12 13 " +
         std::to_string(process.userTime) + " " + std::to_string(process.systemTime) +
         " 16 17 18 19 20 21 " + std::to_string(process.startTime) + " 23 24 25\n";
}

}  // namespace qumetra::test
