// The command line tool, run as a child process in a directory of its own.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace qumetra::test {

/// How a run of the tool ended.
struct ToolResult {
  /// The exit status, or 128 and the number of the signal that killed it.
  int status = -1;
  std::string out;
  std::string err;
};

/// Runs the tool. Its current directory, and its TMPDIR, are fresh ones that the tool has to
/// itself; standard output and error go to files, or standard error to a terminal.
class Tool {
 public:
  using Arguments = std::vector<std::string>;

  /// `program` is the tool that was built, unless told otherwise.
  explicit Tool(std::string program = QM_TOOL);

  /// Runs the tool to its end.
  ToolResult run(const Arguments& arguments);
  /// Starts it.
  void start(const Arguments& arguments);
  void sendSignal(int number) const;
  /// Waits for its end.
  ToolResult wait();

  /// A variable that the tool gets.
  void setVariable(const std::string& name, const std::string& value);
  /// Standard error is a terminal from now on.
  void useTerminal() { m_useTerminal = true; }

  /// A file in the tool's directory.
  std::string file(const std::string& name) const;
  /// Writes lines to a file there and returns its path.
  std::string write(const std::string& name, const std::vector<std::string>& lines) const;
  /// The names in the tool's directory, in order.
  std::vector<std::string> files() const;
  /// What is in the tool's TMPDIR.
  std::vector<std::filesystem::path> temporaries() const;

 private:
  [[noreturn]] void execute(const Arguments& arguments, int standardError) const;

  std::string m_program;
  std::map<std::string, std::string> m_variables;
  bool m_useTerminal = false;
  TempDir m_work;
  TempDir m_temporary;
  TempDir m_streams;
  pid_t m_pid = -1;
  int m_terminal = -1;
};

/// Waits until `condition` holds, some seconds at most. Returns whether it does.
bool eventually(const std::function<bool()>& condition);

}  // namespace qumetra::test
