// The model that the JSON results are kept in.
#include "writers/json_plugin_helper/series.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Pairs = std::vector<Value::Pair>;
using Names = std::vector<std::string>;
using Ids = std::unordered_map<std::string, unsigned int>;

Series makeSeries(pwr::Metric::MetricType type = pwr::Metric::SAMPLED_RESIDENCY) {
  return {"category", {}, "key", "name", type, true};
}

Pairs valuesOf(const Series& series, std::size_t point) {
  return series.getData().at(point).getValue().getValues();
}

TEST(Value, KeepsPairsInOrder) {
  Value value(3, 1.5);
  value.addValue(1, 2.5);
  value.addValue(3, 3.5);
  EXPECT_EQ(value.getValues(), (Pairs{{3, 1.5}, {1, 2.5}, {3, 3.5}}));
  EXPECT_EQ(value.size(), 3U);
  EXPECT_EQ(value.id(1), 1U);
  EXPECT_EQ(value.number(2), 3.5);
}

TEST(Value, CopyIsOfItsOwn) {
  Value value(0, 1);
  value.addValue(1, 2);
  Value copy(value);
  copy.addValue(2, 3);
  EXPECT_EQ(value.getValues().size(), 2U);
  value = copy;
  copy.addValue(3, 4);
  EXPECT_EQ(value.getValues().size(), 3U);
}

TEST(Value, IdsAreReplacedByTheTable) {
  Value value(0, 1.0);
  value.addValue(1, 2.0);
  value.remapValues({5, 4});
  EXPECT_EQ(value.getValues(), (Pairs{{5, 1.0}, {4, 2.0}}));
}

TEST(Value, IdBeyondTheTableStays) {
  Value value(2, 1.0);
  value.addValue(0, 2.0);
  value.remapValues({7});
  EXPECT_EQ(value.getValues(), (Pairs{{2, 1.0}, {7, 2.0}}));
}

TEST(Value, OnePairNeedsNoBlockOfItsOwn) {
  // Points are what memory is made of: two times, one pair, and a pointer for what comes behind.
  EXPECT_LE(sizeof(Point), 40U);
}

TEST(Point, ForwardsToItsValue) {
  Point point(10, 20, Value(1, 2.5));
  point.remapValues({0, 9});
  EXPECT_EQ(point.getStartTimestamp(), 10U);
  EXPECT_EQ(point.getEndTimestamp(), 20U);
  EXPECT_EQ(std::as_const(point).getValue().getValues(), (Pairs{{9, 2.5}}));
}

TEST(JsonUnit, ThreeArgumentsMakeNoRate) {
  const JsonUnit unit("Energy", "mJ", 2.0);
  EXPECT_EQ(unit.getName(), "Energy");
  EXPECT_EQ(unit.getUnits(), "mJ");
  EXPECT_EQ(unit.getRateConversion(), 2.0);
  EXPECT_FALSE(unit.isCalculatedRate());
  EXPECT_TRUE(JsonUnit("Power", "mW", 2.0, true).isCalculatedRate());
}

TEST(Series, TellsWhatItWasMadeFrom) {
  const Series series("category", {{"Energy", "mJ", 1.0}}, "key", "name",
                      pwr::Metric::SAMPLED_VALUE, false);
  EXPECT_EQ(series.getCategory(), "category");
  EXPECT_EQ(series.getKey(), "key");
  EXPECT_EQ(series.getName(), "name");
  EXPECT_EQ(series.getUnits().at(0).getUnits(), "mJ");
  EXPECT_EQ(series.getType(), pwr::Metric::SAMPLED_VALUE);
  EXPECT_FALSE(series.hasStates());
  EXPECT_TRUE(series.getData().empty());
}

TEST(Series, TypeIsOneByteWide) {
  EXPECT_EQ(makeSeries(static_cast<pwr::Metric::MetricType>(0x102)).getType(),
            pwr::Metric::SAMPLED_VALUE);
  const auto wide = static_cast<pwr::Metric::MetricType>(0xff);
  EXPECT_EQ(makeSeries(wide).getType(), wide);
}

TEST(Series, StateAddedTwiceHasOneId) {
  Series series = makeSeries();
  series.addState("a");
  series.addState("a");
  EXPECT_EQ(series.getStates(), Names{"a"});
  EXPECT_EQ(series.getStateId("b"), 1U);
  EXPECT_EQ(series.getStateId("a"), 0U);
}

TEST(Series, StatesGetIdsAsTheyArrive) {
  Series series = makeSeries();
  series.addData(0, 1, "b", 1.0);
  series.addData(1, 2, "a", 2.0);
  EXPECT_EQ(series.getStates(), (Names{"b", "a"}));
  EXPECT_EQ(valuesOf(series, 0), (Pairs{{0, 1.0}}));
  EXPECT_EQ(valuesOf(series, 1), (Pairs{{1, 2.0}}));
}

TEST(Series, RangeIsTwoPairsUnderOneId) {
  Series series = makeSeries();
  series.addState("other");
  series.addData(3, 4, "a", 1.5, 2.5);
  EXPECT_EQ(valuesOf(series, 0), (Pairs{{1, 1.5}, {1, 2.5}}));
  EXPECT_EQ(series.getData().size(), 1U);
}

TEST(Series, AppendingAddsToTheLastPoint) {
  Series series = makeSeries();
  series.addData(0, 1, "a", 1.0);
  series.addData(1, 2, "a", 2.0);
  series.appendData("b", 3.0);
  EXPECT_EQ(valuesOf(series, 0), (Pairs{{0, 1.0}}));
  EXPECT_EQ(valuesOf(series, 1), (Pairs{{0, 2.0}, {1, 3.0}}));
}

TEST(Series, AppendingWithoutAPointKeepsTheStateOnly) {
  Series series = makeSeries();
  series.appendData("a", 1.0);
  EXPECT_TRUE(series.getData().empty());
  EXPECT_EQ(series.getStates(), Names{"a"});
}

TEST(Series, UpdatingStatesSwapsIdsInAllPoints) {
  Series series = makeSeries();
  series.addData(0, 1, "b", 1.0);
  series.appendData("a", 2.0);
  series.addData(1, 2, "a", 3.0);
  Ids ids{{"a", 0}, {"b", 1}};
  series.updateStates(ids);
  EXPECT_EQ(valuesOf(series, 0), (Pairs{{1, 1.0}, {0, 2.0}}));
  EXPECT_EQ(valuesOf(series, 1), (Pairs{{0, 3.0}}));
  EXPECT_EQ(series.getStates(), (Names{"a", "b"}));
}

TEST(Series, UpdatingStatesBringsThoseThatItNeverHad) {
  Series series = makeSeries();
  series.addData(0, 1, "b", 1.0);
  Ids ids{{"a", 0}, {"b", 2}, {"c", 1}};
  series.updateStates(ids);
  EXPECT_EQ(series.getStates(), (Names{"a", "c", "b"}));
  EXPECT_EQ(valuesOf(series, 0), (Pairs{{2, 1.0}}));
}

TEST(Series, UpdatingStatesInsertsWhatTheMapLacks) {
  Series series = makeSeries();
  series.addData(0, 1, "a", 1.0);
  series.addData(0, 1, "b", 1.0);
  Ids ids;
  series.updateStates(ids);
  EXPECT_EQ(ids, (Ids{{"a", 0}, {"b", 0}}));
  EXPECT_EQ(valuesOf(series, 1), (Pairs{{0, 1.0}}));
}

TEST(Series, UpdatingStatesLeavesTheNextIdAlone) {
  Series series = makeSeries();
  series.addState("a");
  Ids ids{{"a", 0}, {"b", 1}};
  series.updateStates(ids);
  EXPECT_EQ(series.getStateId("c"), 1U);
  EXPECT_EQ(series.getStateId("d"), 2U);
}

TEST(Series, SharedStatesReadAsUpdatedOnes) {
  Series series = makeSeries();
  series.addData(0, 1, "b", 1.0);
  const auto ids = std::make_shared<const Ids>(Ids{{"a", 0}, {"b", 2}, {"c", 1}});
  series.shareStates(ids);
  EXPECT_EQ(series.getStates(), (Names{"a", "c", "b"}));
  EXPECT_EQ(valuesOf(series, 0), (Pairs{{2, 1.0}}));
  series.addData(1, 2, "c", 2.0);
  EXPECT_EQ(valuesOf(series, 1), (Pairs{{1, 2.0}}));
}

TEST(Series, SharedStatesCanBeSharedAnew) {
  Series series = makeSeries();
  series.addData(0, 1, "b", 1.0);
  series.shareStates(std::make_shared<const Ids>(Ids{{"a", 0}, {"b", 1}}));
  series.shareStates(std::make_shared<const Ids>(Ids{{"a", 1}, {"b", 0}}));
  EXPECT_EQ(series.getStates(), (Names{"b", "a"}));
  EXPECT_EQ(valuesOf(series, 0), (Pairs{{0, 1.0}}));
}

TEST(Series, NewStateIsNoOthersThatShare) {
  Series series = makeSeries();
  series.addState("a");
  const auto ids = std::make_shared<const Ids>(Ids{{"a", 0}, {"b", 1}});
  series.shareStates(ids);
  EXPECT_EQ(ids.use_count(), 2);
  EXPECT_EQ(series.getStateId("c"), 1U);
  EXPECT_EQ(ids.use_count(), 1);
  EXPECT_EQ(*ids, (Ids{{"a", 0}, {"b", 1}}));
}

TEST(Series, IdsBeyondTheNumberOfStatesDoNoHarm) {
  Series series = makeSeries();
  series.addData(0, 1, "a", 1.0);
  Ids ids{{"a", 4000000000U}};
  series.updateStates(ids);
  EXPECT_EQ(series.getStates(), Names{""});
  series.updateStates(ids);
  EXPECT_EQ(valuesOf(series, 0), (Pairs{{4000000000U, 1.0}}));
}

}  // namespace
