// The .json result of an ordinary run: trace events.
#include <pthread.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/writers/json_results_fixture.h"
#include "writers/json_plugin.h"

namespace {

using pwr::Data;
using pwr::Metric;
using qumetra::test::give;
using qumetra::test::readFile;

class TraceJson : public qumetra::test::Results<JSONWriter> {
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

TEST_F(TraceJson, PointsKeepTheirOrderAndElementsOfOneSeriesAreOneEvent) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  give(m_writer, metric, 2000,
       {m_world.element(m_entity, m_world.descriptor("a"), Data(1.0)),
        m_world.element(m_entity, m_world.descriptor("a"), Data(2.0))});
  give(m_writer, metric, 1000, {m_world.element(m_entity, nullptr, Data(3.0))});
  const std::string result = text();
  const std::size_t first = result.find(R"("ts":1999)");
  EXPECT_NE(result.find(R"("args":{"a":1.0,"a":2.0})", first), std::string::npos);
  EXPECT_NE(result.find(R"("ts":999)", first), std::string::npos);
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

TEST(SeriesWriterNames, TypesHaveTheirs) {
  const std::vector<std::string> names = {"SAMPLED_DELTA", "SAMPLED_RESIDENCY",
                                          "SAMPLED_VALUE", "TRACED_VALUE_TRANSITION",
                                          "TRACED_EVENT",  "UNKNOWN"};
  for (std::uint64_t type = 0; type < names.size(); ++type) {
    EXPECT_EQ(QMJSONWriter::getTypeString(static_cast<Metric::MetricType>(type)), names[type]);
  }
  EXPECT_STREQ(JSONWriter::getTypeString(static_cast<Metric::MetricType>(0x100)), "UNKNOWN");
}

TEST(SeriesWriterNames, AreThoseOfBothWriters) {
  std::string text;
  const Data number(1.5);
  EXPECT_EQ(QMJSONWriter::getStringFromData(&number, &text), 0);
  EXPECT_EQ(text, "1.5");
  EXPECT_EQ(JSONWriter::getStringFromData(nullptr, &text), 1);
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

}  // namespace
