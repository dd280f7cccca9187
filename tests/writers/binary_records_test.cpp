// The layout of binary records, and the order in which names get their numbers.
#include "tests/writers/binary_fixture.h"

namespace qumetra::test {
namespace {

using pwr::Data;
using pwr::Metric;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

/// The record of a short text.
std::string stringRecord(const std::string& index, const std::string& text) {
  const std::string size(1, static_cast<char>(text.size()));
  const std::string length(1, static_cast<char>(text.size() + 4));
  return hexOf(length) + " 00 00 " + index + " 00 " + hexOf(size) + " 00" +
         (text.empty() ? "" : " ") + hexOf(text);
}

class BinaryRecords : public BinaryResult {
 protected:
  void SetUp() override { start(); }

  /// Where the name and the descriptor of a sample stand in its record.
  static std::string nameOf(const std::string& sample) { return sample.substr(57, 5); }
  static std::string descriptorOf(const std::string& sample) { return sample.substr(63, 5); }

  /// Sends one value of a metric that has the text "" as its group, number 1, the text "M", number
  /// 2, and a type, number 3. Returns the sample's record.
  std::string sampleOf(Metric::MetricType type, const pwr::EntityHandle& entity,
                       const pwr::DataDescriptor* descriptor) {
    BinaryMetric metric(7, type);
    metric.value(entity, Data(1.0), 0, descriptor);
    EXPECT_EQ(add(metric), 0);
    const auto samples = finished("04");
    return samples.empty() ? std::string(80, '?') : samples.front();
  }

  /// The text that the name of a sample refers to.
  std::string nameTextOf(const std::string& sample) const {
    for (const std::string& record : recordsOfType("00", "run.qmbin")) {
      if (record.substr(9, 5) == nameOf(sample)) {
        return record.size() < 21 ? "" : record.substr(21);
      }
    }
    return "no such text";
  }
};

TEST_F(BinaryRecords, StandInTheFileByTheirTypes) {
  m_c1.addAttributeValue(&m_attribute, Data(1UL));
  BinaryMetric metric(0x01020304, Metric::SAMPLED_RESIDENCY);
  metric.metric.groupName = "G";
  metric.in(m_power).at(0x0102030405060708);
  metric.metric.entities = {{&m_cpu0, &m_c6}, {&m_cpu1, nullptr}, {nullptr, &m_c6}};
  metric.metric.metadataValues = {Data(2.5), Data(std::string("CPU0"))};
  metric.value(m_cpu1, Data(6UL), 10, &m_c1);
  ASSERT_EQ(add(metric), 0);
  ASSERT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(records("run.qmbin"),
              ElementsAre(
                  // Texts of the descriptor, of the metric, of its columns, of its metadata. That
                  // of the sample is there already.
                  "05 00 00 01 00 01 00 31",                                                  // 1
                  "06 00 00 02 00 02 00 43 31",                                               // C1
                  "05 00 00 03 00 01 00 47",                                                  // G
                  "05 00 00 04 00 01 00 4d",                                                  // M
                  "15 00 00 05 00 11 00 53 41 4d 50 4c 45 44 5f 52 45 53 49 44 45 4e 43 59",  //
                  "09 00 00 06 00 05 00 50 6f 77 65 72",  // Power
                  "06 00 00 07 00 02 00 6d 57",           // mW
                  "08 00 00 08 00 04 00 43 50 55 30",     // CPU0
                  "04 00 00 09 00 00 00",                 // empty
                  "06 00 00 0a 00 02 00 43 36",           // C6
                  "08 00 00 0b 00 04 00 43 50 55 31",     // CPU1
                  "07 00 00 0c 00 03 00 32 2e 35",        // 2.5
                  // Descriptors: number, attribute, name.
                  "06 00 02 01 00 01 00 02 00", "06 00 02 02 00 09 00 0a 00",
                  // Id; group, name, type, quantity, units, flag; counts; columns; metadata.
                  "24 00 03 04 03 02 01 03 00 04 00 05 00 06 00 07 00 01 00 03 00 02 00 "
                  "08 00 02 00 0b 00 00 00 00 00 02 00 0c 00 08 00",
                  // Timestamp, 2 microseconds, id, name, descriptor, 1.5 microseconds.
                  "18 00 04 08 07 06 05 04 03 02 01 00 00 00 40 04 03 02 01 0b 00 01 00 "
                  "00 00 c0 3f"));
}

TEST_F(BinaryRecords, EmptyTextHasANumberAndARecord) {
  sampleOf(Metric::TRACED_EVENT, m_cpu0, nullptr);
  EXPECT_EQ(recordsOfType("00", "run.qmbin").front(), "04 00 00 01 00 00 00");
}

TEST_F(BinaryRecords, OneTextInThreePlacesHasOneNumber) {
  const pwr::EntityHandle entity(40, {"same", "", ""}, nullptr);
  const pwr::DataDescriptor state(41, {"same", "", ""});
  BinaryMetric metric(7, Metric::SAMPLED_DELTA, "same");
  metric.metric.entities = {{&entity, nullptr}};
  metric.value(entity, Data(1.0), 0, &state);
  EXPECT_EQ(add(metric), 0);
  const auto samples = finished("04");
  EXPECT_THAT(recordsOfType("00", "run.qmbin"),
              ElementsAre(stringRecord("01", ""), stringRecord("02", "same"),
                          stringRecord("03", "SAMPLED_DELTA")));
  ASSERT_THAT(samples, SizeIs(1));
  EXPECT_EQ(nameOf(samples[0]), "02 00");
}

TEST_F(BinaryRecords, TextOf65532BytesBreaksTheStreamSinceItsLengthHas16Bits) {
  BinaryMetric metric(7, Metric::TRACED_EVENT, std::string(65'532, 'x'));
  metric.value(m_cpu0, Data(1.0));
  EXPECT_EQ(add(metric), 0);
  EXPECT_EQ(m_writer.fini(), 0);
  const std::string file = bytes("run.qmbin");
  // Behind the empty group: a payload of 0 bytes, number 2, 0xfffc bytes of text.
  EXPECT_EQ(hexOf(file.substr(7, 8)), "00 00 00 02 00 fc ff 78");
  EXPECT_EQ(file.find_first_not_of('x', 14), 14U + 65'532U);
}

TEST_F(BinaryRecords, MoreColumnsThanALengthTellsAreWrittenAllTheSame) {
  BinaryMetric metric(7, Metric::TRACED_EVENT);
  metric.metric.entities.assign(16'400, {&m_cpu0, nullptr});
  metric.value(m_cpu0, Data(1.0));
  EXPECT_EQ(add(metric), 0);
  EXPECT_EQ(m_writer.fini(), 0);
  // 65620 bytes of payload: 84 are told. Texts: empty, M, TRACED_EVENT, CPU0.
  const std::string file = bytes("run.qmbin");
  const std::size_t metricStart = 7 + 8 + 19 + 11;
  EXPECT_EQ(hexOf(file.substr(metricStart, 3)), "54 00 03");
  EXPECT_EQ(file.size(), metricStart + 3 + 20 + 4 * 16'400 + 27);
}

TEST_F(BinaryRecords, NumbersOfTextsBeginAnewWhenTheirBitsAreUsedUp) {
  std::vector<std::unique_ptr<pwr::EntityHandle>> entities;
  BinaryMetric metric(7, Metric::TRACED_EVENT);
  for (std::uint64_t i = 0; i < 65'534; ++i) {
    entities.push_back(std::make_unique<pwr::EntityHandle>(
        100 + i, pwr::HandleTexts{"e" + std::to_string(i), "", ""}, nullptr));
    metric.value(*entities.back(), Data(1.0));
  }
  metric.value(*entities[65'532], Data(1.0));
  EXPECT_EQ(add(metric), 0);
  const auto samples = finished("04");
  ASSERT_THAT(samples, SizeIs(65'535));
  // The first has number 4.
  EXPECT_EQ(nameOf(samples[65'531]), "ff ff");
  EXPECT_EQ(nameOf(samples[65'532]), "00 00");
  EXPECT_EQ(nameOf(samples[65'533]), "01 00");
  // Number 0 is none, so the text gets another.
  EXPECT_EQ(nameOf(samples[65'534]), "02 00");
}

TEST_F(BinaryRecords, NumbersOfDescriptorsBeginAnewWhenTheirBitsAreUsedUp) {
  std::vector<std::unique_ptr<pwr::DataDescriptor>> descriptors;
  BinaryMetric metric(7, Metric::TRACED_EVENT);
  for (std::uint64_t i = 0; i < 65'536; ++i) {
    descriptors.push_back(
        std::make_unique<pwr::DataDescriptor>(100 + i, pwr::HandleTexts{"d", "", ""}));
    metric.value(m_cpu0, Data(1.0), 0, descriptors.back().get());
  }
  metric.value(m_cpu0, Data(1.0), 0, descriptors[65'535].get());
  EXPECT_EQ(add(metric), 0);
  const auto samples = finished("04");
  ASSERT_THAT(samples, SizeIs(65'537));
  EXPECT_EQ(descriptorOf(samples[65'534]), "ff ff");
  EXPECT_EQ(descriptorOf(samples[65'535]), "00 00");
  // Number 0 is none, so the descriptor gets another, and is told once more.
  EXPECT_EQ(descriptorOf(samples[65'536]), "01 00");
  EXPECT_THAT(recordsOfType("02", "run.qmbin"), SizeIs(65'537));
}

TEST_F(BinaryRecords, DescriptorsOfEqualNamesAreTwo) {
  const pwr::DataDescriptor twin(41, {"C6", "", ""});
  BinaryMetric metric(7, Metric::SAMPLED_DELTA);
  metric.value(m_cpu0, Data(1.0), 0, &m_c6).value(m_cpu0, Data(1.0), 0, &twin);
  metric.value(m_cpu0, Data(1.0), 0, &m_c6);
  EXPECT_EQ(add(metric), 0);
  const auto samples = finished("04");
  ASSERT_THAT(samples, SizeIs(3));
  EXPECT_EQ(descriptorOf(samples[0]), "01 00");
  EXPECT_EQ(descriptorOf(samples[1]), "02 00");
  EXPECT_EQ(descriptorOf(samples[2]), "01 00");
  EXPECT_EQ(nameOf(samples[0]), nameOf(samples[1]));
  EXPECT_THAT(recordsOfType("02", "run.qmbin"), SizeIs(2));
}

TEST_F(BinaryRecords, DescriptorWithoutAttributeTextHasTheEmptyOne) {
  m_c6.addAttributeValue(&m_attribute, Data());  // A value of no kind has no text.
  sampleOf(Metric::TRACED_EVENT, m_cpu0, &m_c6);
  EXPECT_EQ(recordsOfType("00", "run.qmbin").front(), stringRecord("01", ""));
  EXPECT_THAT(recordsOfType("02", "run.qmbin"), ElementsAre("06 00 02 01 00 01 00 02 00"));
}

TEST_F(BinaryRecords, SampleWithoutDescriptorHasNumberZero) {
  EXPECT_EQ(descriptorOf(sampleOf(Metric::TRACED_EVENT, m_cpu0, nullptr)), "00 00");
}

// Names of samples.

TEST_F(BinaryRecords, SampleIsNamedAfterItsEntityWithoutTheParents) {
  EXPECT_EQ(nameTextOf(sampleOf(Metric::SAMPLED_VALUE, m_cpu1, &m_c6)), hexOf("CPU1"));
}

TEST_F(BinaryRecords, DeltaIsNamedAfterItsDescriptor) {
  EXPECT_EQ(nameTextOf(sampleOf(Metric::SAMPLED_DELTA, m_cpu1, &m_c6)), hexOf("C6"));
}

TEST_F(BinaryRecords, DeltaWithoutDescriptorHasTheEmptyName) {
  EXPECT_EQ(nameTextOf(sampleOf(Metric::SAMPLED_DELTA, m_cpu1, nullptr)), "");
}

TEST_F(BinaryRecords, DeltaIsNamedAfterTheFirstAttributeOfItsDescriptor) {
  m_c6.addAttributeValue(&m_attribute, Data(1.0 / 3));
  m_c6.addAttributeValue(&m_attribute, Data(std::string("second")));
  EXPECT_EQ(nameTextOf(sampleOf(Metric::SAMPLED_DELTA, m_cpu1, &m_c6)), hexOf("0.333333"));
}

TEST_F(BinaryRecords, DeltaWhoseFirstAttributeIsNullIsNamedAfterItsDescriptor) {
  m_c6.addAttributeValue(nullptr, Data(1UL));
  EXPECT_EQ(nameTextOf(sampleOf(Metric::SAMPLED_DELTA, m_cpu1, &m_c6)), hexOf("C6"));
}

TEST_F(BinaryRecords, DeltaWhoseAttributeHasNoTextIsNamedAfterItsDescriptor) {
  m_c6.addAttributeValue(&m_attribute, Data::fromHandle(&m_cpu0));
  EXPECT_EQ(nameTextOf(sampleOf(Metric::SAMPLED_DELTA, m_cpu1, &m_c6)), hexOf("C6"));
}

TEST_F(BinaryRecords, DeltaFollowsAnAttributeThatChanges) {
  m_c6.setAttributeValues({{&m_attribute, Data(1UL)}});
  BinaryMetric metric(7, Metric::SAMPLED_DELTA);
  metric.value(m_cpu0, Data(1.0), 0, &m_c6);
  add(metric);
  m_c6.setAttributeValues({{&m_attribute, Data(2UL)}});
  add(metric);
  const auto samples = finished("04");
  ASSERT_THAT(samples, SizeIs(2));
  EXPECT_EQ(nameTextOf(samples[0]), hexOf("1"));
  EXPECT_EQ(nameTextOf(samples[1]), hexOf("2"));
}

TEST_F(BinaryRecords, DeltasOfManyStatesAndEntitiesKeepTheirStates) {
  // More states than are kept for a message.
  std::vector<std::unique_ptr<pwr::DataDescriptor>> states;
  for (std::uint64_t i = 0; i < 150; ++i) {
    states.push_back(std::make_unique<pwr::DataDescriptor>(
        100 + i, pwr::HandleTexts{"s" + std::to_string(i), "", ""}));
  }
  BinaryMetric metric(7, Metric::SAMPLED_DELTA);
  for (const pwr::EntityHandle* entity : {&m_cpu0, &m_cpu1}) {
    for (const auto& state : states) {
      metric.value(*entity, Data(1.0), 0, state.get());
      metric.value(*entity, Data(1.0), 0, states.front().get());
    }
  }
  add(metric);
  const auto samples = finished("04");
  ASSERT_THAT(samples, SizeIs(600));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const std::size_t state = i % 2 == 0 ? i / 2 % states.size() : 0;
    EXPECT_EQ(nameTextOf(samples[i]), hexOf(states[state]->getName())) << i;
  }
}

TEST_F(BinaryRecords, StateWhoseNumberIsNoneGetsAnotherInTheSameMessage) {
  m_c6.setAttributeValues({{&m_attribute, Data("former")}});
  BinaryMetric deltas(8, Metric::SAMPLED_DELTA, "N");
  deltas.value(m_cpu0, Data(1.0), 0, &m_c6).value(m_cpu0, Data(1.0), 0, &m_c6);
  EXPECT_EQ(add(deltas), 0);
  // Before the first entity: the state, its descriptor, the empty group, names and types of two
  // metrics. So the last one has the number 65535.
  std::vector<std::unique_ptr<pwr::EntityHandle>> entities;
  BinaryMetric values(7, Metric::TRACED_EVENT);
  for (std::uint64_t i = 0; i < 65'528; ++i) {
    entities.push_back(std::make_unique<pwr::EntityHandle>(
        100 + i, pwr::HandleTexts{"e" + std::to_string(i), "", ""}, nullptr));
    values.value(*entities.back(), Data(1.0));
  }
  EXPECT_EQ(add(values), 0);
  m_c6.setAttributeValues({{&m_attribute, Data("latter")}});
  EXPECT_EQ(add(deltas), 0);
  const auto samples = finished("04");
  ASSERT_THAT(samples, SizeIs(2 + 65'528 + 2));
  EXPECT_EQ(nameOf(samples[65'529]), "ff ff");
  EXPECT_EQ(nameOf(samples[65'530]), "00 00");
  EXPECT_EQ(nameOf(samples[65'531]), "01 00");
}

TEST_F(BinaryRecords, SamplesInAnyOrderKeepTheirNames) {
  const pwr::EntityHandle cpu2(12, {"CPU2", "", ""}, nullptr);
  const pwr::EntityHandle* order[] = {&m_cpu0, &m_cpu1, &cpu2,   &m_cpu1, &m_cpu1,
                                      &cpu2,   &m_cpu0, &m_cpu0, &cpu2};
  BinaryMetric metric(7, Metric::TRACED_EVENT);
  for (const pwr::EntityHandle* entity : order) {
    metric.value(*entity, Data(1.0));
  }
  add(metric);
  const auto samples = finished("04");
  ASSERT_THAT(samples, SizeIs(std::size(order)));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    EXPECT_EQ(nameTextOf(samples[i]), hexOf(order[i]->getName())) << i;
  }
}

// Records of metrics.

TEST_F(BinaryRecords, MetricWithoutElementsIsToldOnlyWhenElementsCome) {
  BinaryMetric metric(7, Metric::TRACED_EVENT);
  EXPECT_EQ(add(metric), 0);
  EXPECT_THAT(finished("03"), IsEmpty());
  EXPECT_EQ(bytes("run.qmbin"), "");
  metric.value(m_cpu0, Data(1.0));
  EXPECT_EQ(add(metric), 0);
  EXPECT_THAT(finished("03"), SizeIs(1));
}

TEST_F(BinaryRecords, MetricIsToldOncePerId) {
  BinaryMetric first(7, Metric::TRACED_EVENT, "first");
  BinaryMetric second(7, Metric::TRACED_EVENT, "second");
  BinaryMetric other(8, Metric::TRACED_EVENT, "first");
  for (BinaryMetric* metric : {&first, &second, &other}) {
    metric->value(m_cpu0, Data(1.0));
    add(*metric);
  }
  EXPECT_THAT(finished("03"),
              ElementsAre(StartsWith("14 00 03 07 00 00 00"), StartsWith("14 00 03 08 00 00 00")));
}

TEST_F(BinaryRecords, FirstMetricWithoutQuantityHasZerosForIt) {
  sampleOf(Metric::TRACED_EVENT, m_cpu0, nullptr);
  EXPECT_THAT(recordsOfType("03", "run.qmbin"),
              ElementsAre("14 00 03 07 00 00 00 01 00 02 00 03 00 "
                          "00 00 00 00 00 00 00 00 00 00"));
}

TEST_F(BinaryRecords, MetricWithoutQuantityRepeatsTheQuantityOfTheOneBefore) {
  BinaryMetric with(7, Metric::TRACED_EVENT);
  BinaryMetric without(8, Metric::TRACED_EVENT);
  with.in(m_power).value(m_cpu0, Data(1.0));
  without.value(m_cpu0, Data(1.0));
  add(with);
  add(without);
  // Texts: empty, M, TRACED_EVENT, Power, mW. Quantity, units, flag; no columns, no metadata.
  EXPECT_THAT(finished("03"), Each(EndsWith("01 00 02 00 03 00 04 00 05 00 01 00 00 00 00 00")));
}

TEST_F(BinaryRecords, NameOfATypeIsTakenFromItsLowByte) {
  const std::vector<std::pair<std::uint64_t, std::string>> names = {{0, "SAMPLED_DELTA"},
                                                                    {1, "SAMPLED_RESIDENCY"},
                                                                    {0x102, "SAMPLED_VALUE"},
                                                                    {2, "SAMPLED_VALUE"},
                                                                    {3, "TRACED_VALUE_TRANSITION"},
                                                                    {4, "TRACED_EVENT"},
                                                                    {5, "UNKNOWN"},
                                                                    {255, "UNKNOWN"}};
  for (const auto& [type, name] : names) {
    BinaryMetric metric(static_cast<std::uint32_t>(type), static_cast<Metric::MetricType>(type));
    BinaryWriter writer;
    const std::string base = "type" + std::to_string(type);
    ASSERT_EQ(writer.init(m_directory.file(base), false), 0);
    metric.value(m_cpu0, Data(1.0));
    EXPECT_EQ(writer.writeMessage(metric.message()), 0);
    EXPECT_EQ(writer.fini(), 0);
    EXPECT_THAT(recordsOfType("00", base + ".qmbin"), Contains(stringRecord("03", name))) << type;
  }
}

// The record of the system.

class BinarySystem : public BinaryResult {
 protected:
  void SetUp() override {
    m_metadata.m_firstTimestamp = 0x0102030405060708;
    m_metadata.m_lastTimestamp = 0x1112131415161718;
    m_metadata.m_collectionDurationSec = 2.5;
    m_metadata.m_platformName = "P";
    m_metadata.m_cpuCodeName = "K";
    m_metadata.m_cpuNativeModelName = "N";
    m_metadata.m_pchDeviceNames = "H";
    m_metadata.m_hostName = "h";
    m_metadata.m_osName = "L";
    m_metadata.m_osType = "x";
    m_cpu.m_cpuWords = {100, 800, 2400, 1600, 0x0a0b0c0d, 0xffffffff};
    // 1 package, 2 modules, 3 cores, 4 threads.
    m_cpu.m_topology.addThread({0, 0, 0, 0});
    m_cpu.m_topology.addThread({0, 0, 0, 1});
    m_cpu.m_topology.addThread({0, 0, 1, 2});
    m_cpu.m_topology.addThread({0, 1, 2, 3});
    start();
  }

  pwr::CPUMetadata m_cpu;
};

TEST_F(BinarySystem, AloneIsWhatACollectionWithoutMetricsLeaves) {
  m_metadata.m_platformMetadata[pwr::SystemMetadata::kCpu] = &m_cpu;
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(records("run.qmbin"),
              ElementsAre(stringRecord("01", "P"), stringRecord("02", "K"), stringRecord("03", "N"),
                          stringRecord("04", "H"), stringRecord("05", "h"), stringRecord("06", "L"),
                          stringRecord("07", "x"),
                          // Timestamps; 2.5 s; 2400, 800, 1600 and 100 MHz; platform id;
                          "40 00 01 08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11 00 00 20 40 "
                          "00 00 16 45 00 00 48 44 00 00 c8 44 00 00 c8 42 0d 0c 0b 0a "
                          // platform, code name, model, hubs, host; topology; type, name, name.
                          "01 00 02 00 03 00 04 00 05 00 01 00 02 00 03 00 04 00 07 00 06 00 "
                          "06 00"));
}

TEST_F(BinarySystem, IsNotToldWithoutAProcessor) {
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(bytes("run.qmbin"), "");
}

TEST_F(BinarySystem, IsNotToldForANullProcessor) {
  m_metadata.m_platformMetadata[pwr::SystemMetadata::kCpu] = nullptr;
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(bytes("run.qmbin"), "");
}

TEST_F(BinarySystem, IsNotToldWhenThePartIsNoProcessor) {
  pwr::PCHMetadata hub;
  m_metadata.m_platformMetadata[pwr::SystemMetadata::kCpu] = &hub;
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(bytes("run.qmbin"), "");
}

}  // namespace
}  // namespace qumetra::test
