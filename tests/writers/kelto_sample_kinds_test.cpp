// Which values and times the kinds of metrics take, and what the type in the file becomes.
#include "tests/writers/kelto_sample_fixture.h"

namespace {

using qumetra::test::Attributes;
using qumetra::test::KeltoSample;
using ::testing::ElementsAre;

// Kinds of metrics.

TEST_F(KeltoSample, NumbersMakeASampledValue) {
  m_metric.metricType = pwr::Metric::SAMPLED_VALUE;
  deliver(2000, {element(entity("E"), &descriptor("S"), pwr::Data(1.5))});
  EXPECT_EQ(typeInFile(), 5U);
}

TEST_F(KeltoSample, TextInTheFirstSampleMakesASetValueForTheRun) {
  m_metric.metricType = pwr::Metric::SAMPLED_VALUE;
  pwr::EntityHandle& core = entity("E");
  pwr::DataDescriptor& state = descriptor("S");
  deliver(2000, {element(core, &state, pwr::Data(std::string("on")))});
  deliver(3000, {element(core, &state, pwr::Data(1UL))});
  EXPECT_EQ(typeInFile(), 6U);
  EXPECT_EQ(records(kMetric).size(), 3U);
}

TEST_F(KeltoSample, TextInALaterSampleChangesNoType) {
  m_metric.metricType = pwr::Metric::SAMPLED_VALUE;
  pwr::EntityHandle& core = entity("E");
  pwr::DataDescriptor& state = descriptor("S");
  deliver(2000, {element(core, &state, pwr::Data(1UL))});
  EXPECT_EQ(deliver(3000, {element(core, &state, pwr::Data(std::string("on")))}), 0);
  EXPECT_EQ(typeInFile(), 5U);
}

TEST_F(KeltoSample, HandleOfASampledValueIsItsState) {
  m_metric.metricType = pwr::Metric::SAMPLED_VALUE;
  pwr::EntityHandle& core = entity("E");
  pwr::DataDescriptor& state = descriptor("S");
  ASSERT_EQ(deliver(2000, {element(core, nullptr, pwr::Data::fromHandle(&state), 4)}), 0);
  EXPECT_EQ(typeInFile(), 6U);
  Attributes expected = plainAttributes(core, state, 4, 0);
  expected.pop_back();
  EXPECT_EQ(lastSample(), joined({expected}));
}

TEST_F(KeltoSample, SampledValueWithoutDescriptorTakesTheOneForTheStream) {
  m_metric.metricType = pwr::Metric::SAMPLED_VALUE;
  pwr::EntityHandle& core = entity("E");
  pwr::DataDescriptor& state = descriptor("S");
  const std::vector<pwr::DataElement> elements = {
      {&core, nullptr, &state, pwr::Data(5UL), 4, nullptr}};
  ASSERT_EQ(deliver(2000, elements), 0);
  EXPECT_EQ(lastSample(), joined({plainAttributes(core, state, 4, 5)}));
}

TEST_F(KeltoSample, OtherTypesDoNotTakeTheDescriptorForTheStream) {
  pwr::EntityHandle& core = entity("E");
  const std::vector<pwr::DataElement> elements = {
      {&core, nullptr, &descriptor("S"), pwr::Data(5UL), 4, nullptr}};
  EXPECT_EQ(deliver(2000, elements), 1);
  EXPECT_EQ(warnings().back(), "Malformed data element for metric Metric. TSC: 2000");
}

class KeltoTraced : public KeltoSample,
                    public ::testing::WithParamInterface<pwr::Metric::MetricType> {
 protected:
  KeltoTraced() { m_metric.metricType = GetParam(); }
};

TEST_P(KeltoTraced, HandleIsTheStateAndReachesTheFile) {
  pwr::EntityHandle& core = entity("E");
  pwr::DataDescriptor& state = descriptor("S");
  ASSERT_EQ(deliver(2000, {element(core, nullptr, pwr::Data::fromHandle(&state), 4)}), 0);
  EXPECT_EQ(typeInFile(), GetParam() == pwr::Metric::TRACED_EVENT ? 9U : 7U);
  EXPECT_EQ(lastSample().size(), 5U);
  EXPECT_EQ(lastSample()[2].second, state.getId());
}

TEST_P(KeltoTraced, HandleThatIsNoDescriptorIsMalformed) {
  pwr::EntityHandle& core = entity("E");
  EXPECT_EQ(deliver(2000, {element(core, nullptr, pwr::Data::fromHandle(&core))}), 1);
  EXPECT_THAT(warnings(), ElementsAre("Malformed Traced metric. Metric: 'Metric'\n"));
}

TEST_P(KeltoTraced, NullHandleIsMalformed) {
  EXPECT_EQ(deliver(2000, {element(entity("E"), nullptr, pwr::Data::fromHandle(nullptr))}), 1);
  EXPECT_THAT(warnings(), ElementsAre("Malformed Traced metric. Metric: 'Metric'\n"));
}

TEST_P(KeltoTraced, HandleWithTheTypeOfADescriptorThatIsNoneIsMalformed) {
  const pwr::DataHandle other(5, {"x", "", ""}, pwr::DataHandle::kDescriptorType);
  EXPECT_EQ(deliver(2000, {element(entity("E"), nullptr, pwr::Data::fromHandle(&other))}), 1);
  EXPECT_THAT(warnings(), ElementsAre("Malformed Traced metric. Metric: 'Metric'\n"));
}

/// The text becomes the value of an info attribute, where only a handle could be written.
TEST_P(KeltoTraced, TextMakesAStateWhoseAttributeRefusesTheMetric) {
  EXPECT_EQ(deliver(2000, {element(entity("E"), nullptr, pwr::Data(std::string("on")))}), 1);
  EXPECT_EQ(nodes("field")[0].longName, "on");
  const std::vector<std::string> texts = warnings();
  ASSERT_GE(texts.size(), 3U);
  EXPECT_EQ(texts.end()[-3], "Failed to get data handle for info attribute.\n");
  EXPECT_EQ(texts.end()[-2], "Failed to process info attribute\n");
  EXPECT_EQ(texts.end()[-1],
            "Unable to add 'Metric' data static field info attributes to the record. TSC: 2000\n");
}

TEST_P(KeltoTraced, SampleHoldsOneElement) {
  pwr::EntityHandle& core = entity("E");
  pwr::DataDescriptor& state = descriptor("S");
  const std::string text =
      "Traced metric data should have information for only one entity and only one descriptor. "
      "Metric: 'Metric'\n";
  EXPECT_EQ(
      deliver(2000, {element(core, &state, pwr::Data(1UL)), element(core, &state, pwr::Data(1UL))}),
      1);
  EXPECT_EQ(warnings().back(), text);
  EXPECT_EQ(deliver(2000, {}), 1);
  EXPECT_EQ(warnings().back(), text);
}

INSTANTIATE_TEST_SUITE_P(Types, KeltoTraced,
                         ::testing::Values(pwr::Metric::TRACED_VALUE_TRANSITION,
                                           pwr::Metric::TRACED_EVENT));

TEST_F(KeltoSample, HandleThatIsNoDescriptorMakesAMalformedSampledValue) {
  m_metric.metricType = pwr::Metric::SAMPLED_VALUE;
  const pwr::DataHandle other(5, {"x", "", ""}, pwr::DataHandle::kDescriptorType);
  EXPECT_EQ(deliver(2000, {element(entity("E"), nullptr, pwr::Data::fromHandle(&other))}), 1);
  EXPECT_EQ(deliver(2000, {element(entity("E"), nullptr, pwr::Data::fromHandle(nullptr))}), 1);
  EXPECT_THAT(warnings(), ElementsAre("Malformed Sampled Value metric. Metric: 'Metric'\n",
                                      "Malformed Sampled Value metric. Metric: 'Metric'\n"));
}

TEST_F(KeltoSample, ResidencyIsUnsigned) {
  m_metric.metricType = pwr::Metric::SAMPLED_RESIDENCY;
  EXPECT_EQ(deliver(2000, {element(entity("E"), &descriptor("S"), pwr::Data::fromInt(1))}), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Wrong data type used for residency metric. Metric: 'Metric'\n"));
}

TEST_F(KeltoSample, ResidencyOfUnsignedNumbersIsTypeFour) {
  m_metric.metricType = pwr::Metric::SAMPLED_RESIDENCY;
  EXPECT_EQ(deliverPlain(2000), 0);
  EXPECT_EQ(typeInFile(), 4U);
}

// Time.

TEST_F(KeltoSample, EntitiesInterleaveFreelyInTime) {
  pwr::EntityHandle& a = entity("A");
  pwr::EntityHandle& b = entity("B");
  pwr::DataDescriptor& state = descriptor("C6");
  EXPECT_EQ(deliver(5000, {element(a, &state, pwr::Data(1UL))}), 0);
  EXPECT_EQ(deliver(2000, {element(b, &state, pwr::Data(1UL))}), 0);
}

TEST_F(KeltoSample, MetricsInterleaveFreelyInTime) {
  deliverPlain(5000);
  m_metric.metricId = 8;
  EXPECT_EQ(deliverPlain(2000), 0);
}

TEST_F(KeltoSample, TimeThatFallsBackRefusesTheMetric) {
  pwr::EntityHandle& core = entity("Core");
  pwr::DataDescriptor& state = descriptor("C6");
  deliver(5000, {element(core, &state, pwr::Data(1UL))});
  EXPECT_EQ(deliver(5000, {element(core, &state, pwr::Data(1UL))}), 1);
  const std::string key = "Metric_7_Core_" + std::to_string(core.getId());
  EXPECT_THAT(
      m_log.errors(),
      ElementsAre(std::pair(
          0,
          "FATAL: KeltoWriterPlugin:    Current sample TSC is <= previous sample's TSC. Samples "
          "are required to be monotonically increasing in time. '" +
              key + "' current TSC: 5000 <= previous TSC: 5000\n")));
  EXPECT_THAT(warnings(), ElementsAre("Invalid TSC value for 'Metric' sample. TSC: 5000\n"));
}

TEST_F(KeltoSample, TimeBeforeTheStartRefusesTheMetricEvenInAQuietRun) {
  m_log.environment().verbosity = PluginEnvironment::kQuiet;
  pwr::EntityHandle& core = entity("Core");
  EXPECT_EQ(deliver(999, {element(core, &descriptor("C6"), pwr::Data(1UL))}), 1);
  const std::string key = "Metric_7_Core_" + std::to_string(core.getId());
  EXPECT_THAT(
      m_log.errors(),
      ElementsAre(std::pair(
          0,
          "FATAL: KeltoWriterPlugin:    Current sample TSC is <= collection start TSC. Samples are "
          "required to be monotonically increasing in time. '" +
              key + "' current TSC: 999 <= collection start TSC: 1000\n")));
}

TEST_F(KeltoSample, TimeOfTheStartMayRepeat) {
  EXPECT_EQ(deliverPlain(kStart), 0);
  EXPECT_EQ(deliverPlain(kStart), 0);
  EXPECT_EQ(deliverPlain(2000), 0);
  EXPECT_EQ(deliverPlain(kStart), 1);
}

TEST_F(KeltoSample, CheckOfAKeyStartsWithTheCollection) {
  EXPECT_EQ(m_writer.getPreviousTsc("key"), kStart);
  EXPECT_EQ(m_writer.checkTscMonotonicity(1500, "key"), 0);
  EXPECT_EQ(m_writer.getPreviousTsc("key"), 1500U);
  EXPECT_EQ(m_writer.checkTscMonotonicity(1500, "key"), 1);
  EXPECT_EQ(m_writer.checkTscMonotonicity(1501, "key"), 0);
}

TEST_F(KeltoSample, MetricUnderANewNameHasTimesOfItsOwn) {
  deliverPlain(5000);
  m_metric.name = "Renamed";
  EXPECT_EQ(deliverPlain(2000), 0);
  m_metric.name = "Metric";
  EXPECT_EQ(deliverPlain(3000), 1);
}

}  // namespace
