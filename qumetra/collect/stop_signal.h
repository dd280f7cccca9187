// How a running collection is told from outside to end or to flush.
#pragma once

#include <atomic>

namespace qumetra {

/// Requests to a collection, and a descriptor that wakes it up. The two request operations may be
/// called from any thread and from a signal handler; everything else belongs to the collection.
///
///     StopSignal g_stop;                                        // before the handler is installed
///     void onInterrupt(int) { g_stop.requestStop(); }           // SIGINT, SIGTERM
///     void onUser1(int) { g_stop.requestFlush(); }              // SIGUSR1
class StopSignal {
 public:
  /// Throws std::system_error when the system has no descriptor left.
  StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;
  ~StopSignal();

  /// Ends the collection at its next step; its results are still made. Lasts for good.
  void requestStop() noexcept;
  /// Asks for one flush. Requests before it is served count as one.
  void requestFlush() noexcept;

  bool stopRequested() const noexcept;
  /// True when a flush was asked for since the last call.
  bool takeFlushRequest() noexcept;

  /// Readable while there are requests that `clearWakeUp` has not seen.
  int descriptor() const noexcept;
  void clearWakeUp() noexcept;

 private:
  void wakeUp() noexcept;

  std::atomic<bool> m_stop{false};
  std::atomic<bool> m_flush{false};
  int m_descriptor = -1;
};

}  // namespace qumetra
