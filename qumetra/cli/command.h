// What the commands of the tool have in common.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qumetra::cli {

/// How the tool ends. A collection with a command ends with the command's status instead.
enum ExitStatus : int {
  kDone = 0,
  /// A writer's `init` or `fini` failed, or it logged that a result is not whole.
  kWriterFailed = 1,
  /// A result that was read back is faulty.
  kFaulty = 1,
  /// Wrong usage, or a file that cannot be read or written.
  kWrongInput = 2,
};

/// A wrong command line or a file that cannot be used. `what()` is one line for the user.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The options that every command takes.
struct CommonOptions {
  /// 0 quiet, 1 errors, 2 warnings.
  std::uint32_t verbosity = 1;
  std::vector<std::string> logTags;
  /// Program and arguments as they were given.
  std::vector<std::string> commandLine;
};

/// What a command does once the whole command line has been read. Returns the exit status.
using Action = std::function<int(const CommonOptions&)>;

// Each adds its command to the parser; when the command is the one that was given, `action` is set.
// `action` must outlive the parser.
void addWritersCommand(CLI::App& app, Action& action);
void addReplayCommand(CLI::App& app, Action& action);
void addCollectCommand(CLI::App& app, Action& action);
void addPlatformCommand(CLI::App& app, Action& action);
void addDumpCommand(CLI::App& app, Action& action);
void addCheckCommand(CLI::App& app, Action& action);

}  // namespace qumetra::cli
