// The .qmjson document as a whole: file, head, units and states.
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/disk_faults.h"
#include "tests/writers/json_results_fixture.h"

namespace {

using pwr::Data;
using pwr::Metric;
using qumetra::test::FullDisk;
using qumetra::test::give;
using qumetra::test::readFile;

class QmjsonDocument : public qumetra::test::QmjsonResults {
 protected:
  /// An energy whose form per second is a power.
  const pwr::Quantity* rateOf(double factor) {
    pwr::Quantity* energy = m_world.quantity(3, "Energy", "mJ");
    energy->setRateConversion(m_world.quantity(9, "Power", "mW"), factor);
    return energy;
  }
};

TEST_F(QmjsonDocument, EmptyModelIsAWholeDocument) {
  EXPECT_EQ(data(), R"("data":{})");
  EXPECT_EQ(readFile(file()).back(), '\n');
  EXPECT_TRUE(qumetra::test::parseFile(file()).IsObject());
}

TEST_F(QmjsonDocument, HeadTellsFormatAndSystem) {
  auto& cpu = m_world.model().addCpuMetadata();
  cpu.m_cpuWords = {100.25F, 400.0F, 3000.0F, 2600.0F, 7, 0};
  // One package of two modules, with three cores of which one has two threads.
  cpu.m_topology.addThread({0, 0, 0, 0});
  cpu.m_topology.addThread({0, 0, 1, 1});
  cpu.m_topology.addThread({0, 1, 2, 2});
  cpu.m_topology.addThread({0, 1, 2, 3});
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
  for (int i = 0; i < 2; ++i) {
    m_writer.writeMessage(m_world.systemMessage());
  }
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(readFile(file()),
            R"({"fileType":"qumetra","version":{"major":1,"minor":0,"rev":0},"systemMetaData":{)"
            R"("platform":{"Platform ID":7,"Platform Name":"P","CPU Name":"Code",)"
            R"("CPU Native Name":"Native","PCH Name":"Hub","Host Name":"host","Num Packages":1,)"
            R"("Num Modules":2,"Num Cores":3,"Num Threads":4,"HFM Frequency MHz":3000.0,)"
            R"("LFM Frequency MHz":400.0,"CPU Frequency MHz":2600.0,"Bus Frequency MHz":100.25},)"
            R"("os":{"OS Name":"OS","OS Type":"x86_64","OS Version":"6"},)"
            R"("qumetra":{"Qumetra Version":"1.2.3","Qumetra Driver Version":"65535.255.0",)"
            R"("Collection Start Timestamp":5,"Collection Stop Timestamp":18446744073709551615,)"
            R"("Collection Duration":0.1,"Collection Command Line":" collect -t 1"}},"data":{}})"
            "\n");
}

TEST_F(QmjsonDocument, StartIsTheOneThatTimesAreCountedFrom) {
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

TEST_F(QmjsonDocument, WithoutAProcessorThereIsNoFileAndNoWord) {
  m_world.system().m_platformMetadata.clear();
  sample(Metric::SAMPLED_VALUE, Data(1.0));
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_FALSE(std::filesystem::exists(file()));
  EXPECT_TRUE(m_log.warnings().empty() && m_log.errors().empty());
}

TEST_F(QmjsonDocument, WithoutASystemMessageThereIsNoFile) {
  QMJSONWriter writer;
  writer.init(m_dir.file("other"), false);
  EXPECT_EQ(writer.fini(), 0);
  EXPECT_FALSE(std::filesystem::exists(m_dir.file("other.qmjson")));
}

TEST_F(QmjsonDocument, FileThatCannotBeMadeIsNoFailureAndNoWord) {
  m_writer.init(m_dir.file("no/such/directory"), false);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_TRUE(m_log.warnings().empty() && m_log.errors().empty());
}

TEST_F(QmjsonDocument, FullDiskIsOneErrorAndNoFailure) {
  {
    const FullDisk disk(100);
    EXPECT_EQ(m_writer.fini(), 0);
  }
  ASSERT_EQ(m_log.errors().size(), 1U);
  EXPECT_EQ(m_log.errors()[0].second, "ERROR: Could not write all of " + file() + "\n");
  // It is no document, and must not be kept as one.
  std::filesystem::remove(file());
}

TEST_F(QmjsonDocument, LongerFileOfAnEarlierRunIsReplaced) {
  std::ofstream(file()) << std::string(10'000, 'x');
  EXPECT_EQ(data(), R"("data":{})");
}

TEST_F(QmjsonDocument, StateThatEndsTheProcessLeavesTheEarlierFile) {
  std::ofstream(file()) << "earlier";
  sample(Metric::SAMPLED_RESIDENCY, Data(1.0), m_world.descriptor("9223372036854775807"));
  EXPECT_DEATH(m_writer.fini(), "number < LONG_MAX");
  EXPECT_EQ(readFile(file()), "earlier");
  // It is no document, and must not be kept as one.
  std::filesystem::remove(file());
}

TEST_F(QmjsonDocument, NamesAreEscapedAndBytesThatAreNoUtf8PassThrough) {
  Metric& metric = m_world.metric("q\"b\\s/\x01\x1f\x7f\t", Metric::SAMPLED_VALUE);
  const auto* entity = m_world.entity(std::string("n\0e\xff\xc3\xa9", 6));
  give(m_writer, metric, 1000, {m_world.element(entity, nullptr, Data(1.0))});
  const std::string text = data();
  EXPECT_EQ(text.find(R"("data":{"q\"b\\s/\u0001\u001F)"
                      "\x7f"
                      R"(\t":{"metaData")"),
            0U);
  EXPECT_NE(text.find("\"name\":\"n\\u0000e\xff\xc3\xa9\""), std::string::npos);
}

TEST_F(QmjsonDocument, SystemMessageWithoutMetadataIsRefused) {
  EXPECT_EQ(m_writer.writeMessage(pwr::SystemMessage()), 1);
}

TEST_F(QmjsonDocument, TextsAreTakenAndLeftOut) {
  EXPECT_EQ(m_writer.writeMessage(pwr::TextMessage()), 0);
  EXPECT_EQ(data(), R"("data":{})");
}

// Units and rates.

TEST_F(QmjsonDocument, RateFormIsPrintedPerSecond) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA, rateOf(0.5));
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

TEST_F(QmjsonDocument, StatesKeepTheirOwnUnitBesideARate) {
  pwr::Quantity* time = m_world.quantity(1, "Time", "us");
  time->setRateConversion(m_world.quantity(9, "Share", "%"), 0.5);
  sample(Metric::SAMPLED_RESIDENCY, Data(3.0), m_world.descriptor("C0"), time);
  const std::string text = data();
  EXPECT_NE(text.find(R"("units":"us"})"), std::string::npos);
  EXPECT_NE(text.find(R"("y":{"0":3.0})"), std::string::npos);
}

TEST_F(QmjsonDocument, QuantityOfARateIsItselfOne) {
  sample(Metric::SAMPLED_VALUE, Data(3.0), nullptr, m_world.quantity(9, "Power", "mW"));
  EXPECT_EQ(points(), R"([{"x":999,"x1":1000,"y":3000000.0}])");
}

TEST_F(QmjsonDocument, RateHoldsForBothEndsOfARange) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA, rateOf(0.5));
  sample(metric, Data::fromUIntRange({3, 4}));
  EXPECT_EQ(points(), R"([{"x":750,"x1":1000,"y":6000.0,"y1":8000.0}])");
}

TEST_F(QmjsonDocument, RateHoldsForPlainSeriesBesideAFirstOneOfStates) {
  // A text makes the first series one of states; the other entity has numbers.
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE, rateOf(0.5));
  const auto* other = m_world.entity("O");
  give(m_writer, metric, 1000, {m_world.element(other, nullptr, Data(3.0), 250)});
  sample(metric, Data(std::string("busy")));
  const std::string text = data();
  // The map of series hands out the one made last first.
  ASSERT_LT(text.find(R"("name":"E")"), text.find(R"("name":"O")"));
  EXPECT_NE(text.find(R"("states":["","busy"])"), std::string::npos);
  EXPECT_NE(text.find(R"("units":"mJ"})"), std::string::npos);
  // Per second, but not converted: 3 * 1 * 1e6 / 250.
  EXPECT_NE(text.find(R"({"x":750,"x1":1000,"y":12000.0})"), std::string::npos);
}

TEST_F(QmjsonDocument, RateTakesTheLengthOfAWrappedPoint) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA, rateOf(1.0));
  give(m_writer, metric, 10, {m_world.element(m_entity, nullptr, Data(3.0), 20)});
  EXPECT_EQ(points(), R"([{"x":18446744073709551606,"x1":10,"y":150000.0}])");
}

TEST_F(QmjsonDocument, MetricsOfOneNameAreOneCategory) {
  sample(Metric::SAMPLED_RESIDENCY, Data(1.0), m_world.descriptor("C0"));
  sample(Metric::SAMPLED_RESIDENCY, Data(2.0), m_world.descriptor("C1"));
  const std::string text = data();
  EXPECT_EQ(text.find(R"("metaData":)"), text.rfind(R"("metaData":)"));
  EXPECT_NE(text.find(R"("y":{"0":)"), std::string::npos);
  EXPECT_NE(text.find(R"("y":{"1":)"), std::string::npos);
}

// States.

TEST_F(QmjsonDocument, DeclaredStatesHaveTheLowIdsAndAllAreSorted) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  pwr::DataDescriptor* nameless = m_world.descriptor("no attribute in its entry");
  nameless->addAttributeValue(nullptr, Data(std::string("C1")));
  metric.states = {Data::fromHandle(m_world.descriptor("x", Data(std::string("C10")))),
                   Data::fromHandle(nameless),
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

TEST_F(QmjsonDocument, SeriesOfFewerStatesIsRewrittenToTheSharedOnes) {
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

TEST_F(QmjsonDocument, EndTwiceGivesTheSameDocument) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  sample(metric, Data(5.0), m_world.descriptor("7"));
  sample(metric, Data(6.0), m_world.descriptor("3"));
  m_writer.fini();
  const std::string first = readFile(file());
  m_writer.fini();
  EXPECT_EQ(readFile(file()), first);
}

// The continuous shell.

TEST_F(QmjsonDocument, ContinuousRunPassesAllOn) {
  m_writer.init(m_dir.file("run"), true);
  EXPECT_EQ(m_writer.writeMessage(m_world.systemMessage()), 0);
  EXPECT_EQ(sample(Metric::SAMPLED_VALUE, Data(1.0)), 0);
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 1);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(qumetra::test::parseFile(m_dir.file("run_0.qmjson"))["Data"].Size(), 1U);
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(QmjsonDocument, FlushOutsideOfAContinuousRunDoesNothing) {
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 0);
}

TEST_F(QmjsonDocument, SecondContinuousStartKeepsTheFirstName) {
  m_writer.init(m_dir.file("first"), true);
  m_writer.init(m_dir.file("second"), true);
  EXPECT_EQ(m_writer.flushContinuousResults(m_world.system()), 1);
  EXPECT_TRUE(std::filesystem::exists(m_dir.file("first_0.qmjson")));
}

}  // namespace
