// The two JSON results of an ordinary run.
#include <pthread.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/writers/json_world.h"
#include "writers/json_plugin.h"
#include "writers/qmjson_plugin/qmjson_writer.h"

namespace {

using pwr::Data;
using pwr::Metric;
using qumetra::test::give;
using qumetra::test::JsonWorld;
using qumetra::test::readFile;
using Warnings = qumetra::test::RecordingSink::Texts;

template <typename Writer>
class Results : public ::testing::Test {
 protected:
  Results() {
    m_writer.init(m_dir.file("run"), false);
    m_writer.writeMessage(m_world.systemMessage());
  }

  /// Gives one element at tick 1000 that is 250 long.
  int sample(Metric& metric, const Data& value, const pwr::DataDescriptor* descriptor = nullptr) {
    return give(m_writer, metric, 1000, {m_world.element(m_entity, descriptor, value, 250)});
  }
  int sample(Metric::MetricType type, const Data& value,
             const pwr::DataDescriptor* descriptor = nullptr,
             const pwr::Quantity* quantity = nullptr) {
    return sample(m_world.metric("M", type, quantity), value, descriptor);
  }

  qumetra::test::LogCapture m_log;
  qumetra::test::TempDir m_dir;
  JsonWorld m_world;
  const pwr::EntityHandle* m_entity = m_world.entity("E");
  Writer m_writer;
};

class Qmjson : public Results<QMJSONWriter> {
 protected:
  std::string file() const { return m_dir.file("run.qmjson"); }
  /// All from "data" on, without the braces of the document.
  std::string data() {
    EXPECT_EQ(m_writer.fini(), 0);
    const std::string text = readFile(file());
    const std::size_t begin = text.find(R"("data":)");
    return text.substr(begin, text.size() - begin - 2);
  }
  /// The points of the first series of the first metric.
  std::string points() {
    const std::string text = data();
    const std::size_t begin = text.find(R"("points":)") + 9;
    return text.substr(begin, text.find(']', begin) + 1 - begin);
  }
};

TEST_F(Qmjson, EmptyModelIsAWholeDocument) {
  EXPECT_EQ(data(), R"("data":{})");
  EXPECT_EQ(readFile(file()).back(), '\n');
  EXPECT_TRUE(qumetra::test::parseFile(file()).IsObject());
}

TEST_F(Qmjson, HeadTellsFormatAndSystem) {
  auto& cpu = m_world.model().addCpuMetadata();
  cpu.m_cpuWords = {100.25F, 400.0F, 3000.0F, 2600.0F, 7, 0};
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
  system.m_toolVersion = {1, 2, 3};
  system.m_driverVersion = {65535, 255, 0};
  system.m_collectorArguments = {"collect", "-t", "1"};
  system.m_firstTimestamp = 5;
  system.m_lastTimestamp = 18446744073709551615U;
  system.m_collectionDurationSec = 0.1;
  m_writer.writeMessage(m_world.systemMessage());
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(readFile(file()),
            R"({"fileType":"qumetra","version":{"major":1,"minor":0,"rev":0},"systemMetaData":{)"
            R"("platform":{"Platform ID":7,"Platform Name":"P","CPU Name":"Code",)"
            R"("CPU Native Name":"Native","PCH Name":"Hub","Host Name":"host","Num Packages":0,)"
            R"("Num Modules":0,"Num Cores":0,"Num Threads":0,"HFM Frequency MHz":3000.0,)"
            R"("LFM Frequency MHz":400.0,"CPU Frequency MHz":2600.0,"Bus Frequency MHz":100.25},)"
            R"("os":{"OS Name":"OS","OS Type":"x86_64","OS Version":"6"},)"
            R"("qumetra":{"Qumetra Version":"1.2.3","Qumetra Driver Version":"65535.255.0",)"
            R"("Collection Start Timestamp":5,"Collection Stop Timestamp":18446744073709551615,)"
            R"("Collection Duration":0.1,"Collection Command Line":" collect -t 1"}},"data":{}})"
            "\n");
}

TEST_F(Qmjson, StartIsTheOneThatTimesAreCountedFrom) {
  m_world.system().m_firstTimestamp = 400;
  m_world.system().m_lastTimestamp = 2000;
  m_writer.writeMessage(m_world.systemMessage());
  sample(Metric::SAMPLED_VALUE, Data(1.0));
  // What the host learns after the message counts where it is read at the end only.
  m_world.system().m_firstTimestamp = 77;
  m_world.system().m_lastTimestamp = 3000;
  m_writer.fini();
  const std::string text = readFile(file());
  EXPECT_NE(text.find(R"("Collection Start Timestamp":400,"Collection Stop Timestamp":3000)"),
            std::string::npos);
  EXPECT_NE(text.find(R"({"x":599,"x1":600,"y":1.0})"), std::string::npos);
}

TEST_F(Qmjson, WithoutAProcessorThereIsNoFileAndNoWord) {
  m_world.system().m_platformMetadata.clear();
  sample(Metric::SAMPLED_VALUE, Data(1.0));
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_FALSE(std::filesystem::exists(file()));
  EXPECT_TRUE(m_log.warnings().empty() && m_log.errors().empty());
}

TEST_F(Qmjson, WithoutASystemMessageThereIsNoFile) {
  QMJSONWriter writer;
  writer.init(m_dir.file("other"), false);
  EXPECT_EQ(writer.fini(), 0);
  EXPECT_FALSE(std::filesystem::exists(m_dir.file("other.qmjson")));
}

TEST_F(Qmjson, FileThatCannotBeMadeIsNoFailureAndNoWord) {
  m_writer.init(m_dir.file("no/such/directory"), false);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_TRUE(m_log.warnings().empty() && m_log.errors().empty());
}

TEST_F(Qmjson, SystemMessageWithoutMetadataIsRefused) {
  EXPECT_EQ(m_writer.writeMessage(pwr::SystemMessage()), 1);
}

TEST_F(Qmjson, TextsAreTakenAndLeftOut) {
  EXPECT_EQ(m_writer.writeMessage(pwr::TextMessage()), 0);
  EXPECT_EQ(data(), R"("data":{})");
}

TEST_F(Qmjson, EachStateOfADeltaIsASeries) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  const auto* c0 = m_world.descriptor("C0");
  const auto* c1 = m_world.descriptor("C1");
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, c0, Data(1.0), 250),
        m_world.element(m_entity, c1, Data(2.0), 250)});
  m_writer.fini();
  const auto document = qumetra::test::parseFile(file());
  const auto& category = document["data"]["M"];
  EXPECT_FALSE(category["metaData"].HasMember("states"));
  EXPECT_FALSE(category["metaData"].HasMember("units"));
  EXPECT_STREQ(category["metaData"]["type"].GetString(), "SAMPLED_DELTA");
  EXPECT_EQ(category["data"].MemberCount(), 2U);
  EXPECT_STREQ(category["data"]["E C0"]["name"].GetString(), "E C0");
  EXPECT_STREQ(category["data"]["E C0"]["friendlyName"].GetString(), "C0");
  EXPECT_STREQ(category["data"]["E C1"]["friendlyName"].GetString(), "C1");
  EXPECT_EQ(category["data"]["E C1"]["points"][0]["y"].GetDouble(), 2.0);
}

TEST_F(Qmjson, ElementsOfOneSeriesInARowAreOnePoint) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, m_world.descriptor("C0"), Data(1.0), 250),
        m_world.element(m_entity, m_world.descriptor("C1"), Data(2.0), 250)});
  EXPECT_EQ(points(), R"([{"x":750,"x1":1000,"y":{"0":1.0,"1":2.0}}])");
}

TEST_F(Qmjson, AnotherSeriesBetweenPartsThePoint) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  const auto* other = m_world.entity("O");
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, nullptr, Data(1.0)), m_world.element(other, nullptr, Data(2.0)),
        m_world.element(m_entity, nullptr, Data(3.0))});
  m_writer.fini();
  const auto document = qumetra::test::parseFile(file());
  EXPECT_EQ(document["data"]["M"]["data"]["E"]["points"].Size(), 2U);
}

TEST_F(Qmjson, RangeHasBothEnds) {
  sample(Metric::SAMPLED_VALUE, Data::fromUIntRange({3, 4}));
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":3.0,"y1":4.0}])");
}

TEST_F(Qmjson, RangeOnTheSamePointLosesItsHighEnd) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  const Data range = Data::fromRealRange({3.5, 4.5});
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, nullptr, Data(1.0)), m_world.element(m_entity, nullptr, range)});
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":1.0,"y1":3.5}])");
}

TEST_F(Qmjson, RepeatedStateRepeatsItsKey) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  const auto* state = m_world.descriptor("C0");
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, state, Data(1.0)), m_world.element(m_entity, state, Data(2.0))});
  EXPECT_EQ(points(), R"([{"x":1000,"x1":1000,"y":{"0":1.0,"0":2.0}}])");
}

TEST_F(Qmjson, TimesAreComputedInSinglePrecision) {
  m_world.system().m_timestampFrequency = 24.0F;
  m_world.system().m_firstTimestamp = 10;
  m_writer.writeMessage(m_world.systemMessage());
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE, m_world.quantity(4, "Power", "mW"));
  give(m_writer, metric, 123'456'789'022,
       {m_world.element(m_entity, nullptr, Data(1.0), 1'000'000'001)});
  // In double: 5144032875, and 41666666 before it.
  EXPECT_EQ(points(), R"([{"x":5102366612,"x1":5144033280,"y":1.0}])");
}

TEST_F(Qmjson, ElementLongerThanTheRunWrapsItsStart) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  give(m_writer, metric, 10, {m_world.element(m_entity, nullptr, Data(1.0), 20)});
  EXPECT_EQ(points(), R"([{"x":18446744073709551606,"x1":10,"y":1.0}])");
}

TEST_F(Qmjson, FrequencyOfZeroHasDefinedTimes) {
  m_world.system().m_timestampFrequency = 0.0F;
  m_writer.writeMessage(m_world.systemMessage());
  sample(Metric::SAMPLED_DELTA, Data(1.0));
  EXPECT_EQ(points(), R"([{"x":0,"x1":0,"y":1.0}])");
}

TEST_F(Qmjson, MetricBeforeTheSystemMessageIsAtZero) {
  QMJSONWriter writer;
  writer.init(m_dir.file("run"), false);
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  give(writer, metric, 1000, {m_world.element(m_entity, nullptr, Data(1.0), 250)});
  writer.writeMessage(m_world.systemMessage());
  writer.fini();
  const auto document = qumetra::test::parseFile(file());
  EXPECT_EQ(document["data"]["M"]["data"]["E "]["points"][0]["x1"].GetDouble(), 0);
}

TEST_F(Qmjson, EventIsOneLongAndCountsOne) {
  sample(Metric::TRACED_EVENT, Data(7.0), nullptr, m_world.quantity(4, "Power", "mW"));
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":{"0":1.0}}])");
}

TEST_F(Qmjson, TransitionCountsItsDurationUnderItsValue) {
  sample(Metric::TRACED_VALUE_TRANSITION, Data(7.5), m_world.descriptor("unused"));
  const std::string text = data();
  EXPECT_NE(text.find(R"("states":["7.5"])"), std::string::npos);
  EXPECT_NE(text.find(R"({"x":750,"x1":1000,"y":{"0":250.0}})"), std::string::npos);
}

TEST_F(Qmjson, SampledStringIsAStateThatCountsForItsDuration) {
  sample(Metric::SAMPLED_VALUE, Data(std::string("busy")), nullptr,
         m_world.quantity(4, "Power", "mW"));
  const std::string text = data();
  EXPECT_NE(text.find(R"("states":["busy"])"), std::string::npos);
  EXPECT_NE(text.find(R"("y":{"0":250.0})"), std::string::npos);
}

TEST_F(Qmjson, SampledDescriptorIsAStateByItsName) {
  sample(Metric::SAMPLED_VALUE, Data::fromHandle(m_world.descriptor("C1", Data(800UL))));
  EXPECT_NE(data().find(R"("states":["C1"])"), std::string::npos);
}

TEST_F(Qmjson, OtherHandlesCountZero) {
  for (const pwr::DataHandle* handle : {static_cast<const pwr::DataHandle*>(m_entity),
                                        static_cast<const pwr::DataHandle*>(nullptr)}) {
    sample(Metric::SAMPLED_VALUE, Data::fromHandle(handle), m_world.descriptor("S"));
  }
  const std::string text = data();
  EXPECT_NE(text.find(R"("states":["S"])"), std::string::npos);
  EXPECT_NE(text.find(R"("y":{"0":0.0})"), std::string::npos);
}

TEST_F(Qmjson, ResidencyIsScaledBySinglePrecisionWidened) {
  m_world.system().m_timestampFrequency = 3.0F;
  m_writer.writeMessage(m_world.systemMessage());
  sample(Metric::SAMPLED_RESIDENCY, Data(3.0));
  EXPECT_NE(points().find(R"("y":{"0":1.0000000298023224})"), std::string::npos);
}

TEST_F(Qmjson, UnknownTypeIsToldByStates) {
  sample(static_cast<Metric::MetricType>(9), Data(3.0));
  const std::string text = data();
  EXPECT_NE(text.find(R"({"type":"UNKNOWN","states":[""],"altUnits":[]})"), std::string::npos);
  EXPECT_NE(text.find(R"("y":{"0":3.0})"), std::string::npos);
}

TEST_F(Qmjson, FalseDescriptorFailsTheRestOfTheMessage) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  EXPECT_EQ(give(m_writer, metric, 1000,
                 {m_world.element(m_entity, nullptr, Data(1.0)),
                  m_world.element(m_entity, nullptr, Data::fromHandle(m_world.falseDescriptor())),
                  m_world.element(m_entity, nullptr, Data(2.0))}),
            1);
  EXPECT_EQ(m_log.warnings(), (Warnings{{2, "WARNING: Unable to retrieve data descriptor\n"}}));
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":1.0}])");
}

TEST_F(Qmjson, FalseDescriptorOfATraceIsItsText) {
  EXPECT_EQ(sample(Metric::TRACED_EVENT, Data::fromHandle(m_world.falseDescriptor())), 0);
  EXPECT_NE(data().find(R"("states":["false"])"), std::string::npos);
  EXPECT_TRUE(m_log.warnings().empty());
}

// Units and rates.

TEST_F(Qmjson, RateFormIsPrintedPerSecond) {
  pwr::Quantity* energy = m_world.quantity(3, "Energy", "mJ");
  energy->setRateConversion(m_world.quantity(9, "Power", "mW"), 0.5);
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA, energy);
  sample(metric, Data(3.0));
  give(m_writer, metric, 2000, {m_world.element(m_entity, nullptr, Data(3.0), 0)});
  const std::string text = data();
  EXPECT_NE(
      text.find(
          R"("altUnits":[{"name":"Energy","unit":"mJ","conversion":1.0,"isCalculatedRate":false},)"
          R"({"name":"Power","unit":"mW","conversion":0.5,"isCalculatedRate":true}],)"
          R"("units":"mW"})"),
      std::string::npos);
  // 3 * 0.5 * 1e6 / 250; nothing over no time.
  EXPECT_NE(text.find(R"({"x":750,"x1":1000,"y":6000.0},{"x":2000,"x1":2000,"y":0.0})"),
            std::string::npos);
}

TEST_F(Qmjson, StatesKeepTheirOwnUnitBesideARate) {
  pwr::Quantity* time = m_world.quantity(1, "Time", "us");
  time->setRateConversion(m_world.quantity(9, "Share", "%"), 0.5);
  sample(Metric::SAMPLED_RESIDENCY, Data(3.0), m_world.descriptor("C0"), time);
  const std::string text = data();
  EXPECT_NE(text.find(R"("units":"us"})"), std::string::npos);
  EXPECT_NE(text.find(R"("y":{"0":3.0})"), std::string::npos);
}

TEST_F(Qmjson, QuantityOfARateIsItselfOne) {
  sample(Metric::SAMPLED_VALUE, Data(3.0), nullptr, m_world.quantity(9, "Power", "mW"));
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":3000000.0}])");
}

// States.

TEST_F(Qmjson, DeclaredStatesHaveTheLowIdsAndAllAreSorted) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  metric.states = {Data::fromHandle(m_world.descriptor("x", Data(std::string("C10")))),
                   Data::fromHandle(m_world.descriptor("no attribute")),
                   Data::fromHandle(nullptr),
                   Data::fromHandle(m_world.falseDescriptor()),
                   Data::fromHandle(m_entity),
                   Data(1.0),
                   Data::fromHandle(m_world.descriptor("y", Data(std::string("C2"))))};
  sample(metric, Data(5.0), m_world.descriptor("C3"));
  give(m_writer, metric, 2000,
       {m_world.element(m_entity, m_world.descriptor("C10"), Data(6.0), 250)});
  const std::string text = data();
  EXPECT_NE(text.find(R"("states":["C2","C3","C10"])"), std::string::npos);
  EXPECT_NE(text.find(R"("y":{"1":5.0}},{"x":1750,"x1":2000,"y":{"2":6.0})"), std::string::npos);
}

TEST_F(Qmjson, SeriesOfFewerStatesIsRewrittenToTheSharedOnes) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  const auto* other = m_world.entity("O");
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, m_world.descriptor("800"), Data(1.0), 250),
        m_world.element(m_entity, m_world.descriptor("1200"), Data(2.0), 250),
        m_world.element(other, m_world.descriptor("1200"), Data(3.0), 250)});
  m_writer.fini();
  const auto document = qumetra::test::parseFile(file());
  const auto& category = document["data"]["M"];
  EXPECT_STREQ(category["metaData"]["states"][0].GetString(), "800");
  EXPECT_STREQ(category["metaData"]["states"][1].GetString(), "1200");
  EXPECT_EQ(category["data"]["E"]["points"][0]["y"]["1"].GetDouble(), 2.0);
  EXPECT_EQ(category["data"]["O"]["points"][0]["y"]["1"].GetDouble(), 3.0);
}

TEST_F(Qmjson, EndTwiceGivesTheSameDocument) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  sample(metric, Data(5.0), m_world.descriptor("7"));
  sample(metric, Data(6.0), m_world.descriptor("3"));
  m_writer.fini();
  const std::string first = readFile(file());
  m_writer.fini();
  EXPECT_EQ(readFile(file()), first);
}

// Series ids.

TEST_F(Qmjson, IdIsTheSumOfHashAndPackedIds) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  metric.metricId = 7;
  const auto& entity = m_world.model().addEntity({.name = "a\xff", .id = 0x500000003});
  const auto* element = m_world.element(&entity, nullptr, Data(1.0));
  // 97 * 101 - 1: the second byte counts as -1. Only the low half of the entity's id counts.
  EXPECT_EQ(m_writer.addSeries("k", "a\xff", metric, element, false), 9796U + 0x700000003U);
  EXPECT_EQ(m_writer.addSeries("k", std::string("a\0b", 3), metric, element, false),
            97U + 0x700000003U)
      << "up to the first zero byte";
}

TEST_F(Qmjson, HashCarriesIntoTheMetricsId) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  metric.metricId = 1;
  const auto& entity = m_world.model().addEntity({.name = "E", .id = 0xffffffff});
  const auto* element = m_world.element(&entity, nullptr, Data(1.0));
  EXPECT_EQ(m_writer.addSeries("k", "a", metric, element, false), 0x1ffffffffU + 97U);
}

TEST_F(Qmjson, FirstIdOfAllOnesMakesAPoint) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  metric.metricId = 0xffffffff;
  // "e" is 101, so this entity brings the sum to all ones.
  const auto& entity = m_world.model().addEntity({.name = "e", .id = 0xffffffff - 101});
  give(m_writer, metric, 1000, {m_world.element(&entity, nullptr, Data(1.0))});
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":1.0}])");
}

// The continuous shell.

TEST_F(Qmjson, ContinuousRunPassesAllOn) {
  m_writer.init(m_dir.file("run"), true);
  EXPECT_EQ(m_writer.writeMessage(m_world.systemMessage()), 0);
  EXPECT_EQ(sample(Metric::SAMPLED_VALUE, Data(1.0)), 0);
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 1);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(qumetra::test::parseFile(m_dir.file("run_0.qmjson"))["Data"].Size(), 1U);
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(Qmjson, FlushOutsideOfAContinuousRunDoesNothing) {
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 0);
}

TEST_F(Qmjson, NumberThatJsonLacksLeavesItsKeyWithoutAValue) {
  sample(Metric::SAMPLED_VALUE, Data(std::numeric_limits<double>::infinity()));
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":}])");
}

TEST(SeriesWriterNames, AreThoseOfBothWriters) {
  std::string text;
  const Data number(1.5);
  EXPECT_EQ(QMJSONWriter::getStringFromData(&number, &text), 0);
  EXPECT_EQ(text, "1.5");
  EXPECT_EQ(JSONWriter::getStringFromData(nullptr, &text), 1);
  EXPECT_STREQ(QMJSONWriter::getTypeString(Metric::TRACED_EVENT), "TRACED_EVENT");
  EXPECT_STREQ(JSONWriter::getTypeString(static_cast<Metric::MetricType>(5)), "UNKNOWN");
  EXPECT_TRUE(QMJSONWriter::isNumeric("12"));
  std::vector<std::string> states{"2", "1"};
  JSONWriter::sortStates(states);
  EXPECT_EQ(states, (std::vector<std::string>{"1", "2"}));
  pwr::AttributeValueManager attributes;
  EXPECT_EQ(QMJSONWriter::getFirstDataAttributeAsString(&attributes, &text), 1);
  attributes.addAttributeValue(nullptr, Data(3UL));
  EXPECT_EQ(QMJSONWriter::getFirstDataAttributeAsString(&attributes, &text), 0);
  EXPECT_EQ(text, "3");
}

// Trace events.

class TraceJson : public Results<JSONWriter> {
 protected:
  std::string file() const { return m_dir.file("run.json"); }
  std::string text() {
    EXPECT_EQ(m_writer.fini(), 0);
    return readFile(file());
  }
};

TEST_F(TraceJson, EmptyModelIsAWholeDocument) { EXPECT_EQ(text(), "{\"traceEvents\":[]}\n"); }

TEST_F(TraceJson, EventHasItsMembersInOrder) {
  sample(Metric::SAMPLED_DELTA, Data(2.5), m_world.descriptor("C1"));
  const std::string process = std::to_string(::getpid());
  const std::string thread = std::to_string(static_cast<std::int32_t>(::pthread_self()));
  EXPECT_EQ(text(), R"({"traceEvents":[{"name":"","cat":"M","ph":"C","ts":750,"pid":)" + process +
                        R"(,"tid":)" + thread + R"(,"args":{"C1":2.5}}]})" + "\n");
}

TEST_F(TraceJson, ArgumentsAreNamedByTheStatesOfSamples) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, m_world.descriptor("C3"), Data(1.0), 250),
        m_world.element(m_entity, m_world.descriptor("C2"), Data(2.0), 250)});
  EXPECT_NE(text().find(R"("args":{"C3":1.0,"C2":2.0})"), std::string::npos) << "unsorted";
}

TEST_F(TraceJson, DeclaredStatesNameTheirArguments) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  metric.states = {Data::fromHandle(m_world.descriptor("x", Data(std::string("C10"))))};
  sample(metric, Data(1.0), m_world.descriptor("C2"));
  give(m_writer, metric, 2000,
       {m_world.element(m_entity, m_world.descriptor("C10"), Data(3.0), 250)});
  const std::string result = text();
  EXPECT_NE(result.find(R"("args":{"C2":1.0})"), std::string::npos);
  EXPECT_NE(result.find(R"("args":{"C10":3.0})"), std::string::npos);
}

TEST_F(TraceJson, RangeIsTwoMembersOfOneKey) {
  sample(Metric::SAMPLED_VALUE, Data::fromIntRange({-1, 1}));
  EXPECT_NE(text().find(R"("args":{"":-1.0,"":1.0})"), std::string::npos);
}

TEST_F(TraceJson, NeedsNoProcessorAndNoSystem) {
  JSONWriter writer;
  writer.init(m_dir.file("run"), false);
  EXPECT_EQ(writer.fini(), 0);
  EXPECT_EQ(readFile(file()), "{\"traceEvents\":[]}\n");
}

TEST_F(TraceJson, ContinuousRunPassesAllOn) {
  m_writer.init(m_dir.file("run"), true);
  m_writer.writeMessage(m_world.systemMessage());
  sample(Metric::SAMPLED_VALUE, Data(1.0));
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 1);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(qumetra::test::parseFile(m_dir.file("run_0.json"))["traceEvents"].Size(), 1U);
}

TEST_F(TraceJson, LongResultsGoOutInBlocks) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  const auto* element = m_world.element(m_entity, nullptr, Data(1.0));
  for (unsigned int i = 0; i < 40'000; ++i) {
    give(m_writer, metric, i + 1, {element});
  }
  m_writer.fini();
  const auto document = qumetra::test::parseFile(file());
  EXPECT_EQ(document["traceEvents"].Size(), 40'000U);
  EXPECT_EQ(document["traceEvents"][39'999]["ts"].GetDouble(), 39'999);
}

}  // namespace
