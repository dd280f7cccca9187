// The tables of the PHM writer.
#include <gmock/gmock.h>

#include "host/attributes.h"
#include "tests/writers/phm_writer_fixture.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Calculations = IntWriterV2::Calculations;
using Info = pwr::DynamicAttributeValueManager;

class PhmSampled : public PhmWriter {
 protected:
  int write(Sample& sample, Calculations calculation, const pwr::Quantity* quantity = nullptr) {
    return m_writer->writeSampledGeneric(sample.message(), 0, calculation, quantity, "", "-");
  }
};

TEST_F(PhmSampled, EntitiesShareATableGroupedInTheOrderOfTheEntityList) {
  Sample sample = sampledValue(201'000);
  sample.in(m_power).list(m_cpu1).list(m_cpu0);
  sample.declare(&m_cpu0, &m_c1).declare(&m_cpu1, &m_c1).declare(&m_cpu0, &m_c6);
  sample.value(m_cpu0, 1, &m_c1, {.duration = 10'000});
  sample.value(m_cpu1, 2, &m_c1, {.duration = 20'000});
  add(sample.value(m_cpu0, 3, &m_c6, {.duration = 30'000}));
  EXPECT_EQ(report(),
            "\nMetric\nUnits: (mW)\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU1 C1, CPU0 C1, CPU0 C6\n"
            "       1,              100000.00,         15.00,       2,       1,       3\n\n");
}

TEST_F(PhmSampled, DeclaredColumnsBearTheFirstAttributeAndLateOnesDoNot) {
  m_c1.addAttributeValue(&attribute("a"), number(9));
  m_c6.addAttributeValue(&attribute("b"), number(8));
  Sample sample = sampledValue(1000);
  sample.in(m_power).list(m_cpu0).declare(&m_cpu0, &m_c1).declare(&m_cpu0, &m_c1);
  const pwr::EntityHandle& core = entity("Core", &m_cpu1);
  add(sample.value(m_cpu0, 1, &m_c1).value(core, 2, &m_c6).value(core, 3));
  EXPECT_EQ(
      report(),
      "\nMetric\nUnits: (mW)\n"
      "Sample #, Continuous Time (usec), Duration (ms), CPU0 C1 (9), CPU1/Core C6, CPU1/Core\n"
      "       1,                   0.00,        100.00,           1,            2,         3\n"
      "\n");
}

TEST_F(PhmSampled, DeclaredPairWithoutDescriptorHasAColumnWithoutName) {
  Sample sample = sampledValue(1000);
  add(sample.in(m_power).list(m_cpu0).declare(&m_cpu0).declare(nullptr).value(m_cpu0, 1));
  EXPECT_EQ(report(),
            "\nMetric\nUnits: (mW)\n"
            "Sample #, Continuous Time (usec), Duration (ms),  \n"
            "       1,                   0.00,        100.00, 1\n\n");
}

TEST_F(PhmSampled, PairsOfEntitiesOutsideTheListAreNotDeclared) {
  Sample sample = sampledValue(1000);
  sample.metric.entityList.push_back(nullptr);
  add(sample.list(m_cpu0).declare(&m_cpu1, &m_c1).value(m_cpu0, 1));
  EXPECT_THAT(report(), HasSubstr("Duration (ms), CPU0\n"));
}

TEST_F(PhmSampled, TitleWithoutQuantityEndsInUnitsAlone) {
  add(sampledValue(1000).value(m_cpu0, 1));
  EXPECT_EQ(report().substr(0, 16), "\nMetric\nUnits:\nS");
}

TEST_F(PhmSampled, EntityAttributesHaveNoColumns) {
  m_cpu0.addAttributeValue(&attribute("a"), text("x"));
  Sample sample = sampledValue(1000);
  sample.metric.writeEntityAttributes = true;
  add(sample.value(m_cpu0, 1));
  EXPECT_THAT(report(), HasSubstr("Duration (ms), CPU0\n"
                                  "       1,                   0.00,        100.00,    1\n"));
}

TEST_F(PhmSampled, EmptyElementListGivesATableWithAnEmptyRowWhoseFirstCellHasItsDelimiter) {
  add(sampledValue(1000));
  add(sampledValue(3000).value(m_cpu0, 1));
  add(sampledValue(5000));
  EXPECT_EQ(report(),
            "\nMetric\nUnits:\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU0\n"
            ",      n/a,                    n/a,           n/a,  n/a\n"
            "       1,                1000.00,        100.00,    1\n"
            "     n/a,                    n/a,           n/a,  n/a\n\n");
}

TEST_F(PhmSampled, EmptyElementListAloneGivesATableWithoutColumns) {
  add(sampledValue(1000));
  EXPECT_EQ(report(), "\nMetric\nUnits:\n\n\n\n");
}

TEST_F(PhmSampled, TimestampOfZeroStartsNoRow) {
  system(2, 0);
  add(sampledValue(0).value(m_cpu0, 1));
  add(sampledValue(2000).value(m_cpu0, 2));
  EXPECT_EQ(report(),
            "\nMetric\nUnits:\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU0\n"
            "     n/a,                    n/a,        100.00,    1\n"
            "       1,                1000.00,        100.00,    2\n\n");
}

TEST_F(PhmSampled, TicksReplaceTimesByTheSwitch) {
  const Variable tsc("PW_DO_TIMELINE_TSC", "Y");
  restart();
  add(sampledValue(1234).value(m_cpu0, 1));
  EXPECT_EQ(report(),
            "\nMetric\nUnits:\n"
            "Sample #, Timestamp, Duration (ms), CPU0\n"
            "       1,      1234,        100.00,    1\n\n");
}

TEST_F(PhmSampled, ResidencyTicksAreReadFromTheEnvironmentToo) {
  const Variable ticks("PW_DO_TIMELINE_RESIDENCY_TICKS", "Y");
  restart();
  wantView(2);
  add(residency(1000).in(*pwr::Quantity::time()).value(m_cpu0, 50'000));
  EXPECT_EQ(report(),
            "\nMetric\nUnits: (s)\n"
            "Sample #, Continuous Time (usec), Duration (ms),  CPU0\n"
            "       1,                   0.00,        100.00, 50000\n\n");
}

TEST_F(PhmSampled, ElementsOfLaterMessagesMayComeInAnyOrder) {
  add(sampledValue(1000).value(m_cpu0, 1).value(m_cpu1, 2));
  add(sampledValue(3000).value(m_cpu1, 3).value(m_cpu0, 4));
  add(sampledValue(5000).value(m_cpu1, 5));
  EXPECT_EQ(report(),
            "\nMetric\nUnits:\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU0, CPU1\n"
            "       1,                   0.00,        100.00,    1,    2\n"
            "       2,                1000.00,        100.00,    4,    3\n"
            "       3,                2000.00,        100.00,  n/a,    5\n\n");
}

TEST_F(PhmSampled, RatesHaveATableWithTheirUnits) {
  m_energy.setRateConversion(&m_power, 1);
  add(delta(1000).in(m_energy).value(m_cpu0, 5));
  EXPECT_EQ(report(),
            "\nMetric\nUnits: (mJ)\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU0\n"
            "       1,                   0.00,        100.00,    5\n\n"
            "Metric : Instantaneous rate\nUnits: (mW)\n"
            "Sample #, Continuous Time (usec), Duration (ms),  CPU0\n"
            "       1,                   0.00,        100.00, 50.00\n\n");
}

TEST_F(PhmSampled, FailureSkipsTheRowAndItsCellsMixIntoTheNext) {
  Sample bad = sampledValue(1000);
  bad.value(m_cpu0, 2000).value(m_cpu1, pwr::Data(1.0));
  EXPECT_EQ(write(bad, Calculations::ResidencyPercentage), 1);
  Sample good = sampledValue(3000);
  good.value(m_cpu1, 4000);
  EXPECT_EQ(write(good, Calculations::ResidencyPercentage), 0);
  EXPECT_EQ(report(),
            "\nMetric\nUnits: (%)\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU0, CPU1\n"
            "       2,                1000.00,        100.00, 1.00, 2.00\n\n");
}

TEST_F(PhmSampled, FailuresAreToldWithTheWordsOfTheTraceWriter) {
  Sample real = sampledValue(1000);
  real.value(m_cpu0, pwr::Data(1.0));
  Sample words = sampledValue(1000);
  words.value(m_cpu0, text("x"));
  Sample energy = sampledValue(1000);
  energy.in(m_energy).value(m_cpu0, 1);
  EXPECT_EQ(write(real, Calculations::ResidencyPercentage), 1);
  EXPECT_EQ(write(real, Calculations::ResidencyTime), 1);
  EXPECT_EQ(write(words, Calculations::InstantaneousRate), 1);
  EXPECT_EQ(write(energy, Calculations::InstantaneousRate), 1);
  EXPECT_THAT(
      warnings(),
      ElementsAre("WARNING: Calculation of residency percentages is requested, but the value is "
                  "not of uint type.\n",
                  "WARNING: Calculation of time in micro-seconds is requested, but the value is "
                  "not of uint type.\n",
                  "WARNING: Calculation of instantaneous rate is requested, but the value is not "
                  "numeric.\n",
                  "WARNING: Rate conversion is not specified. Unable to calculate rate.\n"));
}

TEST_F(PhmSampled, ColumnsPastTheLastAreDroppedAndTheOthersStayWhole) {
  Sample sample = sampledValue(1000);
  std::vector<std::unique_ptr<pwr::DataDescriptor>> states;
  for (std::uint64_t i = 1; i <= 65'540; ++i) {
    states.push_back(std::make_unique<pwr::DataDescriptor>(i, pwr::HandleTexts{"S", "", ""}));
    sample.value(m_cpu0, i, states.back().get());
  }
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  EXPECT_EQ(add(sample), 0);
  const std::string text = report();
  EXPECT_THAT(text,
              HasSubstr("\n       1,                   0.00,        100.00,      1,      2,"));
  EXPECT_THAT(text, ::testing::EndsWith("  65531,  65532\n\n"));
}

class PhmTraced : public PhmWriter {
 protected:
  static pwr::Data handle(const pwr::DataHandle& named) { return pwr::Data::fromHandle(&named); }
  int write(Sample& sample) { return m_writer->writeTracedMetric(sample.message()); }
};

TEST_F(PhmTraced, RowsShowEntityDescriptorValueAttributesAndInformation) {
  const pwr::Attribute& depth = attribute("depth");
  const pwr::Attribute& cause = attribute("cause");
  m_c6.addAttributeValue(&depth, number(6));
  const Info info({{cause.getId(), handle(pair("timer"))}});
  Sample sample = event(201'000);
  sample.metric.entityTitleHandle = &column("Who");
  sample.metric.descriptorTitleHandle = &column("Kind");
  sample.metric.valueHandle = &column("State");
  add(sample.in(m_power).value(m_cpu0, handle(m_c6), &m_c1, {.info = &info}));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\nUnits: (mW)\n"
            "Sample #, Continuous Time (ms),  Who, Kind, State, field depth, field cause, "
            "Duration (ms)\n"
            "       1,               100.00, CPU0,   C1,    C6,           6,       timer, "
            "       100.00\n\n");
}

TEST_F(PhmTraced, ColumnsWithoutHandlesHaveNoNames) {
  add(event(1000).value(m_cpu0, handle(m_c6)).value(m_cpu0, handle(m_c1)));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\nUnits:\n"
            "Sample #, Continuous Time (ms),     ,   , Duration (ms)\n"
            "       1,                 0.00, CPU0, C6,        100.00\n"
            "       2,                 0.00, CPU0, C1,        100.00\n\n");
}

TEST_F(PhmTraced, TitleHasTheQualifiedNameAlsoOfAnEntityWithoutName) {
  add(event(1000).value(entity("", &m_cpu0), handle(m_c6)).value(entity(""), handle(m_c6)));
  const std::string text = report();
  EXPECT_THAT(text, HasSubstr("\nMetric - CPU0\nUnits:\n"));
  EXPECT_THAT(text, HasSubstr("\nMetric - \nUnits:\n"));
}

TEST_F(PhmTraced, EmptyElementListMakesNoTable) {
  Sample sample = event(1000);
  EXPECT_EQ(write(sample), 0);
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_THAT(results(), ElementsAre("out_meta_phm.csv"));
}

TEST_F(PhmTraced, TablesGoToTheFileOfTheGroup) {
  add(event(1000).group("g").value(m_cpu0, handle(m_c6)));
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_THAT(result("out_g_phm.csv"), HasSubstr("Metric - CPU0\n"));
}

TEST_F(PhmTraced, IntegerStopsTheMetricWithAWarningForEveryMessageAndLeavesATableWithoutColumns) {
  Sample sample = event(1000);
  sample.value(m_cpu0, 5).value(m_cpu1, handle(m_c6));
  EXPECT_EQ(write(sample), 1);
  EXPECT_EQ(write(sample), 1);
  const std::string warning = "WARNING: PHM writer plugin: Unable to retrieve DataHandle\n";
  EXPECT_THAT(warnings(), ElementsAre(warning, warning));
  EXPECT_EQ(report(), "\nMetric - CPU0\nUnits:\n\n\n");
}

TEST_F(PhmTraced, NullHandleAndHandleThatIsNoDescriptorAreNoValues) {
  Sample nothing = event(1000);
  nothing.value(m_cpu0, pwr::Data::fromHandle(nullptr));
  Sample other = event(1000);
  other.value(m_cpu0, handle(m_cpu1));
  EXPECT_EQ(write(nothing), 1);
  EXPECT_EQ(write(other), 1);
  EXPECT_EQ(warnings().size(), 2U);
}

TEST_F(PhmTraced, SurplusAttributeOverwritesTheSampleNumber) {
  m_c6.addAttributeValue(&attribute("late"), text("surplus"));
  add(event(1000).value(m_cpu0, handle(m_c1)).value(m_cpu0, handle(m_c6)));
  EXPECT_THAT(report(), HasSubstr("\n surplus,                 0.00, CPU0, C6,        100.00\n"));
}

TEST_F(PhmTraced, FailuresOfInformationAreToldByTheVerbosityAlone) {
  const Info bad({{~std::uint64_t{0}, number(1)}});
  Sample sample = event(1000);
  sample.value(m_cpu0, handle(m_c6), nullptr, {.info = &bad});
  EXPECT_EQ(write(sample), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Failed to process info attribute\n"));
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  m_log.environment().enabledTags.add(kTag);
  EXPECT_EQ(write(sample), 1);
  EXPECT_EQ(warnings().size(), 1U);
}

}  // namespace
}  // namespace qumetra::test
