#include "qumetra/collect/summary_tables.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/handles.h"
#include "host/quantity.h"
#include "qumetra/collect/named.h"
#include "qumetra/collect/quantities.h"
#include "qumetra/collect/sampled_metric.h"
#include "qumetra/model/model.h"
#include "tests/collect/keeping_sink.h"

namespace qumetra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Row = std::vector<std::optional<std::string>>;

constexpr std::uint64_t kSecond = 1'000'000'000;

class SummaryTest : public testing::Test {
 protected:
  MetricSpec spec(pwr::Metric::MetricType type) {
    MetricSpec result;
    result.name = "Thing";
    result.metricId = 7;
    result.type = type;
    result.stateTitle = "State";
    result.entityTitle = "CPU";
    result.totalsName = "All CPUs";
    return result;
  }
  void deliver(const SampledMetric& metric) {
    deliverSummary(metric.spec(), metric.columns(), context);
  }

  Model model;
  KeepingSink sink;
  SummaryContext context{.model = model, .sink = sink};
  const pwr::EntityHandle& cpu0 = model.addEntity(named("CPU 0"));
  const pwr::EntityHandle& cpu1 = model.addEntity(named("CPU 1"));
  const pwr::DataDescriptor& idle = model.addDescriptor(named("idle"));
  const pwr::DataDescriptor& busy = model.addDescriptor(named("busy"));
};

class ResidencySummary : public SummaryTest {
 protected:
  static constexpr const char* kTitle = "Thing Summary: Residency (Percentage and Time)";
  SampledMetric metric{model, spec(pwr::Metric::SAMPLED_RESIDENCY)};
};

TEST_F(ResidencySummary, ARowPerCpuHasPercentagesThenTimes) {
  metric.addColumn(cpu0, idle);
  metric.addColumn(cpu0, busy);
  metric.addColumn(cpu1, idle);
  metric.addColumn(cpu1, busy);
  metric.set(0, 1 * kSecond, 2 * kSecond);
  metric.set(0, kSecond / 2, 2 * kSecond);
  metric.set(1, kSecond / 4, 4 * kSecond);
  metric.set(2, 3 * kSecond, 4 * kSecond);
  metric.set(3, kSecond, 4 * kSecond);
  deliver(metric);
  EXPECT_THAT(sink.rowsOf(kTitle),
              ElementsAre(Row{"CPU 0", "37.50", "6.25", "1.500", "0.250"},
                          Row{"CPU 1", "75.00", "25.00", "3.000", "1.000"},
                          Row{"All CPUs", "56.25", "15.62", "4.500", "1.250"}));
}

TEST_F(ResidencySummary, TheTitleTableComesFirstAndNamesTheColumns) {
  metric.addColumn(cpu0, idle);
  metric.addColumn(cpu0, busy);
  metric.set(0, 1, 2);
  metric.set(1, 1, 2);
  deliver(metric);
  ASSERT_EQ(3U, sink.tables.size());
  EXPECT_EQ(0, sink.tables[0].type);
  EXPECT_EQ(kTitle, sink.tables[0].title);
  EXPECT_EQ(7U, sink.tables[0].metricId);
  EXPECT_THAT(sink.tables[0].keyNames, ElementsAre("CPU"));
  EXPECT_THAT(sink.tables[0].fieldNames,
              ElementsAre("idle (%)", "busy (%)", "idle (s)", "busy (s)"));
  EXPECT_THAT(sink.tables[0].cells, IsEmpty());
  for (const KeptTable& row : {sink.tables[1], sink.tables[2]}) {
    EXPECT_EQ(1, row.type);
    EXPECT_EQ(sink.tables[0].id, row.id);
    EXPECT_EQ(sink.tables[0].fieldNames, row.fieldNames);
  }
}

TEST_F(ResidencySummary, ANoteTellsWhatTheTotalsAre) {
  metric.addColumn(cpu0, idle);
  metric.set(0, 1, 2);
  deliver(metric);
  EXPECT_THAT(sink.tables.at(0).notesAfter,
              ElementsAre("All CPUs: average percentages and total times."));
}

TEST_F(ResidencySummary, AStateThatACpuLacksIsAnEmptyCell) {
  metric.addColumn(cpu0, idle);
  metric.addColumn(cpu1, busy);
  metric.set(0, kSecond, 2 * kSecond);
  metric.set(1, kSecond, 4 * kSecond);
  deliver(metric);
  EXPECT_THAT(sink.rowsOf(kTitle),
              ElementsAre(Row{"CPU 0", "50.00", std::nullopt, "1.000", std::nullopt},
                          Row{"CPU 1", std::nullopt, "25.00", std::nullopt, "1.000"},
                          Row{"All CPUs", "50.00", "25.00", "1.000", "1.000"}));
}

TEST_F(ResidencySummary, WhatWasNeverMeasuredIsAnEmptyCell) {
  metric.addColumn(cpu0, idle);
  deliver(metric);
  EXPECT_THAT(sink.rowsOf(kTitle), ElementsAre(Row{"CPU 0", std::nullopt, std::nullopt},
                                               Row{"All CPUs", std::nullopt, std::nullopt}));
}

TEST_F(ResidencySummary, AMetricWithoutColumnsHasNoTable) {
  deliver(metric);
  EXPECT_TRUE(sink.tables.empty());
}

class CounterSummary : public SummaryTest {
 protected:
  static constexpr const char* kTitle = "Thing Summary: Average Rate and Total";
  MetricSpec counterSpec() {
    MetricSpec result = spec(pwr::Metric::SAMPLED_DELTA);
    result.quantity = &addCountQuantity(model, "Things", "things");
    return result;
  }
  SampledMetric metric{model, counterSpec()};
};

TEST_F(CounterSummary, ARowPerCpuAndStateHasRateAndTotal) {
  metric.addColumn(cpu0, idle);
  metric.addColumn(cpu0, busy);
  metric.addColumn(cpu1, idle);
  metric.addColumn(cpu1, busy);
  metric.set(0, 10, 2 * kSecond);
  metric.set(0, 5, 2 * kSecond);
  metric.set(1, 1, 4 * kSecond);
  metric.set(2, 8, 2 * kSecond);
  metric.set(3, 0, 2 * kSecond);
  deliver(metric);
  EXPECT_THAT(
      sink.rowsOf(kTitle),
      ElementsAre(Row{"CPU 0", "idle", "3.75", "15"}, Row{"CPU 0", "busy", "0.25", "1"},
                  Row{"CPU 1", "idle", "4.00", "8"}, Row{"CPU 1", "busy", "0.00", "0"},
                  Row{"All CPUs", "idle", "7.75", "23"}, Row{"All CPUs", "busy", "0.25", "1"}));
}

TEST_F(CounterSummary, RateAndTotalAreTheLastTwoColumns) {
  metric.addColumn(cpu0, idle);
  metric.addColumn(cpu0, busy);
  deliver(metric);
  const KeptTable* title = sink.titleTable(kTitle);
  ASSERT_NE(nullptr, title);
  EXPECT_THAT(title->keyNames, ElementsAre("CPU", "State"));
  EXPECT_THAT(title->fieldNames, ElementsAre("Average Rate (things/s)", "Total (things)"));
}

TEST_F(CounterSummary, ASingleStateNeedsNoKeyColumn) {
  metric.addColumn(cpu0, idle);
  metric.set(0, 6, 4 * kSecond);
  deliver(metric);
  EXPECT_THAT(sink.titleTable(kTitle)->keyNames, ElementsAre("CPU"));
  EXPECT_THAT(sink.rowsOf(kTitle),
              ElementsAre(Row{"CPU 0", "1.50", "6"}, Row{"All CPUs", "1.50", "6"}));
}

TEST_F(CounterSummary, WithoutANameForThemThereAreNoTotals) {
  MetricSpec plain = counterSpec();
  plain.totalsName = "";
  SampledMetric machineWide(model, plain);
  machineWide.addColumn(cpu0, idle);
  machineWide.set(0, 6, 4 * kSecond);
  deliver(machineWide);
  EXPECT_THAT(sink.rowsOf(kTitle), ElementsAre(Row{"CPU 0", "1.50", "6"}));
}

TEST_F(CounterSummary, TablesOfDifferentMetricsHaveDifferentIds) {
  metric.addColumn(cpu0, idle);
  deliver(metric);
  const std::uint32_t first = sink.tables.back().id;
  deliver(metric);
  EXPECT_NE(first, sink.tables.back().id);
}

TEST_F(CounterSummary, HandlesOfARecordingKeepTheirIds) {
  constexpr std::uint64_t kFirst = 0x80000000;
  HandleSpec taken = named("taken");
  taken.id = kFirst;
  model.addEntity(taken);
  context.nextHandleId = kFirst;
  metric.addColumn(cpu0, idle);
  deliver(metric);
  EXPECT_EQ(kFirst + 4, context.nextHandleId) << "one is taken, a key and two fields are made";
}

TEST_F(ResidencySummary, IntervalsWithoutAnyTimeAreEmptyCells) {
  metric.addColumn(cpu0, idle);
  metric.set(0, 5, 0);
  deliver(metric);
  EXPECT_THAT(sink.rowsOf(kTitle), ElementsAre(Row{"CPU 0", std::nullopt, std::nullopt},
                                               Row{"All CPUs", std::nullopt, std::nullopt}));
}

TEST_F(ResidencySummary, TimesThatAddUpToNothingAreEmptyCells) {
  constexpr std::uint64_t kHalf = std::uint64_t{1} << 63U;
  metric.addColumn(cpu0, idle);
  metric.addColumn(cpu1, idle);
  metric.set(0, 5, kHalf);
  metric.set(1, 5, kHalf);
  deliver(metric);
  EXPECT_EQ((Row{"All CPUs", std::nullopt, std::nullopt}), sink.rowsOf(kTitle).back());
}

TEST_F(CounterSummary, IntervalsWithoutAnyTimeAreEmptyCells) {
  metric.addColumn(cpu0, idle);
  metric.set(0, 5, 0);
  deliver(metric);
  EXPECT_EQ((Row{"CPU 0", std::nullopt, std::nullopt}), sink.rowsOf(kTitle).at(0));
}

TEST_F(CounterSummary, ARateThatIsNoFiniteNumberIsAnEmptyCell) {
  // As a recording that was written by hand may have it.
  QuantitySpec rate;
  rate.code = pwr::Quantity::kRate;
  pwr::Quantity& quantity = model.addQuantity({});
  MetricSpec odd = counterSpec();
  odd.quantity = &quantity;
  SampledMetric counter(model, odd);
  counter.addColumn(cpu0, idle);
  counter.set(0, 5, kSecond);
  for (const double factor :
       {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    quantity.setRateConversion(&model.addQuantity(rate), factor);
    deliver(counter);
    EXPECT_EQ((Row{"CPU 0", std::nullopt, "5"}), sink.rowsOf(kTitle).at(0));
    sink.tables.clear();
  }
}

TEST(SampledMetricTest, ValuesAreDeliveredOnce) {
  Model model;
  KeepingSink sink;
  MetricSpec spec;
  spec.name = "Thing";
  SampledMetric metric(model, spec);
  metric.addColumn(model.addEntity(named("E")), model.addDescriptor(named("S")));
  metric.set(0, 5, 6);
  metric.deliver(10, sink);
  metric.deliver(20, sink);
  ASSERT_EQ(1U, sink.samples.size());
  EXPECT_THAT(sink.samples[0].elements, ElementsAre(KeptElement{"E", "S", 2, 5, 6}));
}

}  // namespace
}  // namespace qumetra::test
