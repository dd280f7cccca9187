// The processes and threads that the samples of this process's runs have mentioned.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace pwr {
class Process;
class Thread;
}  // namespace pwr

/// The fields of a process record.
struct KeltoProcess {
  std::uint32_t event = 0;
  std::uint32_t pid = 0;
  /// Start, or end in an end record; in ticks.
  std::uint64_t time = 0;
  std::string path;
};

/// The fields of a thread record.
struct KeltoThread {
  std::uint32_t event = 0;
  std::uint32_t pid = 0;
  std::uint32_t tid = 0;
  std::uint64_t time = 0;
};

// Hidden: the symbol of a global variable is its bare name, which another library may use too.
#pragma GCC visibility push(hidden)

/// By key, the object and the record that was last written of it. The objects are the host's and
/// live until the process ends, since these tables do.
extern std::map<std::string, std::pair<const pwr::Process*, KeltoProcess>> m_processes;
extern std::map<std::string, std::pair<const pwr::Thread*, KeltoThread>> m_threads;
/// The keys of `m_processes` by pid: a thread asks for the processes that could be its own.
extern std::map<std::uint32_t, std::set<std::string>> processKeysByPid;

#pragma GCC visibility pop
