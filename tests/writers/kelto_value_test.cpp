// Values and attributes of samples.
#include <bit>

#include "tests/writers/kelto_fixture.h"

namespace {

using qumetra::test::Attributes;
using qumetra::test::KeltoTest;
using qumetra::test::Node;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kRealNote =
    "The generated .pwr file can only be visualized in Kelto Viewer 2018 Update 3 or later\n";

class KeltoValue : public KeltoTest {
 protected:
  KeltoValue() { deliverSystem(); }

  /// What `data` adds to a list.
  Attributes added(const pwr::Data& data, const pwr::Quantity* quantity = nullptr) {
    m_list.count = 0;
    EXPECT_EQ(m_writer.processData(&data, quantity, &m_list, false, nullptr), 0);
    return listed();
  }
  /// The text that `data` gives.
  std::string text(const pwr::Data& data, const pwr::Quantity* quantity = nullptr) {
    std::string out;
    EXPECT_EQ(m_writer.processData(&data, quantity, nullptr, true, &out), 0);
    return out;
  }
  int addToFullList(const pwr::Data& data, std::uint32_t count, bool asString = false,
                    const pwr::Quantity* quantity = nullptr) {
    m_list.count = count;
    return m_writer.processData(&data, quantity, &m_list, asString, nullptr);
  }
  Attributes listed() const {
    Attributes all;
    for (std::uint32_t i = 0; i < m_list.count; ++i) {
      all.emplace_back(m_list.ids[i], m_list.values[i]);
    }
    return all;
  }
  int addInfo(pwr::AttributeType type, const pwr::DataHandle* handle) {
    const pwr::Data data = pwr::Data::fromHandle(handle);
    return m_writer.processInfoAttributesHelper(attribute("a", type), &data, &m_list);
  }
  static std::uint64_t bits(double value) { return std::bit_cast<std::uint64_t>(value); }

  QM2AttributeList m_list;
};

// Numbers.

TEST_F(KeltoValue, Int) { EXPECT_EQ(added(pwr::Data::fromInt(-1)), (Attributes{{9, ~0UL}})); }

TEST_F(KeltoValue, UInt) { EXPECT_EQ(added(pwr::Data(7UL)), (Attributes{{10, 7}})); }

TEST_F(KeltoValue, RealIsItsBits) {
  EXPECT_EQ(added(pwr::Data(1.5)), (Attributes{{11, 0x3FF8000000000000}}));
}

TEST_F(KeltoValue, LegacyRealIsAWholeNumber) {
  m_writer.legacy = true;
  EXPECT_EQ(added(pwr::Data(1.5)), (Attributes{{11, 1}}));
  EXPECT_EQ(added(pwr::Data::fromRealRange({2.9, 1e300})), (Attributes{{16, 2}, {17, 0}}));
}

TEST_F(KeltoValue, Ranges) {
  EXPECT_EQ(added(pwr::Data::fromIntRange({-1, 4})), (Attributes{{12, ~0UL}, {13, 4}}));
  EXPECT_EQ(added(pwr::Data::fromUIntRange({1, 4})), (Attributes{{14, 1}, {15, 4}}));
  EXPECT_EQ(added(pwr::Data::fromRealRange({0.5, 1.5})),
            (Attributes{{16, bits(0.5)}, {17, bits(1.5)}}));
}

TEST_F(KeltoValue, NoDataAddsNothing) {
  EXPECT_EQ(m_writer.processData(nullptr, nullptr, nullptr, false, nullptr), 0);
}

TEST_F(KeltoValue, NeitherListNorTextIsAFailure) {
  const pwr::Data data(1UL);
  EXPECT_EQ(m_writer.processData(&data, nullptr, nullptr, false, nullptr), 1);
  EXPECT_THAT(warnings(), ElementsAre("Invalid attribute list.\n"));
}

TEST_F(KeltoValue, QuantityStandsBeforeItsValue) {
  const pwr::Quantity& power = quantity("Power", "W");
  EXPECT_EQ(added(pwr::Data(7UL), &power), (Attributes{{6, power.getId()}, {10, 7}}));
  EXPECT_EQ(nodes("quantity").size(), 1U);
}

class KeltoUnsupportedTag : public KeltoValue, public ::testing::WithParamInterface<int> {};

TEST_P(KeltoUnsupportedTag, IsRefusedInBothForms) {
  const pwr::Data data = pwr::Data::fromTag(static_cast<std::uint8_t>(GetParam()));
  EXPECT_EQ(m_writer.processData(&data, nullptr, &m_list, false, nullptr), 1);
  EXPECT_EQ(m_writer.processData(&data, nullptr, &m_list, true, nullptr), 1);
  EXPECT_THAT(warnings(), ElementsAre("Unsupported data type obtained.\n",
                                      "Unsupported data type obtained.\n"));
}

INSTANTIATE_TEST_SUITE_P(Tags, KeltoUnsupportedTag, ::testing::Values(0, 7, 9, 255));

// Notes.

TEST_F(KeltoValue, RealsAndRealRangesAreNotedOnceEach) {
  added(pwr::Data(1.5));
  added(pwr::Data(1.5));
  EXPECT_THAT(notes(), ElementsAre(kRealNote));
  added(pwr::Data::fromRealRange({1, 2}));
  added(pwr::Data::fromRealRange({1, 2}));
  EXPECT_THAT(notes(), ElementsAre(kRealNote, kRealNote));
}

TEST_F(KeltoValue, LegacyRealsNeedNoNote) {
  m_writer.legacy = true;
  added(pwr::Data(1.5));
  added(pwr::Data::fromRealRange({1, 2}));
  EXPECT_THAT(notes(), IsEmpty());
}

TEST_F(KeltoValue, RealIsNotedBeforeItIsAddedAndARangeAfter) {
  added(pwr::Data(1UL));  // Uses up the note about long lists.
  EXPECT_EQ(addToFullList(pwr::Data(1.5), 2048), 1);
  EXPECT_THAT(notes(), ElementsAre(kRealNote));
  EXPECT_EQ(addToFullList(pwr::Data::fromRealRange({1, 2}), 2047), 1);
  EXPECT_THAT(notes(), ElementsAre(kRealNote));
}

// Texts.

TEST_F(KeltoValue, NumbersAsTexts) {
  EXPECT_EQ(text(pwr::Data::fromInt(-3)), "-3");
  EXPECT_EQ(text(pwr::Data(3UL)), "3");
  EXPECT_EQ(text(pwr::Data(1234567.0)), "1.23457e+06");
}

TEST_F(KeltoValue, UnitsFollowTheNumberInBrackets) {
  const pwr::Quantity& hertz = quantity("Frequency", "MHz");
  EXPECT_EQ(text(pwr::Data(3UL), &hertz), "3(MHz)");
  EXPECT_EQ(text(pwr::Data::fromUIntRange({3, 7}), &hertz), "3-7(MHz)");
  EXPECT_EQ(text(pwr::Data(3UL), &quantity("None", "")), "3()");
}

TEST_F(KeltoValue, RangesAsTexts) {
  EXPECT_EQ(text(pwr::Data::fromIntRange({-3, -1})), "-3--1");
  EXPECT_EQ(text(pwr::Data::fromRealRange({0.5, 1.5})), "0.5-1.5");
}

TEST_F(KeltoValue, UnsignedRangeShowsAsSigned) {
  EXPECT_EQ(text(pwr::Data::fromUIntRange({1, ~0UL})), "1--1");
}

TEST_F(KeltoValue, TextIsATextInBothForms) {
  EXPECT_EQ(text(pwr::Data(std::string("abc"))), "abc");
  EXPECT_EQ(added(pwr::Data(std::string("abc")))[0].first, 8U);
}

TEST_F(KeltoValue, EqualTextsShareANode) {
  const Attributes first = added(pwr::Data(std::string("abc")));
  EXPECT_EQ(added(pwr::Data(std::string("abc"))), first);
  const std::vector<Node> found = nodes("nameid_attribute");
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].longName, "abc");
  EXPECT_EQ(found[0].shortName, "abc");
  EXPECT_EQ(found[0].description, "");
  EXPECT_EQ(found[0].value, 0U);
  EXPECT_EQ(found[0].parent, 0xFFFFFFFFU);
  EXPECT_EQ(found[0].uid, first[0].second);
}

TEST_F(KeltoValue, NumberAsTextBecomesANode) {
  const pwr::Data data(3UL);
  EXPECT_EQ(m_writer.processData(&data, &quantity("F", "MHz"), &m_list, true, nullptr), 0);
  EXPECT_EQ(nodes("nameid_attribute")[0].longName, "3(MHz)");
  EXPECT_EQ(m_list.ids[0], 8U);
  EXPECT_EQ(m_list.count, 1U);
}

TEST_F(KeltoValue, TextNeedsAList) {
  EXPECT_EQ(m_writer.processStringData("abc", nullptr), 1);
  EXPECT_THAT(warnings(), ElementsAre("Invalid attribute list.\n"));
}

// Full lists, each with its text.

struct FullListCase {
  pwr::Data data;
  std::uint32_t count;
  const char* text;
};

class KeltoFullListValue : public KeltoValue, public ::testing::WithParamInterface<FullListCase> {};

TEST_P(KeltoFullListValue, IsTold) {
  EXPECT_EQ(addToFullList(GetParam().data, GetParam().count), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Maximum attribute count '2048' exceeded.\n", GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, KeltoFullListValue,
    ::testing::Values(
        FullListCase{pwr::Data::fromInt(-3), 2048,
                     "Unable to add integer value '-3' to the record.\n"},
        FullListCase{pwr::Data(3UL), 2048,
                     "Unable to add unsigned integer value '3' to the record.\n"},
        FullListCase{pwr::Data(1.5), 2048, "Unable to add real value '1.500000' to the record.\n"},
        FullListCase{pwr::Data::fromIntRange({-3, 4}), 2048,
                     "Unable to add lower bound integer value '-3' to the record.\n"},
        FullListCase{pwr::Data::fromIntRange({-3, 4}), 2047,
                     "Unable to add upper bound integer value '4' to the record.\n"},
        FullListCase{pwr::Data::fromUIntRange({3, 4}), 2048,
                     "Unable to add lower bound unsigned integer value '3' to the record.\n"},
        FullListCase{pwr::Data::fromUIntRange({3, 4}), 2047,
                     "Unable to add upper bound unsigned integer value '4' to the record.\n"},
        FullListCase{pwr::Data::fromRealRange({3, 4}), 2048,
                     "Unable to add lower bound real value '3.000000' to the record.\n"},
        FullListCase{pwr::Data::fromRealRange({3, 4}), 2047,
                     "Unable to add upper bound real value '4.000000' to the record.\n"}));

TEST_F(KeltoValue, QuantityWithoutRoomIsTold) {
  EXPECT_EQ(addToFullList(pwr::Data(1UL), 2048, false, &quantity("Q", "u")), 1);
  EXPECT_EQ(warnings().back(), "Unable to add quantity attribute to the record.\n");
}

TEST_F(KeltoValue, FailedQuantityIsTold) {
  const pwr::Quantity& tooLong = quantity(std::string(200, 'q'), "u");
  EXPECT_EQ(addToFullList(pwr::Data(1UL), 0, false, &tooLong), 1);
  EXPECT_EQ(warnings().back(),
            "Failed to handle quantity metadata uid:" + std::to_string(tooLong.getId()) + "'.\n");
}

TEST_F(KeltoValue, TextWithoutRoomIsTold) {
  EXPECT_EQ(addToFullList(pwr::Data(std::string("abc")), 2048), 1);
  EXPECT_THAT(warnings(), ElementsAre("Maximum attribute count '2048' exceeded.\n",
                                      "Unable to add string value 'abc' to the record.\n",
                                      "Unable to process string value 'abc'.\n"));
}

TEST_F(KeltoValue, TextTooLongForANodeIsTold) {
  const std::string longText(200, 't');
  EXPECT_EQ(addToFullList(pwr::Data(longText), 0), 1);
  EXPECT_THAT(warnings(), ElementsAre("Info names string too long\n",
                                      "Failed to write an info record for string attribute '" +
                                          longText + "'.\n",
                                      "Unable to process string value '" + longText + "'.\n"));
}

TEST_F(KeltoValue, NumberAsTextWithoutRoomIsTold) {
  EXPECT_EQ(addToFullList(pwr::Data(1UL), 2048, true), 1);
  EXPECT_EQ(warnings().back(), "Unable to process value attribute as string'.\n");
}

TEST_F(KeltoValue, RangeAsTextWithoutRoomIsTold) {
  EXPECT_EQ(addToFullList(pwr::Data::fromIntRange({1, 2}), 2048, true), 1);
  EXPECT_EQ(warnings().back(), "Unable to process value range attribute as string'.\n");
}

// Info attributes.

TEST_F(KeltoValue, PairBecomesANodeOnce) {
  const pwr::NameValuePair& one = pair("name", "description", 42);
  EXPECT_EQ(addInfo(pwr::AttributeType::Info, &one), 0);
  EXPECT_EQ(addInfo(pwr::AttributeType::Info, &one), 0);
  EXPECT_EQ(listed(), (Attributes{{8, one.getId()}, {8, one.getId()}}));
  const std::vector<Node> found = nodes("nameid_attribute");
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].longName, "name");
  EXPECT_EQ(found[0].shortName, "name");
  EXPECT_EQ(found[0].description, "description");
  EXPECT_EQ(found[0].value, 42U);
  EXPECT_EQ(found[0].uid, one.getId());
  EXPECT_EQ(found[0].parent, 0xFFFFFFFFU);
}

TEST_F(KeltoValue, ProcessIsAnnouncedAndAdded) {
  pwr::Process& shell = process(55, "sh", 2000);
  EXPECT_EQ(addInfo(pwr::AttributeType::Process, &shell), 0);
  EXPECT_EQ(addInfo(pwr::AttributeType::Process, &shell), 0);
  EXPECT_EQ(listed(), (Attributes{{3, 55}, {3, 55}}));
  EXPECT_EQ(m_processes.size(), 1U);
}

TEST_F(KeltoValue, ThreadIsAnnouncedAndAdded) {
  EXPECT_EQ(addInfo(pwr::AttributeType::Thread, &thread(56, 55, 2000)), 0);
  EXPECT_EQ(listed(), (Attributes{{4, 56}}));
  EXPECT_EQ(m_threads.size(), 1U);
}

TEST_F(KeltoValue, OtherKindsAreNoInfo) {
  EXPECT_EQ(addInfo(pwr::AttributeType::Data, nullptr), 0);
  EXPECT_EQ(addInfo(static_cast<pwr::AttributeType>(2), nullptr), 0);
  EXPECT_EQ(m_list.count, 0U);
}

TEST_F(KeltoValue, HandleKnownAsOneKindIsNotTakenForAnother) {
  pwr::Process& shell = process(55, "sh", 2000);
  EXPECT_EQ(addInfo(pwr::AttributeType::Process, &shell), 0);
  EXPECT_EQ(addInfo(pwr::AttributeType::Info, &shell), 1);
  EXPECT_EQ(addInfo(pwr::AttributeType::Thread, &shell), 1);
}

struct InfoFailure {
  pwr::AttributeType type;
  bool hasHandle;
  const char* text;
};

class KeltoInfoFailure : public KeltoValue, public ::testing::WithParamInterface<InfoFailure> {};

TEST_P(KeltoInfoFailure, IsTold) {
  EXPECT_EQ(addInfo(GetParam().type, GetParam().hasHandle ? &entity("other") : nullptr), 1);
  EXPECT_THAT(warnings(), ElementsAre(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    All, KeltoInfoFailure,
    ::testing::Values(
        InfoFailure{pwr::AttributeType::Info, false,
                    "Failed to get data handle for info attribute.\n"},
        InfoFailure{pwr::AttributeType::Info, true, "Failed to get data for info attribute\n"},
        InfoFailure{pwr::AttributeType::Thread, false,
                    "Failed to get data handle for thread attribute.\n"},
        InfoFailure{pwr::AttributeType::Thread, true,
                    "Failed to get thread attribute information\n"},
        InfoFailure{pwr::AttributeType::Process, false,
                    "Failed to get data handle for process attribute.\n"},
        InfoFailure{pwr::AttributeType::Process, true, "Failed to handle process information\n"}));

TEST_F(KeltoValue, PairWithoutItsKindIsTold) {
  refuse(kSystem);
  EXPECT_EQ(addInfo(pwr::AttributeType::Info, &pair("name", "", 1)), 1);
  EXPECT_EQ(warnings().back(), "Invalid info type. Failed to process info attribute.\n");
}

TEST_F(KeltoValue, PairThatCannotBeWrittenIsTold) {
  EXPECT_EQ(addInfo(pwr::AttributeType::Info, &pair(std::string(200, 'n'), "", 1)), 1);
  EXPECT_EQ(warnings().back(), "Failed to write an info record for nameid attribute.\n");
}

TEST_F(KeltoValue, ThreadThatCannotBeWrittenIsTold) {
  refuse(kSystem);
  EXPECT_EQ(addInfo(pwr::AttributeType::Thread, &thread(2, 1, 2000)), 1);
  EXPECT_EQ(warnings().back(), "Failed to handle thread information. \n");
}

TEST_F(KeltoValue, ProcessThatCannotBeWrittenIsTold) {
  refuse(kSystem);
  EXPECT_EQ(addInfo(pwr::AttributeType::Process, &process(1, "sh", 2000)), 1);
  EXPECT_EQ(warnings().back(), "Failed to handle process information. \n");
}

TEST_F(KeltoValue, ProcessWithoutRoomHasTheTextOfAThread) {
  m_list.count = 2048;
  EXPECT_EQ(addInfo(pwr::AttributeType::Process, &process(1, "sh", 2000)), 1);
  EXPECT_EQ(warnings().back(), "Unable to add thread attribute to the record.\n");
  EXPECT_EQ(addInfo(pwr::AttributeType::Thread, &thread(2, 1, 2000)), 1);
  EXPECT_EQ(warnings().back(), "Unable to add thread attribute to the record.\n");
}

TEST_F(KeltoValue, InfoHelperNeedsAllItsArguments) {
  const pwr::Data data(1UL);
  EXPECT_EQ(m_writer.processInfoAttributesHelper(nullptr, &data, &m_list), 1);
  EXPECT_EQ(m_writer.processInfoAttributesHelper(attribute("a", pwr::AttributeType::Info), nullptr,
                                                 &m_list),
            1);
  EXPECT_EQ(m_writer.processInfoAttributesHelper(attribute("a", pwr::AttributeType::Info), &data,
                                                 nullptr),
            1);
  EXPECT_THAT(warnings(), ElementsAre("Can't process attribute.\n", "Can't process attribute.\n",
                                      "Can't process attribute.\n"));
}

TEST_F(KeltoValue, WalksNeedManagerAndList) {
  const pwr::AttributeValueManager* const none = nullptr;
  const pwr::AttributeValueManager some;
  const pwr::DynamicAttributeValueManager dynamic;
  EXPECT_EQ(m_writer.processInfoAttributes(none, &m_list), 1);
  EXPECT_EQ(m_writer.processInfoAttributes(&some, nullptr), 1);
  EXPECT_EQ(m_writer.processInfoAttributes(&dynamic, nullptr), 1);
  EXPECT_EQ(m_writer.processDataAttributes(none, &m_list, true), 1);
  EXPECT_EQ(m_writer.processDataAttributes(&some, nullptr, true), 1);
  EXPECT_EQ(m_writer.processDataAttributes(&dynamic, nullptr, true), 1);
  EXPECT_EQ(warnings(), std::vector<std::string>(6, "Can't process attributes.\n"));
}

TEST_F(KeltoValue, NoDynamicAttributesAreNoFailure) {
  const pwr::DynamicAttributeValueManager* const none = nullptr;
  EXPECT_EQ(m_writer.processInfoAttributes(none, &m_list), 0);
  EXPECT_EQ(m_writer.processDataAttributes(none, &m_list, true), 0);
}

TEST_F(KeltoValue, WalkStopsAtANullAttribute) {
  pwr::AttributeValueManager manager;
  const auto* const data = attribute("d", pwr::AttributeType::Data);
  manager.addAttributeValue(data, pwr::Data(1UL));
  manager.addAttributeValue(nullptr, pwr::Data());
  manager.addAttributeValue(data, pwr::Data(2UL));
  EXPECT_EQ(m_writer.processDataAttributes(&manager, &m_list, false), 0);
  EXPECT_EQ(listed(), (Attributes{{10, 1}}));
}

TEST_F(KeltoValue, WalkStopsAtAKeyThatIsNoAttribute) {
  const pwr::DataDescriptor* const notOne =
      pwr::DataDescriptor::create(pwr::DataDescriptorBuilder("d", "d"));
  const pwr::DynamicAttributeValueManager unknown({{3, pwr::Data()}});
  const pwr::DynamicAttributeValueManager foreign({{notOne->getId(), pwr::Data()}});
  EXPECT_EQ(m_writer.processDataAttributes(&unknown, &m_list, false), 0);
  EXPECT_EQ(m_writer.processInfoAttributes(&foreign, &m_list), 0);
  EXPECT_THAT(warnings(), IsEmpty());
}

// Data attributes.

TEST_F(KeltoValue, OnlyTheFirstDataAttributeMayBeANumber) {
  pwr::AttributeValueManager manager;
  const auto* const data = attribute("d", pwr::AttributeType::Data);
  manager.addAttributeValue(data, pwr::Data(1UL));
  manager.addAttributeValue(data, pwr::Data(2UL));
  m_writer.processDataAttributes(&manager, &m_list, false);
  EXPECT_EQ(m_list.ids[0], 10U);
  EXPECT_EQ(m_list.ids[1], 8U);
}

TEST_F(KeltoValue, FirstIsTheFirstOfAllKinds) {
  pwr::AttributeValueManager manager;
  addInfos(manager, 1);
  manager.addAttributeValue(attribute("d", pwr::AttributeType::Data), pwr::Data(2UL));
  m_writer.processDataAttributes(&manager, &m_list, false);
  EXPECT_EQ(m_list.count, 1U);
  EXPECT_EQ(m_list.ids[0], 8U);
}

TEST_F(KeltoValue, FailedDataAttributeIsTold) {
  const pwr::Data data;
  EXPECT_EQ(m_writer.processDataAttributesHelper(attribute("d", pwr::AttributeType::Data), &data,
                                                 &m_list, true, nullptr),
            1);
  EXPECT_THAT(warnings(), ElementsAre("Unsupported data type obtained.\n",
                                      "Unable to add first attribute data to the record.\n"));
}

TEST_F(KeltoValue, DataHelperNeedsAttributeDataAndATarget) {
  const pwr::Data data(1UL);
  const auto* const one = attribute("d", pwr::AttributeType::Data);
  EXPECT_EQ(m_writer.processDataAttributesHelper(nullptr, &data, &m_list, true, nullptr), 1);
  EXPECT_EQ(m_writer.processDataAttributesHelper(one, nullptr, &m_list, true, nullptr), 1);
  EXPECT_EQ(m_writer.processDataAttributesHelper(one, &data, nullptr, true, nullptr), 1);
  EXPECT_EQ(warnings(), std::vector<std::string>(3, "Can't process attribute.\n"));
}

TEST_F(KeltoValue, FirstTextNeedsATarget) {
  const pwr::AttributeValueManager manager;
  EXPECT_EQ(m_writer.getFirstDataAttributeAsString(&manager, nullptr), 1);
  EXPECT_THAT(warnings(), ElementsAre("Failed to get string attribute\n"));
}

TEST_F(KeltoValue, NoFirstAttributeGivesNoText) {
  pwr::AttributeValueManager manager;
  std::string out;
  EXPECT_EQ(m_writer.getFirstDataAttributeAsString(nullptr, &out), 0);
  EXPECT_EQ(m_writer.getFirstDataAttributeAsString(&manager, &out), 0);
  manager.addAttributeValue(nullptr, pwr::Data(1UL));
  EXPECT_EQ(m_writer.getFirstDataAttributeAsString(&manager, &out), 0);
  EXPECT_EQ(out, "");
}

TEST_F(KeltoValue, FirstDataAttributeIsGivenAsText) {
  pwr::AttributeValueManager manager;
  std::string out;
  manager.addAttributeValue(attribute("d", pwr::AttributeType::Data, &quantity("F", "MHz")),
                            pwr::Data::fromIntRange({3, 7}));
  EXPECT_EQ(m_writer.getFirstDataAttributeAsString(&manager, &out), 0);
  EXPECT_EQ(out, "3-7(MHz)");
}

}  // namespace
