// Continuous runs: what is kept between flushes, and the numbered documents.
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/writers/json_world.h"
#include "writers/continuous_writer/cont_writer.h"

namespace {

using pwr::Data;
using pwr::Metric;
using qumetra::test::give;
using qumetra::test::JsonWorld;
using qumetra::test::parseFile;
using Warnings = qumetra::test::RecordingSink::Texts;

/// Shows what is kept.
class Kept : public ContWriter {
 public:
  using ContWriter::ContWriter;
  using ContWriter::data;
  using ContWriter::metadata;
  using ContWriter::tickScale;
};

class Continuous : public ::testing::Test {
 protected:
  Continuous() { m_writer.writeMessage(m_world.systemMessage()); }

  /// The one sample that comes of the value.
  ContinuousWriter::Data sampleOf(Metric::MetricType type, const Data& value,
                                  const pwr::DataDescriptor* descriptor = nullptr,
                                  const pwr::Quantity* quantity = nullptr) {
    Metric& metric = m_world.metric("M", type, quantity);
    EXPECT_EQ(give(m_writer, metric, 1000, {m_world.element(m_entity, descriptor, value, 250)}), 0);
    return m_writer.data.back();
  }

  std::string file(const std::string& name) const { return m_dir.file(name); }

  qumetra::test::LogCapture m_log;
  qumetra::test::TempDir m_dir;
  JsonWorld m_world;
  const pwr::EntityHandle* m_parent = m_world.entity("Package");
  const pwr::EntityHandle* m_entity = m_world.entity("Core", m_parent);
  Kept m_writer{m_dir.file("run")};
};

TEST_F(Continuous, TickScaleIsDividedInSinglePrecision) {
  m_world.system().m_timestampFrequency = 24.0F;
  EXPECT_EQ(m_writer.writeMessage(m_world.systemMessage()), 0);
  EXPECT_EQ(m_writer.tickScale, static_cast<double>(1.0F / 24.0F));
  EXPECT_NE(m_writer.tickScale, 1.0 / 24.0);
}

TEST_F(Continuous, DurationShowsTheSinglePrecisionOfTheScale) {
  m_world.system().m_timestampFrequency = 24.0F;
  m_writer.writeMessage(m_world.systemMessage());
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  // A division in double would give 100000000.
  give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0), 2'400'000'000)});
  EXPECT_EQ(m_writer.data.back().duration, 100000002.0);
}

TEST_F(Continuous, SystemMessageWithoutMetadataIsRefused) {
  EXPECT_EQ(m_writer.writeMessage(pwr::SystemMessage()), 1);
}

TEST_F(Continuous, MetricBeforeTheSystemMessageHasNoDuration) {
  Kept fresh;
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  give(fresh, metric, 5, {m_world.element(m_entity, nullptr, Data(8.0), 250)});
  EXPECT_EQ(fresh.data.back().duration, 0.0);
  EXPECT_EQ(fresh.data.back().value, 0.0);
  EXPECT_EQ(fresh.data.back().timestamp, 5U);
}

TEST_F(Continuous, MetricWithoutElementsKeepsNothing) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  EXPECT_EQ(give(m_writer, metric, 0, {}), 0);
  EXPECT_TRUE(m_writer.data.empty());
  EXPECT_TRUE(m_writer.metadata.empty());
}

TEST_F(Continuous, SampleHasTheQualifiedEntityAndRawTicks) {
  const auto sample = sampleOf(Metric::SAMPLED_DELTA, Data(2.5), m_world.descriptor("C1"));
  EXPECT_EQ(sample.entity, "Package/Core");
  EXPECT_EQ(sample.descriptor, "C1");
  EXPECT_EQ(sample.state, "C1");
  EXPECT_EQ(sample.timestamp, 1000U);
  EXPECT_EQ(sample.duration, 250.0);
  EXPECT_EQ(sample.value, 2.5);
}

TEST_F(Continuous, ElementWithoutDescriptorHasNoState) {
  const auto sample = sampleOf(Metric::SAMPLED_RESIDENCY, Data(2.5));
  EXPECT_EQ(sample.descriptor, "N/A");
  EXPECT_EQ(sample.state, "");
}

TEST_F(Continuous, StateIsTheTextOfTheFirstAttribute) {
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data(1.0), m_world.descriptor("C1", Data(800UL))).state,
            "800");
}

TEST_F(Continuous, AttributeWithoutATextFallsBackToTheName) {
  const Data handle = Data::fromHandle(m_entity);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data(1.0), m_world.descriptor("C1", handle)).state,
            "C1");
}

TEST_F(Continuous, EntryWithoutAnAttributeFallsBackToTheName) {
  pwr::DataDescriptor* descriptor = m_world.descriptor("C1");
  descriptor->addAttributeValue(nullptr, Data(800UL));
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data(1.0), descriptor).state, "C1");
}

TEST_F(Continuous, SampledValueWithAQuantityHasItsDuration) {
  const pwr::Quantity* power = m_world.quantity(4, "Power", "mW");
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data(1.0), nullptr, power).duration, 250.0);
}

TEST_F(Continuous, SampledValueOfARateOrWithoutAQuantityLastsOne) {
  const pwr::Quantity* rate = m_world.quantity(9, "Rate", "1/s");
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data(1.0), nullptr, rate).duration, 1.0);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data(1.0)).duration, 1.0);
}

TEST_F(Continuous, SampledStringIsAStateThatCountsForItsDuration) {
  const pwr::Quantity* power = m_world.quantity(4, "Power", "mW");
  const auto sample =
      sampleOf(Metric::SAMPLED_VALUE, Data(std::string("busy")), m_world.descriptor("C1"), power);
  EXPECT_EQ(sample.state, "busy");
  EXPECT_EQ(sample.value, 250.0);
}

TEST_F(Continuous, SampledDescriptorIsAStateByItsName) {
  const auto sample =
      sampleOf(Metric::SAMPLED_VALUE, Data::fromHandle(m_world.descriptor("C1", Data(800UL))));
  EXPECT_EQ(sample.state, "C1");
  EXPECT_EQ(sample.value, 1.0);
}

TEST_F(Continuous, OtherSampledHandlesCountZero) {
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data::fromHandle(m_entity)).value, 0.0);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data::fromHandle(nullptr)).value, 0.0);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data::fromHandle(nullptr)).value, 0.0);
}

TEST_F(Continuous, RangeCountsItsLowEnd) {
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data::fromIntRange({-3, 4})).value, -3.0);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data::fromUIntRange({3, 4})).value, 3.0);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data::fromRealRange({0.5, 4})).value, 0.5);
}

TEST_F(Continuous, ResidencyIsScaled) {
  m_world.system().m_timestampFrequency = 2.0F;
  m_writer.writeMessage(m_world.systemMessage());
  EXPECT_EQ(sampleOf(Metric::SAMPLED_RESIDENCY, Data(100UL)).value, 50.0);
}

TEST_F(Continuous, RangeOfAResidencyIsScaledAtItsLowEnd) {
  m_world.system().m_timestampFrequency = 2.0F;
  m_writer.writeMessage(m_world.systemMessage());
  EXPECT_EQ(sampleOf(Metric::SAMPLED_RESIDENCY, Data::fromIntRange({100, 300})).value, 50.0);
}

TEST_F(Continuous, UnknownTypeIsReadAsADelta) {
  const auto type = static_cast<Metric::MetricType>(9);
  const auto sample = sampleOf(type, Data(2.5), m_world.descriptor("C1"));
  EXPECT_EQ(sample.duration, 250.0);
  EXPECT_EQ(sample.value, 2.5);
  EXPECT_EQ(sample.state, "C1");
}

TEST_F(Continuous, TransitionCountsItsDurationUnderItsValue) {
  const auto sample = sampleOf(Metric::TRACED_VALUE_TRANSITION, Data(1.5));
  EXPECT_EQ(sample.state, "1.5");
  EXPECT_EQ(sample.value, 250.0);
}

TEST_F(Continuous, EventCountsOneUnderItsDescriptor) {
  const auto sample =
      sampleOf(Metric::TRACED_EVENT, Data::fromHandle(m_world.descriptor("wake", Data(7UL))));
  EXPECT_EQ(sample.state, "7");
  EXPECT_EQ(sample.value, 1.0);
  EXPECT_EQ(sample.duration, 1.0);
}

TEST_F(Continuous, TracedHandleOfAnotherKindIsItsText) {
  EXPECT_EQ(sampleOf(Metric::TRACED_EVENT, Data::fromHandle(m_entity)).state, "Core");
}

TEST_F(Continuous, TracedFalseDescriptorCostsTheStateOnly) {
  const pwr::Quantity* power = m_world.quantity(4, "Power", "mW");
  const auto sample =
      sampleOf(Metric::TRACED_EVENT, Data::fromHandle(m_world.falseDescriptor()), nullptr, power);
  EXPECT_EQ(sample.state, "");
  EXPECT_EQ(m_log.warnings(),
            (Warnings{{2, "WARNING: Continuous writer plugin failed to retrieve descriptor\n"}}));
}

TEST_F(Continuous, SampledFalseDescriptorFailsTheRestOfTheMessage) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE, m_world.quantity(4, "Power", "mW"));
  EXPECT_EQ(give(m_writer, metric, 0,
                 {m_world.element(m_entity, nullptr, Data(1.0)),
                  m_world.element(m_entity, nullptr, Data::fromHandle(m_world.falseDescriptor())),
                  m_world.element(m_entity, nullptr, Data(2.0))}),
            1);
  EXPECT_EQ(m_writer.data.size(), 1U);
  EXPECT_EQ(m_log.warnings(), (Warnings{{2, "WARNING: Unable to retrieve data descriptor \n"}}));
}

TEST_F(Continuous, MetricWhoseFirstElementFailsIsDescribedByTheNextOne) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  const Data bad = Data::fromHandle(m_world.falseDescriptor());
  EXPECT_EQ(give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, bad)}), 1);
  EXPECT_TRUE(m_writer.data.empty());
  EXPECT_TRUE(m_writer.metadata.empty());
  EXPECT_EQ(give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))}), 0);
  EXPECT_EQ(m_writer.metadata.size(), 1U);
}

TEST_F(Continuous, MetricWithoutQuantityIsAWarningOnce) {
  Metric& metric = m_world.metric("Idle", Metric::SAMPLED_DELTA);
  for (int i = 0; i < 2; ++i) {
    give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  }
  EXPECT_EQ(m_log.warnings(), (Warnings{{2, "WARNING: no quantity so no units for Idle?!\n"}}));
  EXPECT_EQ(m_writer.metadata.size(), 1U);
}

TEST_F(Continuous, SecondWriterOfTheProcessGetsNoDescription) {
  Kept other;
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  give(other, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  EXPECT_EQ(other.metadata.size(), 1U);
  EXPECT_TRUE(m_writer.metadata.empty());
  EXPECT_EQ(m_writer.data.size(), 1U);
}

TEST_F(Continuous, FrequencyOfZeroHasADefinedDuration) {
  m_world.system().m_timestampFrequency = 0.0F;
  m_writer.writeMessage(m_world.systemMessage());
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data(1.0)).duration, 0.0);
}

// Flushes.

TEST_F(Continuous, FlushWithoutAProcessorKeepsAllAndUsesNoNumber) {
  m_writer.extension = ".json";
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  auto& platform = m_world.system().m_platformMetadata;
  const auto former = std::exchange(platform[1], nullptr);
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 0);
  platform[1] = &m_world.model().addPchMetadata();
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 0);
  platform.clear();
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 0);
  EXPECT_EQ(m_writer.data.size(), 1U);

  platform[1] = former;
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 1);
  EXPECT_EQ(parseFile(file("run_0.json"))["traceEvents"].Size(), 1U);
  EXPECT_TRUE(m_writer.data.empty());
  EXPECT_TRUE(m_writer.metadata.empty());
}

TEST_F(Continuous, OtherExtensionKeepsAll) {
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  for (const char* extension : {"", ".jsonx", ".jso"}) {
    m_writer.extension = extension;
    EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 1);
  }
  EXPECT_EQ(m_writer.data.size(), 1U);
  EXPECT_EQ(m_writer.metadata.size(), 1U);
}

TEST_F(Continuous, BothFormsAreNumberedApartFromZero) {
  for (const char* extension : {".json", ".json", ".qmjson"}) {
    m_writer.extension = extension;
    EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 1);
  }
  Kept other(file("other"));
  other.extension = ".json";
  other.flushContinuousResults(m_world.system());
  EXPECT_EQ(qumetra::test::readFile(file("run_0.json")), R"({"traceEvents":[]})");
  EXPECT_EQ(qumetra::test::readFile(file("run_1.json")), R"({"traceEvents":[]})");
  EXPECT_EQ(parseFile(file("run_0.qmjson"))["Metadata"].Size(), 1U);
  EXPECT_EQ(parseFile(file("run_0.qmjson"))["Data"].Size(), 0U);
  EXPECT_EQ(parseFile(file("other_2.json"))["traceEvents"].Size(), 0U);
}

TEST_F(Continuous, TraceEventHasItsMembersInOrder) {
  m_writer.extension = ".json";
  sampleOf(Metric::SAMPLED_DELTA, Data(2.5), m_world.descriptor("C\"1"));
  m_writer.flushContinuousResults(m_world.system());
  EXPECT_EQ(qumetra::test::readFile(file("run_0.json")),
            R"({"traceEvents":[{"name":"Package/Core","ph":"X","ts":1000,"dur":250.0,"pid":1,)"
            R"("tid":1,"args":{"power":2.5,"state":"C\"1"}}]})");
}

TEST_F(Continuous, QmjsonSampleHasItsMembersInOrder) {
  m_writer.extension = ".qmjson";
  sampleOf(Metric::SAMPLED_DELTA, Data(2.5), m_world.descriptor("C1"));
  m_writer.flushContinuousResults(m_world.system());
  const std::string text = qumetra::test::readFile(file("run_0.qmjson"));
  EXPECT_NE(text.find(R"("Data":[{"ID":1,"Entity":"Package/Core","Descriptor":"C1","State":"C1",)"
                      R"("Timestamp":1000,"Duration":250.0,"Value":2.5}]})"),
            std::string::npos);
}

TEST_F(Continuous, DescriptionOfAMetricStandsInOneFileOnly) {
  m_writer.extension = ".qmjson";
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  for (int i = 0; i < 2; ++i) {
    give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
    m_writer.flushContinuousResults(m_world.system());
  }
  EXPECT_EQ(parseFile(file("run_0.qmjson"))["Metadata"].Size(), 2U);
  EXPECT_EQ(parseFile(file("run_1.qmjson"))["Metadata"].Size(), 1U);
  EXPECT_EQ(parseFile(file("run_1.qmjson"))["Data"].Size(), 1U);
}

TEST_F(Continuous, DescriptionIsLostWithATraceFlush) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  for (const char* extension : {".json", ".qmjson"}) {
    give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
    m_writer.extension = extension;
    m_writer.flushContinuousResults(m_world.system());
  }
  const auto document = parseFile(file("run_0.qmjson"));
  EXPECT_EQ(document["Data"].Size(), 1U);
  EXPECT_EQ(document["Metadata"].Size(), 1U) << "the system's only";
}

TEST_F(Continuous, OneNameUnderTwoIdsHasTwoDescriptions) {
  m_writer.extension = ".qmjson";
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  m_writer.flushContinuousResults(m_world.system());
  int named = 0;
  const auto document = parseFile(file("run_0.qmjson"));
  for (const auto& node : document["Metadata"].GetArray()) {
    named += node["Name"] == "M" ? 1 : 0;
  }
  EXPECT_EQ(named, 2);
}

TEST_F(Continuous, DescriptionTellsTheMetric) {
  m_writer.extension = ".qmjson";
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY, m_world.quantity(1, "Time", "s"));
  metric.featureName = "F";
  metric.states = {Data(std::string("C0"))};
  metric.entities = {{m_entity, m_world.descriptor("C1", Data(800UL))}, {nullptr, nullptr}};
  give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  m_writer.flushContinuousResults(m_world.system());
  const auto document = parseFile(file("run_0.qmjson"));
  const auto& list = document["Metadata"];
  const auto& node = list[list[0]["Name"] == "M" ? 0 : 1];
  EXPECT_STREQ(node["FeatureName"].GetString(), "F");
  EXPECT_EQ(node["ID"].GetDouble(), 1);
  EXPECT_STREQ(node["Quantity"]["Name"].GetString(), "Time");
  EXPECT_STREQ(node["Quantity"]["Units"].GetString(), "s");
  EXPECT_STREQ(node["Type"].GetString(), "SAMPLED_RESIDENCY");
  EXPECT_STREQ(node["States"].GetString(), "C0") << "one state is no list";
  const auto& columns = node["Entity-Descriptor-Combinations"];
  EXPECT_STREQ(columns[0]["Entity"].GetString(), "Package/Core");
  EXPECT_STREQ(columns[0]["Descriptor"]["Name"].GetString(), "C1");
  EXPECT_STREQ(columns[0]["Descriptor"]["AttributeValue"].GetString(), "800");
  EXPECT_STREQ(columns[1]["Entity"].GetString(), "");
  EXPECT_FALSE(columns[1].HasMember("Descriptor"));
}

TEST_F(Continuous, DescriptorWithoutATextHasAnEmptyAttributeValue) {
  m_writer.extension = ".qmjson";
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  metric.entities = {{m_entity, m_world.descriptor("none")},
                     {m_entity, m_world.descriptor("handle", Data::fromHandle(m_entity))}};
  give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  m_writer.flushContinuousResults(m_world.system());
  const std::string text = qumetra::test::readFile(file("run_0.qmjson"));
  for (const std::string name : {"none", "handle"}) {
    EXPECT_TRUE(text.find(R"({"Name":")" + name + R"(","AttributeValue":""})") != text.npos ||
                text.find(R"({"AttributeValue":"","Name":")" + name + R"("})") != text.npos)
        << text;
  }
}

TEST_F(Continuous, SeveralStatesAreAList) {
  m_writer.extension = ".qmjson";
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  metric.states = {Data(std::string("C0")), Data(1.5)};
  give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  m_writer.flushContinuousResults(m_world.system());
  EXPECT_NE(qumetra::test::readFile(file("run_0.qmjson")).find(R"("States":["C0","1.5"])"),
            std::string::npos);
}

TEST_F(Continuous, SystemIsToldAsTexts) {
  m_writer.extension = ".qmjson";
  auto& cpu = m_world.model().addCpuMetadata();
  cpu.m_cpuWords = {100.25F, 400.0F, 3000.0F, 2600.12345F, 7, 0};
  cpu.m_topology.addThread({0, 0, 0, 0});
  cpu.m_topology.addThread({1, 0, 0, 1});
  cpu.m_topology.addThread({1, 1, 1, 2});
  cpu.m_topology.addThread({1, 1, 1, 3});
  auto& system = m_world.system();
  system.m_platformMetadata[1] = &cpu;
  system.m_platformName = "P";
  system.m_cpuCodeName = "Code";
  system.m_cpuNativeModelName = "Native";
  system.m_pchDeviceNames = "Hub";
  system.m_hostName = "host";
  system.m_osName = "OS";
  system.m_osType = "x86_64";
  system.m_osVersion = "6";
  system.m_firstTimestamp = 5;
  system.m_lastTimestamp = 18446744073709551615U;
  system.m_collectionDurationSec = 2.00017112;
  m_writer.flushContinuousResults(system);
  const auto document = parseFile(file("run_0.qmjson"));
  const auto& node = document["Metadata"][0];
  EXPECT_STREQ(node["Name"].GetString(), "SystemMetadata");
  EXPECT_STREQ(node["FeatureName"].GetString(), "");
  EXPECT_EQ(node["ID"].GetDouble(), -1);
  EXPECT_STREQ(node["Platform"]["Plaform Name"].GetString(), "P") << "spelled so";
  EXPECT_STREQ(node["Platform"]["Platform ID"].GetString(), "7");
  const auto& platform = node["Platform"];
  EXPECT_STREQ(platform["CPU Name"].GetString(), "Code");
  EXPECT_STREQ(platform["CPU Native Name"].GetString(), "Native");
  EXPECT_STREQ(platform["PCH Name"].GetString(), "Hub");
  EXPECT_STREQ(platform["Host Name"].GetString(), "host");
  EXPECT_STREQ(platform["Num Packages"].GetString(), "2");
  EXPECT_STREQ(platform["Num Modules"].GetString(), "3");
  EXPECT_STREQ(platform["Num Cores"].GetString(), "3");
  EXPECT_STREQ(platform["Num Threads"].GetString(), "4");
  EXPECT_STREQ(node["Platform"]["CPU Frequency MHz"].GetString(), "2600.12") << "six digits";
  EXPECT_STREQ(node["Platform"]["Bus Frequency MHz"].GetString(), "100.25");
  EXPECT_STREQ(node["Platform"]["HFM Frequency MHz"].GetString(), "3000");
  EXPECT_STREQ(node["Platform"]["LFM Frequency MHz"].GetString(), "400");
  EXPECT_EQ(node["Platform"].MemberCount(), 14U);
  EXPECT_STREQ(node["OS"]["OS Name"].GetString(), "OS");
  EXPECT_STREQ(node["OS"]["OS Type"].GetString(), "x86_64");
  EXPECT_STREQ(node["OS"]["OS Version"].GetString(), "6");
  EXPECT_EQ(node["OS"].MemberCount(), 3U);
  EXPECT_EQ(node["Qumetra"].MemberCount(), 3U);
  EXPECT_STREQ(node["Qumetra"]["Collection Start Timestamp"].GetString(), "5");
  EXPECT_STREQ(node["Qumetra"]["Collection Stop Timestamp"].GetString(), "18446744073709551615");
  EXPECT_STREQ(node["Qumetra"]["Collection Duration"].GetString(), "2.00017");
}

TEST_F(Continuous, NumberThatJsonLacksLeavesItsKeyWithoutAValue) {
  m_writer.extension = ".json";
  sampleOf(Metric::SAMPLED_DELTA, Data(std::numeric_limits<double>::quiet_NaN()));
  m_writer.flushContinuousResults(m_world.system());
  EXPECT_NE(qumetra::test::readFile(file("run_0.json")).find(R"("args":{"power":,"state":"")"),
            std::string::npos);
}

TEST_F(Continuous, LongFileNamesAreCut) {
  ContWriter writer(file(std::string(150, 'a') + "/../" + std::string(1500, 'b')));
  writer.extension = ".json";
  EXPECT_EQ(writer.flushContinuousResults(m_world.system()), 1);
  EXPECT_EQ(m_log.errors().size(), 1U) << "no such file name, but no harm";
}

TEST_F(Continuous, EndUsesTheNamelessOutputAndWritesNothing) {
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));
}

TEST(MetadataNode, NullWritesNothing) {
  rapidjson::StringBuffer buffer;
  ContWriter::JsonWriter writer(buffer);
  writer.StartObject();
  ContWriter::flushMetadata_i(nullptr, writer);
  writer.EndObject();
  EXPECT_STREQ(buffer.GetString(), "{}");
}

TEST(MetadataNode, EmptyListIsSkippedAndNumbersAreTexts) {
  ContinuousWriter::Metadata node("", -1);
  node.entries["empty"];
  node.add("number", 1.5F);
  rapidjson::StringBuffer buffer;
  ContWriter::JsonWriter writer(buffer);
  writer.StartObject();
  ContWriter::flushMetadata_i(&node, writer);
  writer.EndObject();
  EXPECT_STREQ(buffer.GetString(), R"({"number":"1.5"})");
}

}  // namespace
