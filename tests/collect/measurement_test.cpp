// When samples and flushes come, on a clock that the tests move.
#include "qumetra/collect/measurement.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/handles.h"
#include "qumetra/collect/measurement_clock.h"
#include "qumetra/collect/named.h"
#include "qumetra/collect/tee_sink.h"
#include "qumetra/model/model.h"
#include "tests/collect/collector_fixture.h"

namespace qumetra::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Gt;
using testing::SizeIs;

constexpr std::uint64_t kMillisecond = 1'000'000;
constexpr std::uint64_t kSecond = 1000 * kMillisecond;

/// A clock that jumps to each deadline that is waited for, or behind it.
class JumpingClock : public MeasurementClock {
 public:
  std::uint64_t now() override { return m_now; }
  void waitUntil(std::uint64_t deadline, StopSignal&, const ChildProcess*) override {
    m_now = std::max(m_now, wakeAt ? wakeAt(deadline) : deadline);
  }

  /// When a wait for a deadline ends; without it, on time.
  std::function<std::uint64_t(std::uint64_t deadline)> wakeAt;

 private:
  std::uint64_t m_now = 0;
};

/// Counts its readings.
class CountingCollector : public Collector {
 public:
  SourceInfo info() const override { return {.name = "count", .description = "", .reads = ""}; }
  void open(CollectorContext& context) override {
    m_metric = &addMetric(context, MetricSpec());
    m_metric->addColumn(context.entities.system(), context.model.addDescriptor(named("Count")));
  }

 protected:
  void read(std::uint64_t now) override { m_metric->set(0, 1, now); }

 private:
  SampledMetric* m_metric = nullptr;
};

/// Keeps the times of the samples that each flush hands out.
class FlushSink : public KeepingSink {
 public:
  void sample(const pwr::Metric& metric) override {
    m_samples.push_back(metric.getData().timestamp);
  }
  void flush(const pwr::SystemMetadata& flushed) override {
    KeepingSink::flush(flushed);
    files.push_back(std::exchange(m_samples, {}));
  }
  bool hasUnflushed() const { return !m_samples.empty(); }

  std::vector<std::vector<std::uint64_t>> files;

 private:
  std::vector<std::uint64_t> m_samples;
};

class MeasurementTest : public CollectorFixture {
 protected:
  MeasurementTest() {
    plan.duration = 5 * kSecond;
    plan.interval = 100 * kMillisecond;
    plan.flushPeriod = kSecond;
    plan.isLive = true;
  }

  MeasurementEnd measure() {
    std::vector<std::unique_ptr<Collector>> collectors;
    collectors.push_back(std::make_unique<CountingCollector>());
    openAndStart(*collectors.front());
    Measurement measurement(plan, collectors, metadata, stop, clock);
    TeeSink tee{&flushed};
    const MeasurementEnd end = measurement.run(tee, nullptr, nullptr);
    EXPECT_FALSE(flushed.hasUnflushed());
    return end;
  }

  MeasurementPlan plan;
  pwr::SystemMetadata metadata;
  StopSignal stop;
  JumpingClock clock;
  FlushSink flushed;
};

TEST_F(MeasurementTest, FiveSecondsFlushFourTimesAndAtTheEnd) {
  measure();
  EXPECT_THAT(flushed.flushes,
              ElementsAre(kSecond, 2 * kSecond, 3 * kSecond, 4 * kSecond, 5 * kSecond));
  EXPECT_THAT(flushed.files, Each(SizeIs(10)));
  EXPECT_EQ(kSecond, flushed.files.at(0).back()) << "the sample of its own time is in";
}

TEST_F(MeasurementTest, TimersThatAreLateChangeNoFile) {
  clock.wakeAt = [](std::uint64_t deadline) { return deadline + 60 * kMillisecond; };
  measure();
  EXPECT_THAT(flushed.files, SizeIs(5));
  EXPECT_THAT(flushed.files, Each(SizeIs(10)));
}

TEST_F(MeasurementTest, FlushesThatAreLateAreServedBeforeTheSampleThatIsLateToo) {
  clock.wakeAt = [](std::uint64_t deadline) {
    return deadline == 1500 * kMillisecond ? 3300 * kMillisecond : deadline;
  };
  const MeasurementEnd end = measure();
  ASSERT_THAT(flushed.files, SizeIs(5));
  EXPECT_EQ(1400 * kMillisecond, flushed.files.at(1).back());
  EXPECT_THAT(flushed.files.at(2), ElementsAre(3300 * kMillisecond));
  EXPECT_EQ(3400 * kMillisecond, flushed.files.at(3).front());
  EXPECT_THAT(flushed.flushes,
              ElementsAre(kSecond, 2 * kSecond, 3300 * kMillisecond, 4 * kSecond, 5 * kSecond));
  EXPECT_EQ(0U, end.outcome.joinedFlushes);
}

TEST_F(MeasurementTest, AFlushThatIsLaterThanTheEndIsNotLost) {
  clock.wakeAt = [](std::uint64_t deadline) {
    return deadline == 3900 * kMillisecond ? 5200 * kMillisecond : deadline;
  };
  measure();
  ASSERT_THAT(flushed.files, SizeIs(5));
  EXPECT_EQ(3800 * kMillisecond, flushed.files.at(3).back());
  EXPECT_THAT(flushed.files.at(4), ElementsAre(5200 * kMillisecond));
  EXPECT_EQ(5200 * kMillisecond, flushed.flushes.back());
}

TEST_F(MeasurementTest, ALateEndHasNoFlushOfThePeriodThatEndsThen) {
  clock.wakeAt = [](std::uint64_t deadline) {
    return deadline == 5 * kSecond ? 7 * kSecond : deadline;
  };
  measure();
  EXPECT_THAT(flushed.files, SizeIs(5));
}

TEST_F(MeasurementTest, WhateverTheDelaysThereAreFiveFilesWithAllSamples) {
  std::mt19937 random(5);
  std::uniform_int_distribution<std::uint64_t> delay(0, 2500);
  for (int round = 0; round < 300; ++round) {
    flushed.files.clear();
    flushed.flushes.clear();
    JumpingClock fresh;
    fresh.wakeAt = [&](std::uint64_t deadline) {
      return deadline + (random() % 5 == 0 ? delay(random) * kMillisecond : 0);
    };
    std::vector<std::unique_ptr<Collector>> collectors;
    Measurement measurement(plan, collectors, metadata, stop, fresh);
    TeeSink tee{&flushed};
    const MeasurementEnd end = measurement.run(tee, nullptr, nullptr);
    EXPECT_THAT(flushed.flushes, SizeIs(5));
    EXPECT_TRUE(std::is_sorted(flushed.flushes.begin(), flushed.flushes.end()));
    EXPECT_EQ(end.time, flushed.flushes.back());
  }
}

TEST_F(MeasurementTest, AStopFlushesOnceMore) {
  clock.wakeAt = [this](std::uint64_t deadline) {
    if (deadline == 2500 * kMillisecond) {
      stop.requestStop();
    }
    return deadline;
  };
  measure();
  EXPECT_THAT(flushed.flushes, ElementsAre(kSecond, 2 * kSecond, 2500 * kMillisecond));
}

TEST_F(MeasurementTest, AStopWhenAFlushIsDueLosesNeither) {
  clock.wakeAt = [this](std::uint64_t deadline) {
    if (deadline == 2 * kSecond) {
      stop.requestStop();
    }
    return deadline;
  };
  measure();
  ASSERT_THAT(flushed.files, SizeIs(3));
  EXPECT_THAT(flushed.files, Each(SizeIs(Gt(0U))));
  EXPECT_THAT(flushed.files.back(), ElementsAre(2 * kSecond));
}

TEST_F(MeasurementTest, ARequestIsServedByTheFlushThatIsDueAnyway) {
  clock.wakeAt = [this](std::uint64_t deadline) {
    if (deadline == 2 * kSecond) {
      stop.requestFlush();
    }
    return deadline;
  };
  measure();
  EXPECT_THAT(flushed.files, SizeIs(5));
}

TEST_F(MeasurementTest, ARequestInBetweenIsAFlushOfItsOwn) {
  clock.wakeAt = [this](std::uint64_t deadline) {
    if (deadline == 2300 * kMillisecond) {
      stop.requestFlush();
    }
    return deadline;
  };
  measure();
  EXPECT_THAT(flushed.flushes, ElementsAre(kSecond, 2 * kSecond, 2300 * kMillisecond, 3 * kSecond,
                                           4 * kSecond, 5 * kSecond));
}

TEST_F(MeasurementTest, AStallOfManyPeriodsJoinsTheOldestOfThem) {
  plan.duration = 200 * kSecond;
  clock.wakeAt = [](std::uint64_t deadline) {
    return deadline == kSecond ? 100 * kSecond : deadline;
  };
  const MeasurementEnd end = measure();
  EXPECT_EQ(89U, end.outcome.joinedFlushes);
  EXPECT_THAT(flushed.files, SizeIs(200 - 89));
}

TEST_F(MeasurementTest, FlushesOnRequestOnlyHaveNoPeriod) {
  plan.flushPeriod = 0;
  measure();
  EXPECT_THAT(flushed.flushes, ElementsAre(5 * kSecond));
}

TEST_F(MeasurementTest, ARecordingOnlyHasNoFlush) {
  plan.isLive = false;
  std::vector<std::unique_ptr<Collector>> collectors;
  Measurement measurement(plan, collectors, metadata, stop, clock);
  TeeSink tee{&flushed};
  measurement.run(tee, nullptr, nullptr);
  EXPECT_THAT(flushed.flushes, testing::IsEmpty());
}

TEST_F(MeasurementTest, NoTimeAtAllIsOneSampleAndOneFlush) {
  plan.duration = 0;
  measure();
  EXPECT_THAT(flushed.files, ElementsAre(SizeIs(1)));
}

}  // namespace
}  // namespace qumetra::test
