// The sampled tables of the trace writer.

#include <gmock/gmock.h>

#include "tests/writers/int_writer_fixture.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Calculations = IntWriterV2::Calculations;

class SampledTables : public OpenIntWriter {
 protected:
  int write(Sample& sample, Calculations calculation, const pwr::Quantity* quantity = nullptr) {
    return m_writer->writeSampledGeneric(sample.message(), 0, calculation, quantity, "", "-");
  }

  /// The only data cell of a table with one value of CPU0.
  std::string cell(pwr::Data value, Calculations calculation, std::uint64_t duration = 200'000) {
    Sample sample = sampledValue(1000);
    if (m_metricQuantity != nullptr) {
      sample.in(*m_metricQuantity);
    }
    sample.value(m_cpu0, std::move(value), &m_c1, {.duration = duration});
    EXPECT_EQ(write(sample, calculation), 0);
    const std::string text = report();
    const std::size_t start = text.rfind(' ') + 1;
    return text.substr(start, text.find('\n', start) - start);
  }

  const pwr::Quantity* m_metricQuantity = nullptr;
};

// Titles and columns.

TEST_F(SampledTables, EmptyElementListLeavesNoTrace) {
  Sample sample = sampledValue(1000);
  sample.declare(&m_cpu0, &m_c1);
  EXPECT_EQ(write(sample, Calculations::NoCalculation), 0);
  EXPECT_EQ(report(), "");
}

TEST_F(SampledTables, TitleHasTheQualifiedNameUnlessTheEntityHasNone) {
  add(sampledValue(1000).value(entity("Core1", &m_cpu0), 5));
  const pwr::EntityHandle& nameless = entity("", &m_cpu1);
  add(sampledValue(1000, 2).value(nameless, 5));
  const std::string text = report();
  EXPECT_THAT(text, HasSubstr("\nMetric - CPU0/Core1\n"));
  EXPECT_THAT(text, HasSubstr("\nMetric\n"));
}

TEST_F(SampledTables, EntityZeroHasTheKeyOfTheMetricAndItsNameInTheTitle) {
  add(sampledValue(1000, 7).value(entityOf(0, "Zero"), 5));
  EXPECT_EQ(m_writer->getStore("Fresh", 7, 0, ""), m_writer->getStore("Fresh too", 7, 0, ""));
  EXPECT_EQ(report().substr(0, 15), "\nMetric - Zero\n");
}

TEST_F(SampledTables, TitleIsThatOfTheFirstMessage) {
  add(sampledValue(1000).value(m_cpu0, 5));
  add(sampledValue(1000).named("Other").value(m_cpu0, 5));
  const std::string text = report();
  EXPECT_THAT(text, HasSubstr("Metric - CPU0"));
  EXPECT_THAT(text, Not(HasSubstr("Other")));
}

TEST_F(SampledTables, TwoDescriptorsOfAnEntityShareARowWithTheDurationOfTheLast) {
  add(sampledValue(1000)
          .value(m_cpu0, 5, &m_c1, {.duration = 10'000})
          .value(m_cpu0, 6, &m_c6, {.duration = 20'000}));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), C1, C6\n"
            "       1,                   0.00,         10.00,  5,  6\n\n");
}

TEST_F(SampledTables, WidthCountsCellsThatWereReplaced) {
  add(sampledValue(1000)
          .value(m_cpu0, 123'456, &m_c1, {.duration = 123'456'789'012'345})
          .value(m_cpu0, 6, &m_c1));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec),  Duration (ms),     C1\n"
            "       1,                   0.00,         100.00,      6\n\n");
}

TEST_F(SampledTables, ColumnsStandAsFixedAttributesDeclaredLate) {
  const pwr::Attribute& vendor = attribute("vendor");
  m_cpu0.addAttributeValue(&vendor, text("v"));
  Sample sample = sampledValue(1000);
  sample.metric.writeEntityAttributes = true;
  sample.in(m_power).declare(&m_cpu1, &m_c1).declare(&m_cpu0, &m_c6).declare(&m_cpu0, &m_c1);
  sample.value(m_cpu0, 3, &descriptor("C3")).value(m_cpu0, 1, &m_c1).value(m_cpu0, 2);
  add(sample);
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), field vendor, C6 (mW), C1 (mW), "
            "C3 (mW), Power (mW)\n"
            "       1,                   0.00,        100.00,            v,     n/a,       1, "
            "      3,          2\n\n");
}

TEST_F(SampledTables, DeclaredPairWithoutDescriptorIsNamedByTheUnitsAlone) {
  add(sampledValue(1000).in(m_power).declare(&m_cpu0).value(m_cpu0, 5));
  add(sampledValue(1000, 2).declare(&m_cpu0).value(m_cpu0, 5));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms),  (mW)\n"
            "       1,                   0.00,        100.00,     5\n\n"
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms),  \n"
            "       1,                   0.00,        100.00, 5\n\n");
}

TEST_F(SampledTables, QuantityWithoutUnitsLeavesEmptyBrackets) {
  pwr::Quantity& count = m_model.addQuantity({.code = 1, .name = "Count"});
  add(sampledValue(1000).in(count).declare(&m_cpu0, &m_c1).value(m_cpu0, 5, &m_c1));
  EXPECT_THAT(report(), HasSubstr(", C1 ()\n"));
}

TEST_F(SampledTables, DescriptorShowsTheValueOfItsFirstAttribute) {
  m_c1.addAttributeValue(&attribute("a"), text("halt"));
  m_c1.addAttributeValue(&attribute("b"), text("second"));
  m_c6.addAttributeValue(nullptr, number(9));
  add(sampledValue(1000).in(m_power).declare(&m_cpu0, &m_c1).value(m_cpu0, 5, &m_c6));
  EXPECT_THAT(report(), HasSubstr(", C1 (halt) (mW), C6 (9) (mW)\n"));
}

TEST_F(SampledTables, PairDeclaredTwiceAndPairsOfNoEntityMakeNoColumn) {
  add(sampledValue(1000)
          .declare(nullptr)
          .declare(nullptr, &m_c6)
          .declare(&m_cpu0, &m_c1)
          .declare(&m_cpu0, &m_c1)
          .value(m_cpu0, 5, &m_c1));
  EXPECT_THAT(report(), HasSubstr("Duration (ms), C1\n"));
}

TEST_F(SampledTables, DescriptorOfIdZeroSharesTheColumnOfItsEntity) {
  const pwr::DataDescriptor& zero = descriptorOf(0, "Zero");
  add(sampledValue(1000).value(m_cpu0, 5, &zero).value(m_cpu0, 6));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), Zero\n"
            "       1,                   0.00,        100.00,    6\n\n");
}

TEST_F(SampledTables, ColumnSetIsThatOfTheFirstMessageAndGrowsOnly) {
  add(sampledValue(1000).declare(&m_cpu0, &m_c1).value(m_cpu0, 5, &m_c1));
  add(sampledValue(3000).declare(&m_cpu0, &m_c6).value(m_cpu0, 6, &m_c1));
  EXPECT_THAT(report(), HasSubstr("Duration (ms), C1\n"));
}

TEST_F(SampledTables, EntitiesHaveTablesOfTheirOwnAndGetRowsOnlyWhereTheyAppear) {
  add(sampledValue(1000).value(m_cpu0, 1).value(m_cpu1, 2));
  add(sampledValue(3000).value(m_cpu1, 3));
  add(sampledValue(5000).value(m_cpu1, 4).value(m_cpu0, 5));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU0\n"
            "       1,                   0.00,        100.00,    1\n"
            "       2,                2000.00,        100.00,    5\n\n"
            "\nMetric - CPU1\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU1\n"
            "       1,                   0.00,        100.00,    2\n"
            "       2,                1000.00,        100.00,    3\n"
            "       3,                2000.00,        100.00,    4\n\n");
}

TEST_F(SampledTables, EntitiesMayInterleaveInAMessage) {
  add(sampledValue(1000)
          .value(m_cpu0, 1, &m_c1)
          .value(m_cpu1, 2, &m_c1)
          .value(m_cpu0, 3, &m_c6)
          .value(m_cpu1, 4, &m_c6));
  const std::string text = report();
  EXPECT_THAT(text, HasSubstr("100.00,  1,  3\n\n"));
  EXPECT_THAT(text, HasSubstr("100.00,  2,  4\n\n"));
}

TEST_F(SampledTables, ElementsOfLaterMessagesMayComeInAnyOrder) {
  add(sampledValue(1000).value(m_cpu0, 1, &m_c1).value(m_cpu0, 2, &m_c6));
  add(sampledValue(3000).value(m_cpu0, 3, &m_c6).value(m_cpu0, 4, &m_c1));
  add(sampledValue(5000).value(m_cpu0, 5, &m_c6));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), C1, C6\n"
            "       1,                   0.00,        100.00,  1,  2\n"
            "       2,                1000.00,        100.00,  4,  3\n"
            "       3,                2000.00,        100.00, n/a,  5\n\n");
}

TEST_F(SampledTables, MetricsOfOneIdShareTablesWhateverTheirAddress) {
  Sample first = sampledValue(1000);
  add(first.value(m_cpu0, 1, &m_c1));
  Sample second = sampledValue(3000);
  add(second.named("Other").in(m_power).value(m_cpu0, 2, &m_c6));
  add(first);
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), C1, C6 (mW)\n"
            "       1,                   0.00,        100.00,  1,     n/a\n"
            "       2,                1000.00,        100.00, n/a,       2\n"
            "       3,                   0.00,        100.00,  1,     n/a\n\n");
}

TEST_F(SampledTables, EntitiesWhoseKeysFallTogetherEachCompleteARow) {
  // With metric 1 the key of this entity is 2^32 and (1 - 2^32), which is 1, the key of entity 0.
  const pwr::EntityHandle& far = entityOf(1 - (std::uint64_t{1} << 32), "Far");
  const pwr::EntityHandle& zero = entityOf(0, "Zero");
  add(sampledValue(1000).value(zero, 1).value(far, 2).value(zero, 3));
  EXPECT_EQ(report(),
            "\nMetric - Zero\n"
            "Sample #, Continuous Time (usec), Duration (ms), Zero, Far\n"
            "       2,                   0.00,        100.00,    3,   2\n"
            "     n/a,                    n/a,           n/a,  n/a, n/a\n\n");
}

// Late columns.

TEST_F(SampledTables, LateColumnIsFilledWithTheDefaultInEarlierRows) {
  add(residency(1000).value(m_cpu0, 2000, &m_c1));
  add(residency(3000).value(m_cpu0, 4000, &m_c6));
  EXPECT_EQ(report(),
            "\nMetric - CPU0 : Residency Time\n"
            "Sample #, Continuous Time (usec), Duration (ms), C1 (usec), C6 (usec)\n"
            "       1,                   0.00,        100.00,   1000.00,         0\n"
            "       2,                1000.00,        100.00,         0,   2000.00\n\n"
            "Metric - CPU0 : Residency Percentage\n"
            "Sample #, Continuous Time (usec), Duration (ms), C1 (%), C6 (%)\n"
            "       1,                   0.00,        100.00,   1.00,   0.00\n"
            "       2,                1000.00,        100.00,   0.00,   2.00\n\n");
}

TEST_F(SampledTables, LateColumnIsNamedByTheValueHandle) {
  Sample sample = sampledValue(1000);
  sample.metric.valueHandle = &column("Value");
  add(sample.in(m_power).value(m_cpu0, 5));
  EXPECT_THAT(report(), HasSubstr("Duration (ms), Value (mW)\n"));
}

TEST_F(SampledTables, LateColumnWithoutHandleOrQuantityIsNamedByTheEntity) {
  add(sampledValue(1000).value(entity("Core1", &m_cpu0), 5));
  EXPECT_THAT(report(), HasSubstr("Duration (ms), CPU0/Core1\n"));
}

TEST_F(SampledTables, LateColumnWithoutHandleOrQuantityStillHasTheSuffixOfItsCalculation) {
  Sample sample = sampledValue(1000);
  sample.value(m_cpu0, 5);
  EXPECT_EQ(write(sample, Calculations::ResidencyTime), 0);
  EXPECT_THAT(report(), HasSubstr("Duration (ms), CPU0 (usec)\n"));
}

TEST_F(SampledTables, LateColumnTitledByTheQuantityHasNoUnitsSuffix) {
  pwr::Quantity& titled = m_model.addQuantity({.name = "q", .units = "u", .title = "The Title"});
  Sample sample = sampledValue(1000);
  sample.in(titled).value(m_cpu0, 5);
  EXPECT_EQ(write(sample, Calculations::ResidencyTime), 0);
  EXPECT_THAT(report(), HasSubstr("Duration (ms), The Title\n"));
}

TEST_F(SampledTables, LateTitleAndRateFactorComeFromTheMetricsQuantityAlsoInTheRateTable) {
  m_energy.setRateConversion(&m_power, 3);
  m_power.setRateConversion(&m_power, 1000);
  add(delta(1000).in(m_energy).value(m_cpu0, 5));
  EXPECT_THAT(report(),
              HasSubstr("Metric - CPU0 : Instantaneous rate\n"
                        "Sample #, Continuous Time (usec), Duration (ms), Energy (mJ)\n"
                        "       1,                   0.00,        100.00,      150.00\n"));
}

TEST_F(SampledTables, ColumnsPastTheLastAreDroppedAndTheOthersStayWhole) {
  Sample sample = sampledValue(1000);
  std::vector<std::unique_ptr<pwr::DataDescriptor>> states;
  for (std::uint64_t i = 1; i <= 65'540; ++i) {
    states.push_back(std::make_unique<pwr::DataDescriptor>(i, pwr::HandleTexts{"S", "", ""}));
    sample.value(m_cpu0, i, states.back().get());
  }
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  EXPECT_EQ(add(sample), 0);
  EXPECT_EQ(add(sample), 0);
  const std::string text = report();
  EXPECT_THAT(text, HasSubstr("\n       1,                   0.00,        100.00, 1, 2, 3"));
  EXPECT_THAT(text, HasSubstr("\n       2,                   0.00,        100.00, 1, 2, 3"));
  EXPECT_EQ(text.substr(text.size() - 16), ", 65531, 65532\n\n");
}

// Attributes of entities.

TEST_F(SampledTables, EntityAttributesAreWrittenWhenAskedFor) {
  const pwr::Attribute& vendor = attribute("vendor");
  m_cpu0.addAttributeValue(&vendor, text("v1"));
  m_cpu0.addAttributeValue(nullptr, text("lost"));
  Sample sample = sampledValue(1000);
  sample.declare(&m_cpu0, &m_c1).value(m_cpu0, 5, &m_c1);
  sample.metric.writeEntityAttributes = true;
  add(sample);
  m_cpu0.setAttributeValues({{&vendor, number(2)}});
  add(sample);
  sample.metric.writeEntityAttributes = false;
  add(sample);
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), field vendor, C1\n"
            "       1,                   0.00,        100.00,           v1,  5\n"
            "       2,                   0.00,        100.00,            2,  5\n"
            "       3,                   0.00,        100.00,          n/a,  5\n\n");
}

TEST_F(SampledTables, AttributeThatAppearedAfterSetUpOverwritesTheSampleNumber) {
  Sample sample = sampledValue(1000);
  sample.declare(&m_cpu0, &m_c1).value(m_cpu0, 5, &m_c1);
  sample.metric.writeEntityAttributes = true;
  add(sample);
  m_cpu0.addAttributeValue(&attribute("late"), text("late value"));
  add(sample);
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "  Sample #, Continuous Time (usec), Duration (ms), C1\n"
            "         1,                   0.00,        100.00,  5\n"
            "late value,                   0.00,        100.00,  5\n\n");
}

TEST_F(SampledTables, AttributesWhoseIdsAgreeInThirtyTwoBitsShareAColumn) {
  const std::uint64_t id = 77;
  m_cpu0.addAttributeValue(&attributeOf(id, "low"), text("l"));
  m_cpu0.addAttributeValue(&attributeOf(id + (std::uint64_t{1} << 32), "high"), text("h"));
  Sample sample = sampledValue(1000);
  sample.declare(&m_cpu0, &m_c1).value(m_cpu0, 5, &m_c1);
  sample.metric.writeEntityAttributes = true;
  add(sample);
  EXPECT_THAT(report(),
              HasSubstr("Duration (ms), field low, C1\n"
                        "       1,                   0.00,        100.00,         h,  5\n"));
}

// Cells.

TEST_F(SampledTables, PlainValuesShowAsTheHostShowsThem) {
  EXPECT_EQ(cell(pwr::Data(0.125), Calculations::NoCalculation), "0.125");
}

TEST_F(SampledTables, UnknownCalculationShowsThePlainValue) {
  EXPECT_EQ(cell(pwr::Data(0.125), static_cast<Calculations>(4)), "0.125");
}

TEST_F(SampledTables, RateIsPerSecondOfTheDuration) {
  EXPECT_EQ(cell(number(5), Calculations::InstantaneousRate), "50.00");
}

TEST_F(SampledTables, RateTakesTheFactorOfTheMetricsQuantity) {
  m_energy.setRateConversion(&m_power, 0.001);
  m_metricQuantity = &m_energy;
  EXPECT_EQ(cell(number(5), Calculations::InstantaneousRate), "0.05");
}

TEST_F(SampledTables, RateOfASignedValueIsSigned) {
  EXPECT_EQ(cell(pwr::Data::fromInt(-5), Calculations::InstantaneousRate), "-50.00");
}

TEST_F(SampledTables, RateOfNoDurationIsInfinite) {
  EXPECT_EQ(cell(number(5), Calculations::InstantaneousRate, 0), "inf");
}

TEST_F(SampledTables, RateOfNothingInNoDurationIsNoNumber) {
  EXPECT_EQ(cell(number(0), Calculations::InstantaneousRate, 0), "nan");
}

TEST_F(SampledTables, RateWithAFrequencyOfZeroIsZero) {
  system(0);
  EXPECT_EQ(cell(number(5), Calculations::InstantaneousRate), "0.00");
}

TEST_F(SampledTables, RateOfAnUnsignedDurationDoesNotTurnNegative) {
  EXPECT_EQ(cell(pwr::Data(1e13), Calculations::InstantaneousRate, ~std::uint64_t{0}), "1.08");
}

TEST_F(SampledTables, PercentageIsTheShareOfTheDuration) {
  EXPECT_EQ(cell(number(1), Calculations::ResidencyPercentage, 3), "33.33");
}

TEST_F(SampledTables, PercentageIsNotClamped) {
  EXPECT_EQ(cell(number(9), Calculations::ResidencyPercentage, 3), "300.00");
}

TEST_F(SampledTables, PercentageOfNoDurationIsInfinite) {
  EXPECT_EQ(cell(number(9), Calculations::ResidencyPercentage, 0), "inf");
}

TEST_F(SampledTables, PercentageOfNothingInNoDurationIsNoNumber) {
  EXPECT_EQ(cell(number(0), Calculations::ResidencyPercentage, 0), "nan");
}

TEST_F(SampledTables, ResidencyTimeIsInMicrosecondsWithTwoDecimals) {
  EXPECT_EQ(cell(number(12'345), Calculations::ResidencyTime), "6172.50");
}

// Failures.

TEST_F(SampledTables, RateWithoutConversionFails) {
  Sample sample = sampledValue(1000);
  sample.in(m_energy).value(m_cpu0, 5);
  EXPECT_EQ(write(sample, Calculations::InstantaneousRate, &m_power), 1);
  EXPECT_THAT(
      warnings(),
      ElementsAre("WARNING: Rate conversion is not specified. Unable to calculate rate.\n"));
}

TEST_F(SampledTables, RateWithoutConversionIsToldBeforeTheValueIsLookedAt) {
  Sample sample = sampledValue(1000);
  sample.in(m_energy).value(m_cpu0, text("x"));
  EXPECT_EQ(write(sample, Calculations::InstantaneousRate), 1);
  EXPECT_THAT(warnings(), ElementsAre(HasSubstr("Rate conversion is not specified")));
}

TEST_F(SampledTables, RateOfAValueThatIsNoNumberFails) {
  Sample sample = sampledValue(1000);
  sample.value(m_cpu0, pwr::Data::fromUIntRange({1, 2}));
  EXPECT_EQ(write(sample, Calculations::InstantaneousRate), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Calculation of instantaneous rate is requested, "
                                      "but the value is not numeric.\n"));
}

TEST_F(SampledTables, PercentageOfAValueThatIsNotUnsignedFails) {
  Sample sample = sampledValue(1000);
  sample.value(m_cpu0, pwr::Data(1.0));
  EXPECT_EQ(write(sample, Calculations::ResidencyPercentage), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Calculation of residency percentages is requested, "
                                      "but the value is not of uint type.\n"));
}

TEST_F(SampledTables, TimeOfAValueThatIsNotUnsignedFails) {
  Sample sample = sampledValue(1000);
  sample.value(m_cpu0, pwr::Data::fromInt(1));
  EXPECT_EQ(write(sample, Calculations::ResidencyTime), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Calculation of time in micro-seconds is requested, "
                                      "but the value is not of uint type.\n"));
}

TEST_F(SampledTables, FailureIsSwallowedByTheDispatcher) {
  wantView(1);
  EXPECT_EQ(add(residency(1000).value(m_cpu0, pwr::Data(1.0))), 0);
  EXPECT_EQ(warnings().size(), 1U);
}

TEST_F(SampledTables, FailureStopsTheMessageBeforeItsOtherElements) {
  wantView(1);
  add(residency(1000).value(m_cpu0, pwr::Data(1.0)).value(m_cpu1, pwr::Data(1.0)));
  EXPECT_EQ(warnings().size(), 1U);
  EXPECT_EQ(report(),
            "\nMetric - CPU0 : Residency Percentage\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU0 (%)\n\n");
}

TEST_F(SampledTables, FailureCompletesNoRowOfAnyTableThatTheMessageTouched) {
  wantView(1);
  add(residency(1000).value(m_cpu0, 10).value(m_cpu1, pwr::Data(1.0)));
  EXPECT_EQ(report(),
            "\nMetric - CPU0 : Residency Percentage\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU0 (%)\n\n"
            "\nMetric - CPU1 : Residency Percentage\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU1 (%)\n\n");
}

TEST_F(SampledTables, CellsOfAFailedMessageStayPendingAndMixIntoTheNextRow) {
  wantView(1);
  add(residency(1000).value(m_cpu0, 2000, &m_c1).value(m_cpu0, pwr::Data(1.0), &m_c6));
  add(residency(3000).value(m_cpu0, 4000, &m_c6));
  add(residency(5000).value(m_cpu0, 6000, &m_c6));
  EXPECT_EQ(report(),
            "\nMetric - CPU0 : Residency Percentage\n"
            "Sample #, Continuous Time (usec), Duration (ms), C1 (%), C6 (%)\n"
            "       2,                1000.00,        100.00,   1.00,   2.00\n"
            "       3,                2000.00,        100.00,   0.00,   3.00\n\n");
}

TEST_F(SampledTables, FailureOfOneViewLeavesTheOtherViewWhole) {
  m_energy.setRateConversion(&m_power, 1);
  add(delta(1000).in(m_energy).value(m_cpu0, text("x")));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), Energy (mJ)\n"
            "       1,                   0.00,        100.00,           x\n\n"
            "Metric - CPU0 : Instantaneous rate\n"
            "Sample #, Continuous Time (usec), Duration (ms), Energy (mJ)\n\n");
}

}  // namespace
}  // namespace qumetra::test
