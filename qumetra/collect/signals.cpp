#include "qumetra/collect/signals.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>

#include "qumetra/collect/stop_signal.h"

namespace qumetra {
namespace {

constexpr std::array<int, 10> kCaught = {SIGINT,  SIGTERM, SIGHUP, SIGUSR1, SIGXFSZ,
                                         SIGSEGV, SIGBUS,  SIGFPE, SIGILL,  SIGABRT};

// What the handlers use. They run between any two instructions, so all of it is atomic or set
// before the handlers are installed.
std::atomic<StopSignal*> s_stop{nullptr};
std::atomic<int> s_stopSignalNumber{0};
std::array<char, 4096> s_lastWords;
std::atomic<std::size_t> s_lastWordsSize{0};
std::array<struct sigaction, kCaught.size()> s_former;

static_assert(std::atomic<StopSignal*>::is_always_lock_free);
static_assert(std::atomic<int>::is_always_lock_free);
static_assert(std::atomic<std::size_t>::is_always_lock_free);

void writeLastWords() {
  const char* rest = s_lastWords.data();
  std::size_t size = s_lastWordsSize.load();
  while (size > 0) {
    const ssize_t written = ::write(STDERR_FILENO, rest, size);
    if (written <= 0) {
      return;
    }
    rest += written;
    size -= static_cast<std::size_t>(written);
  }
}

extern "C" void onStop(int number) {
  const int savedErrno = errno;
  int none = 0;
  if (!s_stopSignalNumber.compare_exchange_strong(none, number)) {
    writeLastWords();
    ::_exit(128 + number);
  }
  if (StopSignal* stop = s_stop.load()) {
    stop->requestStop();
  }
  errno = savedErrno;
}

extern "C" void onFlush(int) {
  const int savedErrno = errno;
  if (StopSignal* stop = s_stop.load()) {
    stop->requestFlush();
  }
  errno = savedErrno;
}

/// Puts the former action back. A fault meets it when it happens again after the return; a signal
/// that somebody sent has to be sent again.
extern "C" void onCrash(int number, siginfo_t* info, void*) {
  writeLastWords();
  const auto* place = std::find(kCaught.begin(), kCaught.end(), number);
  ::sigaction(number, &s_former[static_cast<std::size_t>(place - kCaught.begin())], nullptr);
  const bool wasSent = info->si_code <= 0;
  if (wasSent) {
    ::raise(number);
  }
}

struct sigaction actionFor(int number) {
  struct sigaction action {};
  action.sa_flags = SA_RESTART;
  ::sigemptyset(&action.sa_mask);
  switch (number) {
    case SIGINT:
    case SIGTERM:
    case SIGHUP:
      action.sa_handler = onStop;
      break;
    case SIGUSR1:
      action.sa_handler = onFlush;
      break;
    case SIGXFSZ:
      action.sa_handler = SIG_IGN;
      break;
    default:
      action.sa_sigaction = onCrash;
      action.sa_flags |= SA_SIGINFO;
  }
  return action;
}

/// Whether whoever started this process has taken the signal from it for good.
bool staysIgnored(int number, const struct sigaction& former) {
  return (number == SIGINT || number == SIGHUP) && former.sa_handler == SIG_IGN;
}

}  // namespace

SignalWatch::SignalWatch(StopSignal& stop) {
  s_stopSignalNumber = 0;
  s_lastWordsSize = 0;
  s_stop = &stop;
  for (std::size_t i = 0; i < kCaught.size(); ++i) {
    ::sigaction(kCaught[i], nullptr, &s_former[i]);
    if (!staysIgnored(kCaught[i], s_former[i])) {
      const struct sigaction action = actionFor(kCaught[i]);
      ::sigaction(kCaught[i], &action, nullptr);
    }
  }
}

SignalWatch::~SignalWatch() {
  for (std::size_t i = 0; i < kCaught.size(); ++i) {
    ::sigaction(kCaught[i], &s_former[i], nullptr);
  }
  s_stop = nullptr;
}

void SignalWatch::setLastWords(const std::string& line) {
  s_lastWordsSize = 0;
  const std::size_t size = std::min(line.size(), s_lastWords.size() - 1);
  std::memcpy(s_lastWords.data(), line.data(), size);
  s_lastWords[size] = '\n';
  s_lastWordsSize = line.empty() ? 0 : size + 1;
}

int SignalWatch::stopSignalNumber() const { return s_stopSignalNumber; }

}  // namespace qumetra
