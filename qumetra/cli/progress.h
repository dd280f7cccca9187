// A line on the terminal that tells how far a long work is.
#pragma once

#include <chrono>
#include <string>

namespace qumetra::cli {

/// Shows one line on standard error and keeps it up to date, and wipes it at the end. Only a
/// terminal gets it, and only while NO_COLOR is not set.
///
///     Progress progress(true, std::chrono::seconds(1));
///     while (work()) {
///       if (progress.due()) progress.show(describe());
///     }
class Progress {
 public:
  /// `wanted` is false where the user asked for silence. Nothing is shown before `delay` is over,
  /// so that short work shows nothing.
  Progress(bool wanted, std::chrono::milliseconds delay);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  /// Whether the line is to be shown again: ten times per second at most.
  bool due();
  void show(const std::string& line);
  /// Wipes the line, for other output or at the end.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  bool m_enabled;
  bool m_shown = false;
  Clock::time_point m_next;
};

}  // namespace qumetra::cli
