// Memory that runs out at a chosen moment.
//
// Only programs that link the library qumetra_failing_allocation have this class; in them it
// replaces the global `operator new` in all its forms but those with an alignment, also for the
// shared libraries they use. What asks `malloc` itself never fails here.
#pragma once

#include <cstddef>

namespace qumetra::test {

/// Lets one allocation of this thread fail: the one that comes after `countdown` others, 0 the very
/// next. It throws `std::bad_alloc`, or returns null in its nothrow form; those after it succeed
/// again. Nobody counts an action's allocations: try one after the other until none is left to
/// fail.
///
///     bool failed = true;
///     for (std::size_t countdown = 0; failed; ++countdown) {
///       Writer writer;
///       {
///         const FailingAllocation failing(countdown);
///         writer.writeMessage(metric);
///         failed = failing.happened();
///       }
///       // Look at the writer here, where memory is to be had again.
///     }
///
/// The end of its life ends the countdown. REQUIRES: no other one lives in this thread.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t countdown);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  /// Whether the allocation has come, and failed.
  bool happened() const;
};

}  // namespace qumetra::test
