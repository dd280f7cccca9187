// What the samples of an ordinary run become in the .qmjson result.
#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/writers/json_results_fixture.h"

namespace {

using pwr::Data;
using pwr::Metric;
using qumetra::test::give;
using Warnings = qumetra::test::RecordingSink::Texts;

class QmjsonSample : public qumetra::test::QmjsonResults {};

TEST_F(QmjsonSample, EachStateOfADeltaIsASeries) {
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

TEST_F(QmjsonSample, ElementsOfOneSeriesInARowAreOnePoint) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, m_world.descriptor("C0"), Data(1.0), 250),
        m_world.element(m_entity, m_world.descriptor("C1"), Data(2.0), 250)});
  EXPECT_EQ(points(), R"([{"x":750,"x1":1000,"y":{"0":1.0,"1":2.0}}])");
}

TEST_F(QmjsonSample, AnotherSeriesBetweenPartsThePoint) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  const auto* other = m_world.entity("O");
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, nullptr, Data(1.0)), m_world.element(other, nullptr, Data(2.0)),
        m_world.element(m_entity, nullptr, Data(3.0))});
  m_writer.fini();
  const auto document = qumetra::test::parseFile(file());
  EXPECT_EQ(document["data"]["M"]["data"]["E"]["points"].Size(), 2U);
}

TEST_F(QmjsonSample, RangeHasBothEnds) {
  sample(Metric::SAMPLED_VALUE, Data::fromUIntRange({3, 4}));
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":3.0,"y1":4.0}])");
}

TEST_F(QmjsonSample, RangeOfADeltaHasBothEnds) {
  sample(Metric::SAMPLED_DELTA, Data::fromIntRange({-3, 4}));
  EXPECT_EQ(points(), R"([{"x":750,"x1":1000,"y":-3.0,"y1":4.0}])");
}

TEST_F(QmjsonSample, RangeOfAResidencyIsScaledAtItsLowEndOnly) {
  m_world.system().m_timestampFrequency = 2.0F;
  m_writer.writeMessage(m_world.systemMessage());
  sample(Metric::SAMPLED_RESIDENCY, Data::fromRealRange({3, 4}));
  EXPECT_EQ(points(), R"([{"x":375,"x1":500,"y":{"0":1.5,"0":4.0}}])");
}

TEST_F(QmjsonSample, RangeOnTheSamePointLosesItsHighEnd) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  const Data range = Data::fromRealRange({3.5, 4.5});
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, nullptr, Data(1.0)), m_world.element(m_entity, nullptr, range)});
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":1.0,"y1":3.5}])");
}

TEST_F(QmjsonSample, RepeatedStateRepeatsItsKey) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  const auto* state = m_world.descriptor("C0");
  give(m_writer, metric, 1000,
       {m_world.element(m_entity, state, Data(1.0)), m_world.element(m_entity, state, Data(2.0))});
  EXPECT_EQ(points(), R"([{"x":1000,"x1":1000,"y":{"0":1.0,"0":2.0}}])");
}

TEST_F(QmjsonSample, TimesAreComputedInSinglePrecision) {
  m_world.system().m_timestampFrequency = 24.0F;
  m_world.system().m_firstTimestamp = 10;
  m_writer.writeMessage(m_world.systemMessage());
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE, m_world.quantity(4, "Power", "mW"));
  give(m_writer, metric, 123'456'789'022,
       {m_world.element(m_entity, nullptr, Data(1.0), 1'000'000'001)});
  // In double: 5144032875, and 41666666 before it.
  EXPECT_EQ(points(), R"([{"x":5102366612,"x1":5144033280,"y":1.0}])");
}

TEST_F(QmjsonSample, TicksAreRoundedBeforeTheyAreScaled) {
  m_world.system().m_timestampFrequency = 3.0F;
  m_writer.writeMessage(m_world.systemMessage());
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  // One more than 2^24, which a float does not hold; scaled as it is it would give 5592406.
  give(m_writer, metric, 16'777'217, {m_world.element(m_entity, nullptr, Data(1.0))});
  EXPECT_EQ(points(), R"([{"x":5592404,"x1":5592405,"y":1.0}])");
}

TEST_F(QmjsonSample, ElementLongerThanTheRunWrapsItsStart) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  give(m_writer, metric, 10, {m_world.element(m_entity, nullptr, Data(1.0), 20)});
  EXPECT_EQ(points(), R"([{"x":18446744073709551606,"x1":10,"y":1.0}])");
}

TEST_F(QmjsonSample, FrequencyOfZeroHasDefinedTimes) {
  m_world.system().m_timestampFrequency = 0.0F;
  m_writer.writeMessage(m_world.systemMessage());
  sample(Metric::SAMPLED_DELTA, Data(1.0));
  EXPECT_EQ(points(), R"([{"x":0,"x1":0,"y":1.0}])");
}

TEST_F(QmjsonSample, FrequencyOfZeroAtTheStartHasDefinedTimes) {
  m_world.system().m_timestampFrequency = 0.0F;
  m_writer.writeMessage(m_world.systemMessage());
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0), 250)});
  // No ticks times infinity is not a number, whose integer is 2^63.
  EXPECT_EQ(points(), R"([{"x":9223372036854775808,"x1":9223372036854775808,"y":1.0}])");
}

TEST_F(QmjsonSample, TimeBeforeTheStartWraps) {
  m_world.system().m_firstTimestamp = 1001;
  m_writer.writeMessage(m_world.systemMessage());
  sample(Metric::SAMPLED_VALUE, Data(1.0));
  // All ones is 2^64 in single precision, which 64 bits do not hold.
  EXPECT_EQ(points(), R"([{"x":18446744073709551615,"x1":0,"y":1.0}])");
}

TEST_F(QmjsonSample, MetricBeforeTheSystemMessageIsAtZero) {
  QMJSONWriter writer;
  writer.init(m_dir.file("run"), false);
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  give(writer, metric, 1000, {m_world.element(m_entity, nullptr, Data(1.0), 250)});
  writer.writeMessage(m_world.systemMessage());
  writer.fini();
  const auto document = qumetra::test::parseFile(file());
  EXPECT_EQ(document["data"]["M"]["data"]["E "]["points"][0]["x1"].GetDouble(), 0);
}

TEST_F(QmjsonSample, EventIsOneLongAndCountsOne) {
  sample(Metric::TRACED_EVENT, Data(7.0), nullptr, m_world.quantity(4, "Power", "mW"));
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":{"0":1.0}}])");
}

TEST_F(QmjsonSample, TransitionCountsItsDurationUnderItsValue) {
  sample(Metric::TRACED_VALUE_TRANSITION, Data(7.5), m_world.descriptor("unused"));
  const std::string text = data();
  EXPECT_NE(text.find(R"("states":["7.5"])"), std::string::npos);
  EXPECT_NE(text.find(R"({"x":750,"x1":1000,"y":{"0":250.0}})"), std::string::npos);
}

TEST_F(QmjsonSample, SampledStringIsAStateThatCountsForItsDuration) {
  sample(Metric::SAMPLED_VALUE, Data(std::string("busy")), nullptr,
         m_world.quantity(4, "Power", "mW"));
  const std::string text = data();
  EXPECT_NE(text.find(R"("states":["busy"])"), std::string::npos);
  EXPECT_NE(text.find(R"("y":{"0":250.0})"), std::string::npos);
}

TEST_F(QmjsonSample, StateIsTheTextOfTheFirstAttribute) {
  sample(Metric::SAMPLED_RESIDENCY, Data(1.0), m_world.descriptor("C1", Data(800UL)));
  EXPECT_NE(data().find(R"("states":["800"])"), std::string::npos);
}

TEST_F(QmjsonSample, AttributeWithoutATextFallsBackToTheName) {
  sample(Metric::SAMPLED_RESIDENCY, Data(1.0),
         m_world.descriptor("C1", Data::fromHandle(m_entity)));
  EXPECT_NE(data().find(R"("states":["C1"])"), std::string::npos);
}

TEST_F(QmjsonSample, TracedDescriptorIsAStateByItsFirstAttribute) {
  sample(Metric::TRACED_EVENT, Data::fromHandle(m_world.descriptor("wake", Data(7UL))));
  EXPECT_NE(data().find(R"("states":["7"])"), std::string::npos);
}

TEST_F(QmjsonSample, SampledDescriptorIsAStateByItsName) {
  sample(Metric::SAMPLED_VALUE, Data::fromHandle(m_world.descriptor("C1", Data(800UL))));
  EXPECT_NE(data().find(R"("states":["C1"])"), std::string::npos);
}

TEST_F(QmjsonSample, OtherHandlesCountZero) {
  for (const pwr::DataHandle* handle : {static_cast<const pwr::DataHandle*>(m_entity),
                                        static_cast<const pwr::DataHandle*>(nullptr)}) {
    sample(Metric::SAMPLED_VALUE, Data::fromHandle(handle), m_world.descriptor("S"));
  }
  const std::string text = data();
  EXPECT_NE(text.find(R"("states":["S"])"), std::string::npos);
  EXPECT_NE(text.find(R"("y":{"0":0.0})"), std::string::npos);
}

TEST_F(QmjsonSample, ResidencyIsScaledBySinglePrecisionWidened) {
  m_world.system().m_timestampFrequency = 3.0F;
  m_writer.writeMessage(m_world.systemMessage());
  sample(Metric::SAMPLED_RESIDENCY, Data(3.0));
  EXPECT_NE(points().find(R"("y":{"0":1.0000000298023224})"), std::string::npos);
}

TEST_F(QmjsonSample, UnknownTypeIsToldByStates) {
  sample(static_cast<Metric::MetricType>(9), Data(3.0));
  const std::string text = data();
  EXPECT_NE(text.find(R"({"type":"UNKNOWN","states":[""],"altUnits":[]})"), std::string::npos);
  EXPECT_NE(text.find(R"("y":{"0":3.0})"), std::string::npos);
}

TEST_F(QmjsonSample, UnknownTypeHasItsDurationAndBothEndsOfARange) {
  sample(static_cast<Metric::MetricType>(9), Data::fromUIntRange({3, 4}));
  EXPECT_EQ(points(), R"([{"x":750,"x1":1000,"y":{"0":3.0,"0":4.0}}])");
}

TEST_F(QmjsonSample, ValueWithoutANumberCountsZero) {
  sample(Metric::SAMPLED_DELTA, Data(std::string("7")));
  EXPECT_EQ(points(), R"([{"x":750,"x1":1000,"y":0.0}])");
}

TEST_F(QmjsonSample, FalseDescriptorFailsTheRestOfTheMessage) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  EXPECT_EQ(give(m_writer, metric, 1000,
                 {m_world.element(m_entity, nullptr, Data(1.0)),
                  m_world.element(m_entity, nullptr, Data::fromHandle(m_world.falseDescriptor())),
                  m_world.element(m_entity, nullptr, Data(2.0))}),
            1);
  EXPECT_EQ(m_log.warnings(), (Warnings{{2, "WARNING: Unable to retrieve data descriptor\n"}}));
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":1.0}])");
}

TEST_F(QmjsonSample, FalseDescriptorOfATraceIsItsText) {
  EXPECT_EQ(sample(Metric::TRACED_EVENT, Data::fromHandle(m_world.falseDescriptor())), 0);
  EXPECT_NE(data().find(R"("states":["false"])"), std::string::npos);
  EXPECT_TRUE(m_log.warnings().empty());
}

TEST_F(QmjsonSample, NumberThatJsonLacksLeavesItsKeyWithoutAValue) {
  sample(Metric::SAMPLED_VALUE, Data(std::numeric_limits<double>::infinity()));
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":}])");
}

// Series ids.

TEST_F(QmjsonSample, IdIsTheSumOfHashAndPackedIds) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  metric.metricId = 7;
  const auto& entity = m_world.model().addEntity({.name = "a\xff", .id = 0x800000003});
  const auto* element = m_world.element(&entity, nullptr, Data(1.0));
  // 97 * 101 - 1: the second byte counts as -1. Only the low half of the entity's id counts.
  EXPECT_EQ(m_writer.addSeries("k", "a\xff", metric, element, false), 9796U + 0x700000003U);
  EXPECT_EQ(m_writer.addSeries("k", std::string("a\0b", 3), metric, element, false),
            97U + 0x700000003U)
      << "up to the first zero byte";
}

TEST_F(QmjsonSample, HashCarriesIntoTheMetricsId) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  metric.metricId = 1;
  const auto& entity = m_world.model().addEntity({.name = "E", .id = 0xffffffff});
  const auto* element = m_world.element(&entity, nullptr, Data(1.0));
  EXPECT_EQ(m_writer.addSeries("k", "a", metric, element, false), 0x1ffffffffU + 97U);
}

TEST_F(QmjsonSample, FirstIdOfAllOnesMakesAPoint) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  metric.metricId = 0xffffffff;
  // "e" is 101, so this entity brings the sum to all ones.
  const auto& entity = m_world.model().addEntity({.name = "e", .id = 0xffffffff - 101});
  give(m_writer, metric, 1000, {m_world.element(&entity, nullptr, Data(1.0))});
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":1.0}])");
}

TEST_F(QmjsonSample, LaterIdOfAllOnesGoesOnWithTheLastPoint) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  metric.metricId = 0xffffffff;
  const auto& entity = m_world.model().addEntity({.name = "e", .id = 0xffffffff - 101});
  for (const std::uint64_t tick : {1000UL, 2000UL}) {
    give(m_writer, metric, tick, {m_world.element(&entity, nullptr, Data(tick))});
  }
  // All ones also means that there was no element before.
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":1000.0,"y1":2000.0}])");
}

}  // namespace
