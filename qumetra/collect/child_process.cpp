#include "qumetra/collect/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include <fmt/format.h>

#include "qumetra/collect/collection.h"

namespace qumetra {
namespace {

std::string reason(int error) { return std::generic_category().message(error); }

/// A pipe that closes itself when another program takes over.
class ClosingPipe {
 public:
  ClosingPipe() {
    if (::pipe2(m_ends.data(), O_CLOEXEC) != 0) {
      throw CollectionError(fmt::format("pipe: {}", reason(errno)));
    }
  }
  ClosingPipe(const ClosingPipe&) = delete;
  ClosingPipe& operator=(const ClosingPipe&) = delete;
  ~ClosingPipe() {
    closeWriteEnd();
    ::close(m_ends[0]);
  }

  int writeEnd() const { return m_ends[1]; }
  void closeWriteEnd() {
    if (m_ends[1] >= 0) {
      ::close(m_ends[1]);
      m_ends[1] = -1;
    }
  }
  /// Waits for a number. Returns 0 when the other end closed without one.
  int readNumber() const {
    int number = 0;
    ssize_t count = 0;
    do {
      count = ::read(m_ends[0], &number, sizeof number);
    } while (count < 0 && errno == EINTR);
    return count == static_cast<ssize_t>(sizeof number) ? number : 0;
  }

 private:
  std::array<int, 2> m_ends{-1, -1};
};

/// The texts as the system takes them: pointers, and a null behind them.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

/// The environment of this process, with the changes.
std::vector<std::string> changedEnvironment(const EnvironmentChanges& changes) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (!changes.contains(text.substr(0, text.find('=')))) {
      variables.push_back(text);
    }
  }
  for (const auto& [name, value] : changes) {
    if (value) {
      variables.push_back(name + '=' + *value);
    }
  }
  return variables;
}

void limitOpenFiles(std::uint64_t openFiles) {
  rlimit limit{};
  if (openFiles > 0 && ::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    limit.rlim_cur = std::min<rlim_t>(openFiles, limit.rlim_max);
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
}

/// The child's part after the fork: only calls that are safe there. Tells the pipe why it failed.
[[noreturn]] void execute(char* const* arguments, char* const* environment, std::uint64_t openFiles,
                          int failurePipe) {
  limitOpenFiles(openFiles);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  // Caught signals are back at their defaults by themselves, ignored ones are not.
  ::signal(SIGXFSZ, SIG_DFL);
  ::execvpe(arguments[0], arguments, environment);
  const int error = errno;
  [[maybe_unused]] const auto ignored = ::write(failurePipe, &error, sizeof error);
  ::_exit(error == ENOENT ? CommandError::kNotFound : CommandError::kCannotRun);
}

/// Waits for a child that has ended or is about to, and lets the system forget it.
void reap(pid_t pid) {
  while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
  }
}

int statusOf(const siginfo_t& info) {
  constexpr int kSignalled = 128;
  return info.si_code == CLD_EXITED ? info.si_status : kSignalled + info.si_status;
}

int openPidDescriptor(pid_t pid) {
#ifdef SYS_pidfd_open
  return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
#else
  static_cast<void>(pid);
  return -1;
#endif
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const EnvironmentChanges& changes, std::uint64_t openFiles) {
  // Everything that allocates happens before the fork.
  std::vector<std::string> words = command;
  const std::vector<char*> arguments = pointersTo(words);
  std::vector<std::string> variables = changedEnvironment(changes);
  const std::vector<char*> environment = pointersTo(variables);

  ClosingPipe failure;
  m_pid = ::fork();
  if (m_pid < 0) {
    throw CommandError(fmt::format("{}: cannot be started: {}", command[0], reason(errno)),
                       CommandError::kCannotRun);
  }
  if (m_pid == 0) {
    execute(arguments.data(), environment.data(), openFiles, failure.writeEnd());
  }
  failure.closeWriteEnd();
  if (const int error = failure.readNumber(); error != 0) {
    reap(m_pid);
    throw CommandError(fmt::format("{}: cannot be run: {}", command[0], reason(error)),
                       error == ENOENT ? CommandError::kNotFound : CommandError::kCannotRun);
  }
  m_descriptor = openPidDescriptor(m_pid);
}

ChildProcess::~ChildProcess() {
  if (m_status) {
    reap(m_pid);
  }
  if (m_descriptor >= 0) {
    ::close(m_descriptor);
  }
}

std::optional<int> ChildProcess::poll() {
  if (m_status) {
    return m_status;
  }
  siginfo_t info{};
  const int result = ::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT);
  if (result == 0 && info.si_pid == m_pid) {
    m_status = statusOf(info);
  } else if (result < 0 && errno == ECHILD) {
    // Somebody else took the status, or SIGCHLD is ignored; it cannot be known any more.
    m_status = 0;
  }
  return m_status;
}

void ChildProcess::terminate() {
  if (!poll()) {
    ::kill(m_pid, SIGTERM);
  }
}

}  // namespace qumetra
