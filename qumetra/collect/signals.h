// The signals that steer a run from outside, and what is told when the process leaves by one.
#pragma once

#include <string>

namespace qumetra {

class StopSignal;

/// Catches signals as long as it lives, and restores what was there before at its end.
///
///     SIGINT, SIGTERM, SIGHUP   the first becomes a stop request: what came so far is still made
///                               into results. A second one leaves at once: the last words go to
///                               standard error, and the process ends with status 128 and the
///                               signal's number.
///     SIGUSR1                   becomes a flush request.
///     SIGXFSZ                   is ignored: a file that reaches the limit of its size is a failed
///                               write like any other.
///     SIGSEGV, SIGBUS, SIGFPE,  print the last words and then do what they would have done.
///     SIGILL, SIGABRT
///
/// A SIGINT or SIGHUP that was ignored before stays ignored: whoever started this process in the
/// background, or so that it outlives its terminal, wants it to go on.
///
///     StopSignal stop;
///     SignalWatch watch(stop);
///     watch.setLastWords("What was received is kept in " + area.path().string());
///     while (!stop.stopRequested() && reader.readLine()) {}
///
/// At most one lives at a time. The stop signal is borrowed and must outlive it. Programs that are
/// started meanwhile get the default actions.
class SignalWatch {
 public:
  explicit SignalWatch(StopSignal& stop);
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;
  ~SignalWatch();

  /// One line, without a line end, that tells where to find what an early end leaves behind. Cut at
  /// 4 KiB. Empty for no last words.
  void setLastWords(const std::string& line);

  /// The signal that became the stop request, or 0.
  int stopSignalNumber() const;
};

}  // namespace qumetra
