// The numbered documents of a continuous run.
#include <filesystem>
#include <limits>
#include <string>
#include <system_error>
#include <utility>

#include <gtest/gtest.h>

#include "host/environment.h"
#include "host/logger.h"
#include "tests/writers/continuous_fixture.h"

namespace {

using pwr::Data;
using pwr::Metric;
using qumetra::test::give;
using qumetra::test::KeptResults;
using qumetra::test::parseFile;

class ContinuousFlush : public qumetra::test::ContinuousResults {};

TEST_F(ContinuousFlush, FlushWithoutAProcessorKeepsAllAndUsesNoNumber) {
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

TEST_F(ContinuousFlush, OtherExtensionKeepsAll) {
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  for (const char* extension : {"", ".jsonx", ".jso"}) {
    m_writer.extension = extension;
    EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 1);
  }
  EXPECT_EQ(m_writer.data.size(), 1U);
  EXPECT_EQ(m_writer.metadata.size(), 1U);
}

TEST_F(ContinuousFlush, FlushWithoutAHostKeepsAllAndUsesNoNumber) {
  m_writer.extension = ".qmjson";
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  PluginEnvironment* const host = std::exchange(g_pluginEnvironment, nullptr);
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 0);
  g_pluginEnvironment = host;
  EXPECT_EQ(m_writer.data.size(), 1U);
  EXPECT_EQ(m_writer.metadata.size(), 1U);

  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 1);
  EXPECT_EQ(parseFile(file("run_0.qmjson"))["Metadata"].Size(), 2U);
  EXPECT_EQ(parseFile(file("run_0.qmjson"))["Data"].Size(), 1U);
}

TEST_F(ContinuousFlush, BothFormsAreNumberedApartFromZero) {
  for (const char* extension : {".json", ".json", ".qmjson"}) {
    m_writer.extension = extension;
    EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 1);
  }
  KeptResults other(file("other"));
  other.extension = ".json";
  other.flushContinuousResults(m_world.system());
  EXPECT_EQ(qumetra::test::readFile(file("run_0.json")), R"({"traceEvents":[]})");
  EXPECT_EQ(qumetra::test::readFile(file("run_1.json")), R"({"traceEvents":[]})");
  EXPECT_EQ(parseFile(file("run_0.qmjson"))["Metadata"].Size(), 1U);
  EXPECT_EQ(parseFile(file("run_0.qmjson"))["Data"].Size(), 0U);
  EXPECT_EQ(parseFile(file("other_2.json"))["traceEvents"].Size(), 0U);
}

TEST_F(ContinuousFlush, TraceEventHasItsMembersInOrder) {
  m_writer.extension = ".json";
  sampleOf(Metric::SAMPLED_DELTA, Data(2.5), m_world.descriptor("C\"1"));
  m_writer.flushContinuousResults(m_world.system());
  EXPECT_EQ(qumetra::test::readFile(file("run_0.json")),
            R"({"traceEvents":[{"name":"Package/Core","ph":"X","ts":1000,"dur":250.0,"pid":1,)"
            R"("tid":1,"args":{"power":2.5,"state":"C\"1"}}]})");
}

TEST_F(ContinuousFlush, QmjsonSampleHasItsMembersInOrder) {
  m_writer.extension = ".qmjson";
  sampleOf(Metric::SAMPLED_DELTA, Data(2.5), m_world.descriptor("C1"));
  m_writer.flushContinuousResults(m_world.system());
  const std::string text = qumetra::test::readFile(file("run_0.qmjson"));
  EXPECT_NE(text.find(R"("Data":[{"ID":1,"Entity":"Package/Core","Descriptor":"C1","State":"C1",)"
                      R"("Timestamp":1000,"Duration":250.0,"Value":2.5}]})"),
            std::string::npos);
}

TEST_F(ContinuousFlush, DescriptionOfAMetricStandsInOneFileOnly) {
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

TEST_F(ContinuousFlush, DescriptionIsLostWithATraceFlush) {
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

TEST_F(ContinuousFlush, OneNameUnderTwoIdsHasTwoDescriptions) {
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

TEST_F(ContinuousFlush, DescriptionTellsTheMetric) {
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

TEST_F(ContinuousFlush, DescriptorWithoutATextHasAnEmptyAttributeValue) {
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

TEST_F(ContinuousFlush, AttributeValueNeedsNoAttributeInItsEntry) {
  // Unlike a state, which takes the descriptor's name then.
  m_writer.extension = ".qmjson";
  pwr::DataDescriptor* descriptor = m_world.descriptor("C1");
  descriptor->addAttributeValue(nullptr, Data(800UL));
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  metric.entities = {{m_entity, descriptor}};
  give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  m_writer.flushContinuousResults(m_world.system());
  EXPECT_NE(qumetra::test::readFile(file("run_0.qmjson")).find(R"("AttributeValue":"800")"),
            std::string::npos);
}

TEST_F(ContinuousFlush, SeveralStatesAreAList) {
  m_writer.extension = ".qmjson";
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  metric.states = {Data(std::string("C0")), Data(1.5)};
  give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  m_writer.flushContinuousResults(m_world.system());
  EXPECT_NE(qumetra::test::readFile(file("run_0.qmjson")).find(R"("States":["C0","1.5"])"),
            std::string::npos);
}

TEST_F(ContinuousFlush, SystemIsToldAsTexts) {
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

TEST_F(ContinuousFlush, NumberThatJsonLacksLeavesItsKeyWithoutAValue) {
  m_writer.extension = ".json";
  sampleOf(Metric::SAMPLED_DELTA, Data(std::numeric_limits<double>::quiet_NaN()));
  m_writer.flushContinuousResults(m_world.system());
  EXPECT_NE(qumetra::test::readFile(file("run_0.json")).find(R"("args":{"power":,"state":"")"),
            std::string::npos);
}

TEST_F(ContinuousFlush, LongFileNamesAreCut) {
  std::string directory = file("");
  while (directory.size() < 1000) {
    directory += "./";
  }
  ContWriter writer(directory + std::string(100, 'b'));
  writer.extension = ".json";
  EXPECT_EQ(writer.flushContinuousResults(m_world.system()), 1);
  EXPECT_TRUE(std::filesystem::exists(file(std::string(1023 - directory.size(), 'b'))));
}

TEST_F(ContinuousFlush, NameThatNoFileCanHaveDoesNoHarm) {
  ContWriter writer(file(std::string(500, 'b')));
  writer.extension = ".json";
  EXPECT_EQ(writer.flushContinuousResults(m_world.system()), 1);
  EXPECT_EQ(m_log.errors().size(), 1U);
}

TEST_F(ContinuousFlush, FlushLeavesTheOutputEmptyAndClosed) {
  pwr::Logger* output = g_pluginEnvironment->getFileOutputHandle(file("run_0.json").c_str());
  output->m_pendingBytes = 7;
  m_writer.extension = ".json";
  m_writer.flushContinuousResults(m_world.system());
  EXPECT_EQ(output->m_buffer.capacity(), 0U) << "hosts keep the outputs of all files";
  EXPECT_EQ(output->m_pendingBytes, 0U);
  for (const auto& open : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    EXPECT_NE(std::filesystem::read_symlink(open.path(), gone), file("run_0.json"));
  }
}

TEST_F(ContinuousFlush, EndUsesTheNamelessOutputAndWritesNothing) {
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
