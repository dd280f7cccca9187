// What refuses a metric while its sample is made, and the warnings of each step.
#include "tests/writers/kelto_sample_fixture.h"

namespace {

using qumetra::test::KeltoSample;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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
