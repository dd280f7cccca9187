// Samples: what goes into a record, in which order, and what refuses a metric.
#include <bit>

#include "tests/writers/kelto_fixture.h"

namespace {

using qumetra::test::Attributes;
using qumetra::test::FullDisk;
using qumetra::test::hex;
using qumetra::test::KeltoTest;
using qumetra::test::Node;
using qumetra::test::number;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class KeltoSample : public KeltoTest {
 protected:
  KeltoSample() { deliverSystem(); }

  std::uint64_t colorOf(const std::string& state) {
    return static_cast<std::uint64_t>(m_writer.colorIds.at(state));
  }
  /// ENTITY, FIELD, DURATION, COLOR and UINT of a plain value.
  Attributes plainAttributes(const pwr::EntityHandle& of, const pwr::DataDescriptor& state,
                             std::uint64_t duration, std::uint64_t value) {
    return {{kEntityAttribute, of.getId()},
            {kFieldAttribute, state.getId()},
            {kDurationAttribute, duration},
            {kColorAttribute, colorOf(state.getName())},
            {kUIntAttribute, value}};
  }
  static Attributes joined(const std::vector<Attributes>& parts) {
    Attributes all = {{kMetricAttribute, kMetric}};
    for (const Attributes& part : parts) {
      all.insert(all.end(), part.begin(), part.end());
    }
    return all;
  }
  std::size_t typeInFile() {
    return static_cast<std::size_t>(number(records(kMetric).at(0), 20, 4));
  }
};

// The record.

TEST_F(KeltoSample, Record) {
  QM2AttributeList list;
  m_writer.addAttributeToRecord(0x01020304, 0x1112131415161718, &list);
  m_writer.addAttributeToRecord(18, 2, &list);
  EXPECT_EQ(m_writer.writeQM2Record(0x2122232425262728, kMetric, &list), 0);
  EXPECT_EQ(hex(stream(kMetric)),
            "10 00 40 02 "
            "28 27 26 25 24 23 22 21 "
            "22 00 47 00 06 00 02 00 "  // size 34, type 71, sub-type 6, version 2
            "02 00 "                    // two attributes
            "04 03 02 01 18 17 16 15 14 13 12 11 "
            "12 00 00 00 02 00 00 00 00 00 00 00 ");
}

TEST_F(KeltoSample, LegacyRecordIsOfVersionOne) {
  m_writer.legacy = true;
  QM2AttributeList list;
  m_writer.writeQM2Record(1, kMetric, &list);
  EXPECT_EQ(hex(stream(kMetric).substr(12)), "0a 00 47 00 06 00 01 00 00 00 ");
}

TEST_F(KeltoSample, RecordOfAllAttributesIsWritten) {
  QM2AttributeList list;
  for (std::uint32_t i = 0; i < 2048; ++i) {
    ASSERT_EQ(m_writer.addAttributeToRecord(8, i, &list), 0U);
  }
  EXPECT_EQ(m_writer.writeQM2Record(1, kMetric, &list), 0);
  EXPECT_EQ(stream(kMetric).size(), 24'598U);
  EXPECT_EQ(number(stream(kMetric), 12, 2), 24'586U);
}

TEST_F(KeltoSample, AttributeTooManyIsRefused) {
  QM2AttributeList list;
  list.count = 2048;
  EXPECT_EQ(m_writer.addAttributeToRecord(8, 1, &list), 1U);
  EXPECT_EQ(list.count, 2048U);
  list.count = 2049;
  EXPECT_EQ(m_writer.writeQM2Record(1, kMetric, &list), 1);
  EXPECT_THAT(warnings(), ElementsAre("Maximum attribute count '2048' exceeded.\n",
                                      "Maximum attribute count '2048' exceeded.\n"));
}

TEST_F(KeltoSample, NoListTakesNothing) {
  EXPECT_EQ(m_writer.addAttributeToRecord(8, 1, nullptr), 1U);
  EXPECT_EQ(m_writer.writeQM2Record(1, kMetric, nullptr), 1);
  EXPECT_THAT(warnings(), ElementsAre("Invalid attribute list.\n", "Invalid attribute list.\n"));
}

TEST_F(KeltoSample, ViewerNoteShowsOnlyIfTheVeryFirstListIsLong) {
  QM2AttributeList list;
  list.count = 256;
  m_writer.addAttributeToRecord(8, 1, &list);
  EXPECT_THAT(notes(), ElementsAre("Note: The generated .pwr result file can only be imported in "
                                   "Kelto(TM) 2018 Update 2 or later.\n"));
}

TEST_F(KeltoSample, ViewerNoteIsUsedUpByAShortList) {
  QM2AttributeList list;
  list.count = 255;
  m_writer.addAttributeToRecord(8, 1, &list);
  m_writer.addAttributeToRecord(8, 1, &list);
  EXPECT_THAT(notes(), IsEmpty());
}

// The order of attributes.

TEST_F(KeltoSample, ValueFollowsItsState) {
  pwr::EntityHandle& core = entity("Core");
  pwr::DataDescriptor& state = descriptor("C6");
  ASSERT_EQ(deliver(2000, {element(core, &state, pwr::Data(5UL), 30)}), 0);
  EXPECT_EQ(lastSample(), joined({plainAttributes(core, state, 30, 5)}));
  EXPECT_EQ(number(samples().back(), 4, 8), 2000U);
}

TEST_F(KeltoSample, SampleWithoutElementsIsTheMetricAlone) {
  ASSERT_EQ(deliver(2000, {}), 0);
  EXPECT_EQ(lastSample(), joined({}));
  EXPECT_TRUE(KeltoWriterImpl::m_hasData);
}

TEST_F(KeltoSample, ElementsOfAnEntityStandTogetherInTheirOrder) {
  pwr::EntityHandle& a = entity("A");
  pwr::EntityHandle& b = entity("B");
  pwr::DataDescriptor& c1 = descriptor("C1");
  pwr::DataDescriptor& c6 = descriptor("C6");
  ASSERT_EQ(deliver(2000, {element(a, &c1, pwr::Data(1UL), 1), element(b, &c1, pwr::Data(2UL), 2),
                           element(a, &c6, pwr::Data(3UL), 3), element(b, &c6, pwr::Data(4UL), 4)}),
            0);
  Attributes ofA = plainAttributes(a, c1, 1, 1);
  const Attributes second = plainAttributes(a, c6, 3, 3);
  ofA.insert(ofA.end(), second.begin() + 1, second.end());
  const Attributes all = lastSample();
  EXPECT_NE(std::search(all.begin(), all.end(), ofA.begin(), ofA.end()), all.end());
  EXPECT_EQ(all.size(), 1U + 2 * 9);
}

TEST_F(KeltoSample, EntitiesThatChangeTheirOrderKeepTheirValues) {
  pwr::EntityHandle& a = entity("A");
  pwr::EntityHandle& b = entity("B");
  pwr::DataDescriptor& c6 = descriptor("C6");
  deliver(2000, {element(a, &c6, pwr::Data(1UL)), element(b, &c6, pwr::Data(2UL))});
  deliver(3000, {element(b, &c6, pwr::Data(3UL))});
  EXPECT_EQ(lastSample(), joined({plainAttributes(b, c6, 0, 3)}));
  deliver(4000, {element(a, &c6, pwr::Data(4UL))});
  EXPECT_EQ(lastSample(), joined({plainAttributes(a, c6, 0, 4)}));
}

TEST_F(KeltoSample, AttributesStandInTheOrderOfTheirKinds) {
  const pwr::Quantity& hertz = quantity("Frequency", "Hz");
  const pwr::NameValuePair& ofEntity = pair("entity info", "", 1);
  const pwr::NameValuePair& ofState = pair("state info", "", 1);
  const pwr::NameValuePair& ofValue = pair("value info", "", 1);
  const auto* const info = attribute("info", pwr::AttributeType::Info);
  const auto* const first = attribute("first", pwr::AttributeType::Data, &hertz);
  const auto* const second = attribute("second", pwr::AttributeType::Data, &hertz);
  const auto* const dynamicInfo = attribute("dynamic info", pwr::AttributeType::Info);
  const auto* const dynamicData = attribute("dynamic data", pwr::AttributeType::Data);
  pwr::EntityHandle& core = entity("Core");
  core.addAttributeValue(info, pwr::Data::fromHandle(&ofEntity));
  pwr::DataDescriptor& state = descriptor("P");
  state.addAttributeValue(first, pwr::Data(100UL));
  state.addAttributeValue(info, pwr::Data::fromHandle(&ofState));
  state.addAttributeValue(second, pwr::Data(200UL));
  const pwr::DynamicAttributeValueManager extra(
      {{dynamicInfo->getId(), pwr::Data::fromHandle(&ofValue)},
       {dynamicData->getId(), pwr::Data(std::string("text"))}});
  ASSERT_EQ(deliver(2000, {element(core, &state, pwr::Data::fromInt(-5), 9, &extra)}), 0);
  const auto text = [&](const char* of) {
    return static_cast<std::uint64_t>(m_writer.nameIdStrings.at(of));
  };
  EXPECT_EQ(lastSample(), (Attributes{{kMetricAttribute, kMetric},
                                      {kEntityAttribute, core.getId()},
                                      {kInfoAttribute, ofEntity.getId()},
                                      {kFieldAttribute, state.getId()},
                                      {kDurationAttribute, 9},
                                      {kColorAttribute, colorOf("P 100(Hz)")},
                                      {kInfoAttribute, ofState.getId()},
                                      {kInfoAttribute, ofValue.getId()},
                                      {kInfoAttribute, text("100(Hz)")},
                                      {kInfoAttribute, text("200(Hz)")},
                                      {kInfoAttribute, text("text")},
                                      {kIntAttribute, static_cast<std::uint64_t>(-5L)}}));
}

TEST_F(KeltoSample, FirstDataAttributeOfATransitionIsANumber) {
  const pwr::Quantity& hertz = quantity("Frequency", "Hz");
  pwr::EntityHandle& core = entity("Core");
  pwr::DataDescriptor& state = descriptor("P");
  const auto* const data = attribute("data", pwr::AttributeType::Data, &hertz);
  state.addAttributeValue(data, pwr::Data(100UL));
  state.addAttributeValue(data, pwr::Data(200UL));
  m_metric.metricType = pwr::Metric::TRACED_VALUE_TRANSITION;
  ASSERT_EQ(deliver(2000, {element(core, &state, pwr::Data(), 9)}), 1);
  EXPECT_EQ(warnings().end()[-2], "Unsupported data type obtained.\n");
}

TEST_F(KeltoSample, NumberOfATransitionHasItsQuantityInFront) {
  const pwr::Quantity& hertz = quantity("Frequency", "Hz");
  pwr::EntityHandle& core = entity("Core");
  pwr::DataDescriptor& state = descriptor("P");
  const auto* const data = attribute("data", pwr::AttributeType::Data, &hertz);
  state.addAttributeValue(data, pwr::Data(100UL));
  state.addAttributeValue(data, pwr::Data(200UL));
  m_metric.metricType = pwr::Metric::TRACED_VALUE_TRANSITION;
  ASSERT_EQ(deliver(2000, {element(core, &state, pwr::Data(7UL), 9)}), 0);
  const Attributes all = lastSample();
  ASSERT_EQ(all.size(), 9U);
  EXPECT_EQ(all[5], (std::pair<std::uint64_t, std::uint64_t>(kQuantityAttribute, hertz.getId())));
  EXPECT_EQ(all[6], (std::pair<std::uint64_t, std::uint64_t>(kUIntAttribute, 100)));
  EXPECT_EQ(all[7].first, kInfoAttribute);
  EXPECT_EQ(all[8], (std::pair<std::uint64_t, std::uint64_t>(kUIntAttribute, 7)));
}

TEST_F(KeltoSample, DurationOfZeroStaysZero) {
  deliverPlain(2000);
  pwr::EntityHandle& core = entity("Core");
  ASSERT_EQ(deliver(3000, {element(core, &descriptor("C6"), pwr::Data(5UL))}), 0);
  ASSERT_EQ(deliver(4000, {element(core, &descriptor("C6"), pwr::Data(5UL))}), 0);
  EXPECT_EQ(lastSample()[3].second, 0U);
}

// States.

TEST_F(KeltoSample, StateOfAnotherDescriptorKeepsTheFirstId) {
  pwr::EntityHandle& core = entity("Core");
  pwr::DataDescriptor& first = descriptor("C6");
  pwr::DataDescriptor& second = descriptor("C6");
  deliver(2000, {element(core, &first, pwr::Data(1UL))});
  deliver(3000, {element(core, &second, pwr::Data(2UL))});
  EXPECT_EQ(lastSample()[2].second, first.getId());
  EXPECT_EQ(nodes("field").size(), 1U);
}

TEST_F(KeltoSample, StateKnownFromOnePlaceHasItsIdsInAnother) {
  pwr::EntityHandle& core = entity("Core");
  pwr::DataDescriptor& c1 = descriptor("C1");
  pwr::DataDescriptor& c6 = descriptor("C6");
  deliver(2000, {element(core, &c1, pwr::Data(1UL)), element(core, &c6, pwr::Data(2UL))});
  deliver(3000, {element(core, &c6, pwr::Data(3UL))});
  EXPECT_EQ(lastSample(), joined({plainAttributes(core, c6, 0, 3)}));
  m_metric.metricId = 8;
  deliver(3000, {element(core, &c6, pwr::Data(4UL))});
  Attributes expected = joined({plainAttributes(core, c6, 0, 4)});
  expected[0].second = 8;
  EXPECT_EQ(lastSample(8), expected);
}

TEST_F(KeltoSample, UnnamedStateIsNA) {
  ASSERT_EQ(deliver(2000, {element(entity("Core"), &descriptor(""), pwr::Data(1UL))}), 0);
  EXPECT_EQ(nodes("field")[0].longName, "NA");
  EXPECT_EQ(nodes("color")[0].longName, "#3CAC3C|#3CAC3C");
}

TEST_F(KeltoSample, StateOfADescriptorFollowsItsAttributes) {
  pwr::EntityHandle& core = entity("Core");
  pwr::DataDescriptor& state = descriptor("P");
  const auto* const data = attribute("data", pwr::AttributeType::Data);
  deliver(2000, {element(core, &state, pwr::Data(1UL))});
  state.setAttributeValues({{data, pwr::Data(1UL)}});
  deliver(3000, {element(core, &state, pwr::Data(1UL))});
  state.setAttributeValues({{data, pwr::Data(2UL)}});
  deliver(4000, {element(core, &state, pwr::Data(1UL))});
  ASSERT_EQ(nodes("field").size(), 3U);
  EXPECT_EQ(nodes("field")[1].longName, "P 1");
  EXPECT_EQ(nodes("field")[2].longName, "P 2");
  EXPECT_EQ(lastSample()[4].second, colorOf("P 2"));
}

TEST_F(KeltoSample, FirstAttributeThatIsNoDataAddsNothingToTheState) {
  pwr::DataDescriptor& state = descriptor("P");
  addInfos(state, 1);
  state.addAttributeValue(attribute("data", pwr::AttributeType::Data), pwr::Data(1UL));
  deliver(2000, {element(entity("Core"), &state, pwr::Data(1UL))});
  EXPECT_EQ(nodes("field")[0].longName, "P");
}

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

// Failed steps, each with its text. A list is filled up to the step by info attributes.

class KeltoFullList : public KeltoSample {
 protected:
  /// Delivers a sample whose entity fills the list so that `room` attributes still fit.
  int deliverWithRoom(std::uint32_t room, const pwr::DataDescriptor& state) {
    pwr::EntityHandle& full = entity("Full");
    addInfos(full, 2048 - 2 - room);
    return deliver(2000, {element(full, &state, pwr::Data(1UL))});
  }
  /// The last warning of such a sample, which must fail.
  std::string failureWithRoom(std::uint32_t room, const pwr::DataDescriptor& state) {
    EXPECT_EQ(deliverWithRoom(room, state), 1);
    return warnings().empty() ? "" : warnings().back();
  }
};

TEST_F(KeltoFullList, ListThatIsJustFullIsWritten) {
  EXPECT_EQ(deliverWithRoom(4, descriptor("C6")), 0);
  EXPECT_EQ(lastSample().size(), 2048U);
}

TEST_F(KeltoFullList, SecondEntity) {
  pwr::EntityHandle& full = entity("Full");
  addInfos(full, 2048 - 2 - 4);
  pwr::DataDescriptor& state = descriptor("C6");
  EXPECT_EQ(deliver(2000, {element(full, &state, pwr::Data(1UL)),
                           element(entity("Next"), &state, pwr::Data(1UL))}),
            1);
  EXPECT_EQ(warnings().back(), "Unable to add 'Metric' entity to the record. TSC: 2000\n");
}

TEST_F(KeltoFullList, InfoOfTheEntity) {
  pwr::EntityHandle& full = entity("Full");
  addInfos(full, 2047);
  EXPECT_EQ(deliver(2000, {element(full, &descriptor("C6"), pwr::Data(1UL))}), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Maximum attribute count '2048' exceeded.\n",
                          "Unable to add nameid value to the record.\n",
                          "Failed to process info attribute\n",
                          "Unable to add 'Metric' entity attributes to the record. TSC: 2000\n"));
}

TEST_F(KeltoFullList, Field) {
  EXPECT_EQ(failureWithRoom(0, descriptor("C6")),
            "Unable to add 'Metric' field to the record. TSC: 2000\n");
}

TEST_F(KeltoFullList, Duration) {
  EXPECT_EQ(failureWithRoom(1, descriptor("C6")),
            "Unable to add 'Metric' duration to the record. TSC: 2000\n");
}

TEST_F(KeltoFullList, Color) {
  EXPECT_EQ(failureWithRoom(2, descriptor("C6")),
            "Unable to add 'Metric' state color to the record. TSC: 2000\n");
}

TEST_F(KeltoFullList, Value) {
  EXPECT_EQ(failureWithRoom(3, descriptor("C6")),
            "Unable to add 'Metric' data to the record. TSC: 2000\n");
}

TEST_F(KeltoFullList, InfoOfTheDescriptor) {
  pwr::DataDescriptor& state = descriptor("C6");
  addInfos(state, 1);
  EXPECT_EQ(failureWithRoom(3, state),
            "Unable to add 'Metric' data static field info attributes to the record. TSC: 2000\n");
}

TEST_F(KeltoFullList, DataOfTheDescriptor) {
  pwr::DataDescriptor& state = descriptor("C6");
  state.addAttributeValue(attribute("d", pwr::AttributeType::Data), pwr::Data(1UL));
  EXPECT_EQ(failureWithRoom(3, state),
            "Unable to add 'Metric' field static data attributes to the record. TSC: 2000\n");
}

TEST_F(KeltoFullList, InfoOfTheValue) {
  const auto* const info = attribute("i", pwr::AttributeType::Info);
  const pwr::DynamicAttributeValueManager extra({{info->getId(), pwr::Data::fromHandle(nullptr)}});
  EXPECT_EQ(deliver(2000, {element(entity("E"), &descriptor("C6"), pwr::Data(1UL), 0, &extra)}), 1);
  EXPECT_EQ(warnings().back(),
            "Unable to add 'Metric' field dynamic info attributes to the record. TSC: 2000\n");
}

TEST_F(KeltoFullList, DataOfTheValue) {
  const auto* const data = attribute("d", pwr::AttributeType::Data);
  const pwr::DynamicAttributeValueManager extra({{data->getId(), pwr::Data()}});
  EXPECT_EQ(deliver(2000, {element(entity("E"), &descriptor("C6"), pwr::Data(1UL), 0, &extra)}), 1);
  EXPECT_EQ(warnings().back(),
            "Unable to add 'Metric' field dynamic data attributes to the record. TSC: 2000\n");
}

TEST_F(KeltoSample, FailedMetadataIsTold) {
  refuse(kMetric);
  EXPECT_EQ(deliverPlain(2000), 1);
  EXPECT_EQ(warnings().back(), "Failed to process 'Metric' metric metadata.\n");
}

TEST_F(KeltoSample, FailedEntityIsTold) {
  const pwr::EntityHandle parent(5, {"E", "", ""}, nullptr);
  const pwr::EntityHandle child(5, {"E", "", ""}, &parent);
  EXPECT_EQ(deliver(2000, {element(child, &descriptor("C6"), pwr::Data(1UL))}), 1);
  EXPECT_EQ(warnings().back(), "Unable to write 'Metric' entity metadata topology. TSC: 2000\n");
}

TEST_F(KeltoSample, FailedTextOfTheStateIsTold) {
  pwr::DataDescriptor& state = descriptor("C6");
  state.addAttributeValue(attribute("d", pwr::AttributeType::Data), pwr::Data());
  EXPECT_EQ(deliver(2000, {element(entity("E"), &state, pwr::Data(1UL))}), 1);
  EXPECT_THAT(warnings(), ElementsAre("Unsupported data type obtained.\n",
                                      "Unable to add first attribute data to the record.\n",
                                      "Failed to get first attribute as string. TSC: 2000\n"));
}

TEST_F(KeltoSample, FailedFieldIsTold) {
  pwr::EntityHandle& core = entity("E");
  deliver(2000, {element(core, nullptr, pwr::Data(1UL))});  // All kinds but that of fields.
  m_metric.metricId = 8;
  deliver(2000, {});
  refuse(kSystem);
  EXPECT_EQ(deliver(3000, {element(core, &descriptor("C6"), pwr::Data(1UL))}), 1);
  EXPECT_EQ(warnings().back(), "Unable to write 'Metric' data field metadata. TSC: 3000\n");
}

TEST_F(KeltoSample, FailedColorIsTold) {
  const std::string name(390, 's');
  EXPECT_EQ(deliver(2000, {element(entity("E"), &descriptor(name), pwr::Data(1UL))}), 1);
  EXPECT_EQ(warnings().back(), "Unable to write 'Metric' data field color metadata. TSC: 2000\n");
}

TEST_F(KeltoSample, StateWhoseNodeIsTooLongStillHasItsColor) {
  const std::string name(200, 's');
  pwr::DataDescriptor& state = descriptor(name);
  pwr::EntityHandle& core = entity("E");
  EXPECT_EQ(deliver(2000, {element(core, &state, pwr::Data(1UL))}), 0);
  EXPECT_EQ(deliver(3000, {element(core, &state, pwr::Data(1UL))}), 0);
  EXPECT_THAT(warnings(), ElementsAre("Info names string too long\n"));
  EXPECT_EQ(lastSample()[2].second, state.getId());
}

TEST_F(KeltoSample, FailedSampleLeavesNothingButItsMetadata) {
  EXPECT_EQ(deliver(2000, {element(entity("E"), &descriptor("C6"), pwr::Data())}), 1);
  EXPECT_THAT(samples(), IsEmpty());
  EXPECT_EQ(nodes("entity").size(), 1U);
}

}  // namespace
