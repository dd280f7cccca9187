// A command that runs while something is measured.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qumetra {

/// Variables by name that a command gets other than this process has them; those without a value
/// are left out.
using EnvironmentChanges = std::map<std::string, std::optional<std::string>>;

/// A started command. Destroying it leaves a command that runs alone. One that has ended keeps its
/// number and its place in procfs until then, so that its last figures can be read. One thread.
class ChildProcess {
 public:
  /// Starts `command`, its program searched in PATH, with the signal mask empty and the standard
  /// streams of this process. Returns when the program has replaced the child, and throws
  /// `CommandError` when it could not. `openFiles` is the limit of open files that the command
  /// gets, 0 for that of this process. REQUIRES: `command` is not empty.
  explicit ChildProcess(const std::vector<std::string>& command,
                        const EnvironmentChanges& changes = {}, std::uint64_t openFiles = 0);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  pid_t pid() const { return m_pid; }
  /// Readable once the command has ended; -1 where the system cannot tell, so that `poll` has to be
  /// called from time to time.
  int descriptor() const { return m_descriptor; }

  /// The exit status, or 128 and the number of the signal that ended it; nothing while it runs.
  std::optional<int> poll();
  /// Sends SIGTERM to a command that still runs.
  void terminate();

 private:
  pid_t m_pid = -1;
  int m_descriptor = -1;
  std::optional<int> m_status;
};

}  // namespace qumetra
