// What a piece of code writes to the standard error stream.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <string>

namespace qumetra::test {

/// Runs `action` and returns what it wrote. The texts go through a pipe and must fit into one: this
/// works on a full disk too.
template <typename Action>
std::string standardErrorOf(Action action) {
  int ends[2] = {-1, -1};
  if (::pipe(ends) != 0) {
    return "<no pipe>";
  }
  const int former = ::dup(STDERR_FILENO);
  ::dup2(ends[1], STDERR_FILENO);
  action();
  std::fflush(stderr);
  ::dup2(former, STDERR_FILENO);
  ::close(former);
  ::close(ends[1]);
  std::string text(65536, '\0');
  const ssize_t got = ::read(ends[0], text.data(), text.size());
  ::close(ends[0]);
  return text.substr(0, got > 0 ? static_cast<std::size_t>(got) : 0);
}

}  // namespace qumetra::test
