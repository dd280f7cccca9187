// Samples: what goes into a record, and in which order.
#include "tests/writers/kelto_sample_fixture.h"

namespace {

using qumetra::test::Attributes;
using qumetra::test::hex;
using qumetra::test::KeltoSample;
using qumetra::test::number;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

}  // namespace
