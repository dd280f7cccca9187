// Series of a process that runs out of memory in the middle of an operation.
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/failing_allocation.h"
#include "writers/json_plugin_helper/series.h"

namespace {

using qumetra::test::failEachAllocation;

/// Longer than what a string holds without an allocation.
const std::string kNewState(40, 'b');

Series::StateIds otherIds() { return {{"a", 1}, {kNewState, 0}}; }

/// A series with one point, and what becomes of it.
class SeriesWithoutMemory : public ::testing::Test {
 protected:
  void start() {
    m_series.emplace("M", std::vector<JsonUnit>{}, "key", "name", pwr::Metric::SAMPLED_VALUE, true);
    m_series->addData(0, 1, "a", 1.0);
  }

  /// Each failure of `change` is told and leaves the series as it was.
  void expectAllOrNothingOf(const std::function<void(Series&)>& change) {
    bool threw = false;
    const auto tried = [&] {
      try {
        threw = false;
        change(*m_series);
      } catch (const std::bad_alloc&) {
        threw = true;
      }
    };
    failEachAllocation([this] { start(); }, tried,
                       [&](bool failed) {
                         EXPECT_EQ(threw, failed);
                         if (failed) {
                           expectUnchanged();
                         }
                       });
  }

  void expectUnchanged() const {
    EXPECT_EQ(m_series->getStates(), std::vector<std::string>{"a"});
    ASSERT_EQ(m_series->allPoints().size(), 1U);
    const Value& value = m_series->allPoints().front().getValue();
    EXPECT_EQ(value.getValues(), (std::vector<Value::Pair>{{0, 1.0}}));
  }

  std::optional<Series> m_series;
};

TEST_F(SeriesWithoutMemory, PointIsThereWithItsStateOrNotAtAll) {
  expectAllOrNothingOf([](Series& series) { series.addData(1, 2, kNewState, 2.0); });
  EXPECT_EQ(m_series->allPoints().size(), 2U);
}

TEST_F(SeriesWithoutMemory, RangeIsThereWithBothItsEndsOrNotAtAll) {
  expectAllOrNothingOf([](Series& series) { series.addData(1, 2, kNewState, 2.0, 3.0); });
  EXPECT_EQ(m_series->allPoints().back().getValue().getValues(),
            (std::vector<Value::Pair>{{1, 2.0}, {1, 3.0}}));
}

TEST_F(SeriesWithoutMemory, FurtherNumberIsThereWithItsStateOrNotAtAll) {
  expectAllOrNothingOf([](Series& series) { series.appendData(kNewState, 2.0); });
  EXPECT_EQ(m_series->allPoints().back().getValue().size(), 2U);
}

TEST_F(SeriesWithoutMemory, IdsOfPointsStayThoseOfTheStates) {
  expectAllOrNothingOf([](Series& series) {
    Series::StateIds ids = otherIds();
    series.updateStates(ids);
  });
  expectAllOrNothingOf(
      [](Series& series) { series.shareStates(std::make_shared<Series::StateIds>(otherIds())); });
}

TEST_F(SeriesWithoutMemory, SharedStatesOutliveANewOneThatFails) {
  const auto share = [this] {
    start();
    m_series->shareStates(std::make_shared<Series::StateIds>(otherIds()));
  };
  const auto add = [this] {
    try {
      m_series->addState(std::string(50, 'c'));
    } catch (const std::bad_alloc&) {
    }
  };
  failEachAllocation(share, add, [this](bool failed) {
    if (failed) {
      EXPECT_EQ(m_series->getStates(), (std::vector<std::string>{kNewState, "a"}));
    }
  });
}

}  // namespace
