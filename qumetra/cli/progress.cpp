#include "qumetra/cli/progress.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace qumetra::cli {
namespace {

constexpr std::chrono::milliseconds kPeriod{100};
constexpr const char* kWipeLine = "\r\033[K";

void writeAtOnce(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

}  // namespace

Progress::Progress(bool wanted, std::chrono::milliseconds delay)
    : m_enabled(wanted && ::isatty(STDERR_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr),
      m_next(Clock::now() + delay) {}

Progress::~Progress() { clear(); }

bool Progress::due() { return m_enabled && Clock::now() >= m_next; }

void Progress::show(const std::string& line) {
  if (!m_enabled) {
    return;
  }
  // The cursor goes back to the first column, so that a line of the log overwrites this one.
  writeAtOnce(kWipeLine + line + "\r");
  m_shown = true;
  m_next = Clock::now() + kPeriod;
}

void Progress::clear() {
  if (m_shown) {
    writeAtOnce(kWipeLine);
    m_shown = false;
  }
}

}  // namespace qumetra::cli
