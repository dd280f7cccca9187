#include "qumetra/cli/console.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "qumetra/cli/command.h"

namespace qumetra::cli {

void printError(const std::string& line) { printNote("qumetra: " + line); }

void printNote(const std::string& line) {
  // In one piece, so that lines of several processes do not mix.
  const std::string text = line + '\n';
  std::fwrite(text.data(), 1, text.size(), stderr);
}

void printResult(const std::string& text) {
  const bool written =
      std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
  if (!written) {
    throw UsageError("cannot write to standard output: " + std::generic_category().message(errno));
  }
}

}  // namespace qumetra::cli
