#include "tests/cli/tool.h"

#include <fcntl.h>
#include <pty.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

namespace qumetra::test {
namespace {

std::vector<std::filesystem::path> entriesOf(const std::filesystem::path& directory) {
  std::vector<std::filesystem::path> entries;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    entries.push_back(entry.path());
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

int openForWriting(const std::string& path) {
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
}

/// All that comes from a terminal until nobody holds its other side.
std::string readTerminal(int terminal) {
  std::string text;
  std::array<char, 4096> buffer;
  for (ssize_t size = 0; (size = ::read(terminal, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(size));
  }
  return text;
}

}  // namespace

Tool::Tool(std::string program) : m_program(std::move(program)) {
  setVariable("TMPDIR", m_temporary.path().string());
}

ToolResult Tool::run(const Arguments& arguments) {
  start(arguments);
  return wait();
}

void Tool::start(const Arguments& arguments) {
  int standardError = -1;
  if (m_useTerminal) {
    if (::openpty(&m_terminal, &standardError, nullptr, nullptr, nullptr) != 0) {
      throw std::runtime_error("no terminal");
    }
  } else {
    standardError = openForWriting(m_streams.file("err"));
  }
  m_pid = ::fork();
  if (m_pid == 0) {
    execute(arguments, standardError);
  }
  ::close(standardError);
}

void Tool::execute(const Arguments& arguments, int standardError) const {
  std::vector<char*> words = {const_cast<char*>("qumetra")};
  for (const std::string& argument : arguments) {
    words.push_back(const_cast<char*>(argument.c_str()));
  }
  words.push_back(nullptr);
  ::unsetenv("NO_COLOR");
  for (const auto& [name, value] : m_variables) {
    ::setenv(name.c_str(), value.c_str(), 1);
  }
  ::dup2(openForWriting(m_streams.file("out")), STDOUT_FILENO);
  ::dup2(standardError, STDERR_FILENO);
  if (::chdir(m_work.path().c_str()) == 0) {
    ::execv(m_program.c_str(), words.data());
  }
  ::_exit(99);
}

void Tool::sendSignal(int number) const { ::kill(m_pid, number); }

ToolResult Tool::wait() {
  ToolResult result;
  if (m_useTerminal) {
    result.err = readTerminal(m_terminal);
    ::close(m_terminal);
  }
  int status = 0;
  ::waitpid(m_pid, &status, 0);
  result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  result.out = readFile(m_streams.file("out"));
  if (!m_useTerminal) {
    result.err = readFile(m_streams.file("err"));
  }
  return result;
}

void Tool::setVariable(const std::string& name, const std::string& value) {
  m_variables[name] = value;
}

std::string Tool::file(const std::string& name) const { return m_work.file(name); }

std::string Tool::write(const std::string& name, const std::vector<std::string>& lines) const {
  std::string text;
  for (const std::string& line : lines) {
    text += line + '\n';
  }
  writeFile(file(name), text);
  return file(name);
}

std::vector<std::string> Tool::files() const {
  std::vector<std::string> names;
  for (const auto& path : entriesOf(m_work.path())) {
    names.push_back(path.filename().string());
  }
  return names;
}

std::vector<std::filesystem::path> Tool::temporaries() const {
  return entriesOf(m_temporary.path());
}

bool eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

}  // namespace qumetra::test
