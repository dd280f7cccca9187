// The traced tables of the trace writer.
#include <gmock/gmock.h>

#include "host/attributes.h"
#include "tests/writers/int_writer_fixture.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Info = pwr::DynamicAttributeValueManager;

class TracedTables : public OpenIntWriter {
 protected:
  static pwr::Data handle(const pwr::DataHandle& named) { return pwr::Data::fromHandle(&named); }
  int write(Sample& sample) { return m_writer->writeTracedMetric(sample.message()); }
};

TEST_F(TracedTables, EventsAndTransitionsAreWrittenAlike) {
  add(event(1000).value(m_cpu0, 5));
  Sample transition(pwr::Metric::TRACED_VALUE_TRANSITION, 201'000);
  add(transition.value(m_cpu0, 6));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms),  , Duration (ms)\n"
            "       1,                 0.00, 5,        100.00\n"
            "       2,               100.00, 6,        100.00\n\n");
}

TEST_F(TracedTables, EmptyElementListLeavesNoTrace) {
  Sample sample = event(1000);
  EXPECT_EQ(write(sample), 0);
  EXPECT_EQ(report(), "");
}

TEST_F(TracedTables, RowsOfAMessageShareItsTimeAndCountOn) {
  add(event(3000).value(m_cpu0, 5, nullptr, {.duration = 0}).value(m_cpu0, 6));
  add(event(3000).value(m_cpu0, 7));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms),  , Duration (ms)\n"
            "       1,                 1.00, 5,          0.00\n"
            "       2,                 1.00, 6,        100.00\n"
            "       3,                 1.00, 7,        100.00\n\n");
}

TEST_F(TracedTables, TicksReplaceTimesByTheSwitch) {
  const Variable tsc("PW_DO_TIMELINE_TSC", "Y");
  restart();
  add(event(3000).value(m_cpu0, 5));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Timestamp,  , Duration (ms)\n"
            "       1,      3000, 5,        100.00\n\n");
}

TEST_F(TracedTables, ElementsWithAndWithoutDescriptorHaveTablesOfOneTitle) {
  add(event(1000).value(m_cpu0, 5).value(m_cpu0, 6, &m_c1).value(m_cpu0, 7, &m_c6));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms),  , Duration (ms)\n"
            "       1,                 0.00, 5,        100.00\n\n"
            "Metric - CPU0\n"
            "Sample #, Continuous Time (ms),   ,  , Duration (ms)\n"
            "       1,                 0.00, C1, 6,        100.00\n\n"
            "Metric - CPU0\n"
            "Sample #, Continuous Time (ms),   ,  , Duration (ms)\n"
            "       1,                 0.00, C6, 7,        100.00\n\n");
}

TEST_F(TracedTables, ColumnsAreTitledByTheMetricsHandlesWithoutUnits) {
  Sample sample = event(1000);
  sample.metric.valueHandle = &column("State");
  sample.metric.descriptorTitleHandle = &column("Kind");
  sample.metric.entityTitleHandle = &column("Never");
  add(sample.in(m_power).value(m_cpu0, handle(m_c6), &m_c1));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms), Kind, State, Duration (ms)\n"
            "       1,                 0.00,   C1,    C6,        100.00\n\n");
}

TEST_F(TracedTables, TitleHasTheQualifiedNameUnlessTheEntityHasNone) {
  add(event(1000).value(entity("Core1", &m_cpu0), 5).value(entity("", &m_cpu0), 5));
  const std::string text = report();
  EXPECT_THAT(text, HasSubstr("Metric - CPU0/Core1\n"));
  EXPECT_THAT(text, HasSubstr("Metric\n"));
}

// Attributes.

TEST_F(TracedTables, ExpectedAttributesHaveColumnsInTheirOrder) {
  const pwr::Attribute& depth = attribute("depth");
  const pwr::Attribute& cause = attribute("cause");
  Sample sample = event(1000);
  sample.metric.valueHandle = &column("State", {&depth, &cause, &depth, nullptr});
  m_c6.addAttributeValue(&cause, text("timer"));
  add(sample.value(m_cpu0, handle(m_c6)));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms), State, field depth, field cause, Duration (ms)\n"
            "       1,                 0.00,    C6,         n/a,       timer,        100.00\n\n");
}

TEST_F(TracedTables, AttributesOfTheFirstValueHaveColumnsBehindTheExpectedOnes) {
  const pwr::Attribute& depth = attribute("depth");
  const pwr::Attribute& cause = attribute("cause");
  Sample sample = event(1000);
  sample.metric.valueHandle = &column("State", {&depth});
  m_c6.addAttributeValue(&cause, text("timer"));
  m_c6.addAttributeValue(nullptr, text("lost"));
  m_c6.addAttributeValue(&depth, number(6));
  m_c1.addAttributeValue(&depth, number(1));
  add(sample.value(m_cpu0, handle(m_c6)).value(m_cpu0, handle(m_c1)));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms), State, field depth, field cause, Duration (ms)\n"
            "       1,                 0.00,    C6,           6,       timer,        100.00\n"
            "       2,                 0.00,    C1,           1,         n/a,        100.00\n\n");
}

TEST_F(TracedTables, SurplusAttributeOfALaterValueOverwritesTheSampleNumber) {
  m_c6.addAttributeValue(&attribute("late"), text("surplus"));
  add(event(1000).value(m_cpu0, handle(m_c1)).value(m_cpu0, handle(m_c6)));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms),   , Duration (ms)\n"
            "       1,                 0.00, C1,        100.00\n"
            " surplus,                 0.00, C6,        100.00\n\n");
}

TEST_F(TracedTables, HandleThatIsNoDescriptorBringsNoAttributes) {
  m_cpu1.addAttributeValue(&attribute("a"), text("x"));
  add(event(1000).value(m_cpu0, handle(m_cpu1)).value(m_cpu0, pwr::Data::fromHandle(nullptr)));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms),     , Duration (ms)\n"
            "       1,                 0.00, CPU1,        100.00\n"
            "       2,                 0.00,     ,        100.00\n\n");
}

// Additional information.

TEST_F(TracedTables, AdditionalInformationHasColumnsByFieldNameAndNamesForValues) {
  const pwr::Attribute& cause = attribute("cause");
  const Info info({{cause.getId(), handle(pair("timer"))}});
  const Info empty;
  add(event(1000)
          .value(m_cpu0, 5, nullptr, {.info = &info})
          .value(m_cpu0, 6, nullptr, {.info = &empty})
          .value(m_cpu1, 7, nullptr, {.info = &empty}));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms),  , field cause, Duration (ms)\n"
            "       1,                 0.00, 5,       timer,        100.00\n"
            "       2,                 0.00, 6,         n/a,        100.00\n\n"
            "Metric - CPU1\n"
            "Sample #, Continuous Time (ms),  , Duration (ms)\n"
            "       1,                 0.00, 7,        100.00\n\n");
}

TEST_F(TracedTables, InformationThatTheFirstElementLackedOverwritesTheSampleNumber) {
  const Info info({{attribute("cause").getId(), handle(pair("timer"))}});
  add(event(1000).value(m_cpu0, 5).value(m_cpu0, 6, nullptr, {.info = &info}));
  EXPECT_THAT(report(), HasSubstr("\n   timer,                 0.00, 6,        100.00\n"));
}

TEST_F(TracedTables, UnknownInfoAttributeLeavesTheTableToBeSetUpAnewWithItsFixedColumnsTwice) {
  const pwr::Attribute& cause = attribute("cause");
  const Info bad({{cause.getId(), handle(pair("timer"))}, {~std::uint64_t{0}, number(1)}});
  const Info good({{cause.getId(), handle(pair("alarm"))}});
  Sample sample = event(1000);
  sample.value(m_cpu0, 5, nullptr, {.info = &bad}).value(m_cpu0, 6);
  EXPECT_EQ(write(sample), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Failed to process info attribute\n"));
  add(event(1000).value(m_cpu0, 7, nullptr, {.info = &good}));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms), , field cause, Sample #, Continuous Time (ms),  , "
            "Duration (ms)\n"
            "     n/a,                  n/a, n/a,       alarm,        1,                 0.00, 7, "
            "       100.00\n\n");
}

class InfoFailures : public TracedTables {
 protected:
  /// Writes a good element, one with `info`, and another good one.
  int writeWith(const Info& info) {
    Sample sample = event(1000);
    sample.value(m_cpu0, 5);
    sample.value(m_cpu0, 6, nullptr, {.duration = 400'000, .info = &info});
    sample.value(m_cpu0, 7);
    return write(sample);
  }
};

TEST_F(InfoFailures, UnknownAttributeInARowFails) {
  EXPECT_EQ(writeWith(Info({{~std::uint64_t{0}, number(1)}})), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Failed to process dynamic attribute\n"));
}

TEST_F(InfoFailures, ValueThatIsNoHandleFailsWithoutAWord) {
  EXPECT_EQ(writeWith(Info({{attribute("cause").getId(), number(1)}})), 1);
  EXPECT_THAT(warnings(), IsEmpty());
}

TEST_F(InfoFailures, NullHandleFails) {
  EXPECT_EQ(writeWith(Info({{attribute("cause").getId(), pwr::Data::fromHandle(nullptr)}})), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Failed to get handle for dynamic attribute\n"));
}

TEST_F(InfoFailures, HandleThatIsNoPairFailsWithATextWithoutLineEnd) {
  EXPECT_EQ(writeWith(Info({{attribute("cause").getId(), handle(m_cpu0)}})), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Failed to retrieve name for dynamic attribute"));
}

TEST_F(InfoFailures, FailureLosesItsRowAndTheElementsBehindIt) {
  EXPECT_EQ(writeWith(Info({{attribute("cause").getId(), number(1)}})), 1);
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms),  , Duration (ms)\n"
            "       1,                 0.00, 5,        100.00\n\n");
}

TEST_F(InfoFailures, CellsOfAFailedRowStayPendingAndMixIntoTheNextRow) {
  const pwr::Attribute& cause = attribute("cause");
  const pwr::Attribute& owner = attribute("owner");
  const Info both({{cause.getId(), handle(pair("timer"))}, {owner.getId(), handle(pair("me"))}});
  const Info bad({{cause.getId(), handle(pair("alarm"))}, {owner.getId(), number(1)}});
  Sample sample = event(1000);
  sample.value(m_cpu0, 5, nullptr, {.info = &both}).value(m_cpu0, 6, nullptr, {.info = &bad});
  EXPECT_EQ(write(sample), 1);
  add(event(3000).value(m_cpu0, 7));
  add(event(5000).value(m_cpu0, 8));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (ms),  , field cause, field owner, Duration (ms)\n"
            "       1,                 0.00, 5,       timer,          me,        100.00\n"
            "       3,                 1.00, 7,       alarm,         n/a,        100.00\n"
            "       4,                 2.00, 8,         n/a,         n/a,        100.00\n\n");
}

TEST_F(InfoFailures, DispatcherSwallowsThemAndHeedsTheTag) {
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  m_log.environment().enabledTags.add(kTag);
  const Info bad({{~std::uint64_t{0}, number(1)}});
  EXPECT_EQ(add(event(1000).value(m_cpu0, 5, nullptr, {.info = &bad})), 0);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Failed to process info attribute\n"));
}

TEST_F(TracedTables, TableThatASampledMetricOfTheSameKeysHasSetUpIsNotSetUpAgain) {
  // Metric 1 of entity 0 has the sampled table (1, 0); the traced one of entity 0 has the same
  // keys.
  const pwr::EntityHandle& zero = entityOf(0, "Zero");
  add(sampledValue(1000).value(zero, 5));
  add(event(3000).value(zero, 6));
  EXPECT_EQ(report(),
            "\nMetric - Zero\n"
            "Sample #, Continuous Time (usec), Duration (ms), Zero\n"
            "       1,                   0.00,        100.00,    5\n"
            "  100.00,                    n/a,           n/a,  n/a\n\n");
}

}  // namespace
}  // namespace qumetra::test
