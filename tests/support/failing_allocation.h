// Memory that runs out at a chosen moment.
//
// Only programs that link the library qumetra_failing_allocation have this class; in them it
// replaces the global `operator new` in all its forms but those with an alignment, also for the
// shared libraries they use. What asks `malloc` itself never fails here.
#pragma once

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

namespace qumetra::test {

/// Lets one allocation of this thread fail: the one that comes after `countdown` others, 0 the very
/// next. It throws `std::bad_alloc`, or returns null in its nothrow form; those after it succeed
/// again. The end of its life ends the countdown. REQUIRES: no other one lives in this thread.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t countdown);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  /// Whether the allocation has come, and failed.
  bool happened() const;
};

/// Calls `action` while an allocation of it fails, again and again, each time the next
/// one, until all succeed: so every failure comes once. `check(failed)` is called behind each call,
/// where memory is to be had again, and last with false. What `action` changes, it has to set up
/// afresh by `prepare`.
///
///     failEachAllocation([&] { writer.emplace(); },
///                        [&] { status = writer->writeMessage(metric); },
///                        [&](bool failed) { EXPECT_EQ(status, failed ? 1 : 0); });
template <typename Prepare, typename Action, typename Check>
void failEachAllocation(Prepare prepare, Action action, Check check) {
  bool failed = true;
  for (std::size_t countdown = 0; failed && !::testing::Test::HasFailure(); ++countdown) {
    const ::testing::ScopedTrace trace(__FILE__, __LINE__,
                                       "countdown " + std::to_string(countdown));
    prepare();
    {
      const FailingAllocation failing(countdown);
      action();
      failed = failing.happened();
    }
    EXPECT_TRUE(failed || countdown > 0) << "there is nothing that can fail";
    check(failed);
  }
}

}  // namespace qumetra::test
