#include "qumetra/collect/interval_schedule.h"

#include <gtest/gtest.h>

#include "qumetra/collect/child_process.h"
#include "qumetra/collect/clock.h"
#include "qumetra/collect/stop_signal.h"
#include "qumetra/collect/wake_up.h"

namespace qumetra::test {
namespace {

constexpr std::uint64_t kMillisecond = 1'000'000;

TEST(IntervalSchedule, DeadlinesAreMultiplesOfTheInterval) {
  IntervalSchedule schedule(1000, 100);
  EXPECT_EQ(1100U, schedule.next());
  schedule.advance(1100);
  EXPECT_EQ(1200U, schedule.next());
}

TEST(IntervalSchedule, ALateSampleDoesNotShiftTheNext) {
  IntervalSchedule schedule(1000, 100);
  schedule.advance(1199);
  EXPECT_EQ(1200U, schedule.next());
  EXPECT_EQ(0U, schedule.missed());
}

TEST(IntervalSchedule, MissedDeadlinesAreSkippedAndCounted) {
  IntervalSchedule schedule(1000, 100);
  schedule.advance(1350);
  EXPECT_EQ(1400U, schedule.next());
  EXPECT_EQ(2U, schedule.missed());
}

TEST(IntervalSchedule, ADeadlineThatIsReachedExactlyIsNotTheNext) {
  IntervalSchedule schedule(0, 10);
  schedule.advance(20);
  EXPECT_EQ(30U, schedule.next());
  EXPECT_EQ(1U, schedule.missed());
}

TEST(IntervalSchedule, AnIntervalOfZeroIsOneTick) {
  const IntervalSchedule schedule(5, 0);
  EXPECT_EQ(6U, schedule.next());
}

TEST(IntervalSchedule, DueAreThoseThatAreNotAhead) {
  IntervalSchedule schedule(1000, 100);
  EXPECT_EQ(0U, schedule.due(1099));
  EXPECT_EQ(1U, schedule.due(1100));
  EXPECT_EQ(3U, schedule.due(1399));
}

TEST(IntervalSchedule, AStepEndsOneDeadlineAndMissesNone) {
  IntervalSchedule schedule(1000, 100);
  schedule.step();
  EXPECT_EQ(1200U, schedule.next());
  EXPECT_EQ(2U, schedule.due(1350));
  EXPECT_EQ(0U, schedule.missed());
}

TEST(IntervalSchedule, SkippedDeadlinesAreMissed) {
  IntervalSchedule schedule(1000, 100);
  schedule.skip(3);
  EXPECT_EQ(1400U, schedule.next());
  EXPECT_EQ(3U, schedule.missed());
}

TEST(Clock, NeverStepsBack) {
  const std::uint64_t before = monotonicTicks();
  EXPECT_LE(before, monotonicTicks());
  EXPECT_GT(clockResolutionTicks(), 0U);
}

TEST(StopSignal, AStopLastsAndAFlushIsTakenOnce) {
  StopSignal signal;
  EXPECT_FALSE(signal.stopRequested());
  EXPECT_FALSE(signal.takeFlushRequest());
  signal.requestStop();
  signal.requestFlush();
  signal.requestFlush();
  EXPECT_TRUE(signal.stopRequested());
  EXPECT_TRUE(signal.stopRequested());
  EXPECT_TRUE(signal.takeFlushRequest());
  EXPECT_FALSE(signal.takeFlushRequest());
}

TEST(WakeUp, WaitsUntilTheDeadline) {
  StopSignal signal;
  const std::uint64_t deadline = monotonicTicks() + 20 * kMillisecond;
  while (monotonicTicks() < deadline) {
    waitFor(deadline, signal, nullptr);
  }
  EXPECT_LT(monotonicTicks(), deadline + 5'000 * kMillisecond);
}

TEST(WakeUp, ADeadlineThatIsOverDoesNotWait) {
  StopSignal signal;
  const std::uint64_t before = monotonicTicks();
  waitFor(0, signal, nullptr);
  EXPECT_LT(monotonicTicks() - before, 5'000 * kMillisecond);
}

TEST(WakeUp, ARequestThatCameBeforeEndsTheWaitAtOnce) {
  StopSignal signal;
  signal.requestStop();
  const std::uint64_t before = monotonicTicks();
  waitFor(before + 60'000 * kMillisecond, signal, nullptr);
  EXPECT_LT(monotonicTicks() - before, 30'000 * kMillisecond);
}

TEST(WakeUp, TheEndOfTheCommandEndsTheWait) {
  StopSignal signal;
  ChildProcess child({"true"});
  const std::uint64_t deadline = monotonicTicks() + 60'000 * kMillisecond;
  while (!child.poll() && monotonicTicks() < deadline) {
    waitFor(deadline, signal, &child);
  }
  EXPECT_LT(monotonicTicks(), deadline - 30'000 * kMillisecond);
}

}  // namespace
}  // namespace qumetra::test
