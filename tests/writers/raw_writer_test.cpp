// Raw text as a host sees it: messages in, `<output name>.txt` out.
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/messages.h"
#include "host/system_metadata.h"
#include "tests/support/disk_faults.h"
#include "tests/writers/raw_writer_fixture.h"

namespace {

using qumetra::test::LogCapture;
using qumetra::test::OpenRawWriter;
using qumetra::test::RawWriter;
using qumetra::test::readFile;
using qumetra::test::Sample;
using testing::AnyOf;
using testing::ElementsAre;
using testing::Pair;

pwr::TextMessage textOf(const std::string& text) {
  pwr::TextMessage message;
  message.setMessage(text);
  return message;
}

TEST_F(RawWriter, InitMakesTheFile) {
  EXPECT_EQ(m_writer.init(m_area.file("out"), false), 0);
  EXPECT_EQ(report(), "");
}

TEST_F(RawWriter, ContinuousModeMakesNoDifference) {
  EXPECT_EQ(m_writer.init(m_area.file("out"), true), 0);
  EXPECT_EQ(report(), "");
}

TEST_F(RawWriter, FileThatCannotBeMadeWarnsAndFails) {
  qumetra::test::writeFile(m_area.file("file"), "");
  LogCapture log(PluginEnvironment::kErrors);
  log.environment().enabledTags.add("text-writer-plugin");
  testing::internal::CaptureStderr();
  EXPECT_EQ(m_writer.init(m_area.file("file/out"), false), 1);
  testing::internal::GetCapturedStderr();
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, "WARNING: Could not create " +
                                                      m_area.file("file/out.txt") + "\n")));
}

TEST_F(RawWriter, FiniWithoutAFileWarnsAndFails) {
  EXPECT_EQ(m_writer.fini(), 1);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, "WARNING: Output file  does not exist\n")));
}

TEST_F(RawWriter, TextBeforeAFileIsOpenIsDropped) {
  EXPECT_EQ(m_writer.writeMessage(textOf("too early")), 0);
  ASSERT_EQ(m_writer.init(m_area.file("out"), false), 0);
  EXPECT_EQ(report(), "");
}

TEST_F(RawWriter, SampleBeforeAFileIsOpenIsKept) {
  Sample sample(1, "Metric", 5);
  EXPECT_EQ(add(sample), 0);
  ASSERT_EQ(m_writer.init(m_area.file("out"), false), 0);
  EXPECT_EQ(report(), "Metric\nTimestamp\n        5\n\n");
}

TEST_F(RawWriter, WithoutAPlaceForItsStoreAMetricFails) {
  const qumetra::test::NoPlaceForTempFiles nowhere;
  Sample sample(1, "Metric", 5);
  EXPECT_EQ(add(sample), 1);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, "WARNING: Failed to initialize buffer.\n")));
}

TEST_F(OpenRawWriter, SecondFiniWarnsAndFails) {
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(m_writer.fini(), 1);
  EXPECT_THAT(
      m_log.warnings(),
      ElementsAre(Pair(2, "WARNING: Output file " + m_area.file("out.txt") + " does not exist\n")));
}

TEST_F(OpenRawWriter, TextAfterFiniIsDropped) {
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(m_writer.writeMessage(textOf("too late")), 0);
  EXPECT_EQ(readFile(m_area.file("out.txt")), "");
}

TEST_F(OpenRawWriter, TextsStandBeforeAllTablesEachWithAnEmptyLine) {
  Sample sample(1, "Metric", 5);
  add(sample);
  EXPECT_EQ(m_writer.writeMessage(textOf("first")), 0);
  EXPECT_EQ(m_writer.writeMessage(textOf("second\nline")), 0);
  EXPECT_EQ(report(), "first\n\nsecond\nline\n\nMetric\nTimestamp\n        5\n\n");
}

TEST_F(OpenRawWriter, TextEndsAtAZeroByte) {
  m_writer.writeMessage(textOf(std::string("before\0after", 12)));
  EXPECT_EQ(report(), "before\n\n");
}

TEST_F(OpenRawWriter, OtherMessagesLeaveNoTrace) {
  pwr::SystemMetadata metadata;
  metadata.m_timestampFrequency = 2.5F;
  pwr::SystemMessage system;
  system.m_metadata = &metadata;
  EXPECT_EQ(m_writer.writeMessage(system), 0);
  EXPECT_EQ(m_writer.writeMessage(pwr::SystemMessage()), 0);
  EXPECT_EQ(m_writer.writeMessage(pwr::MetricContainerInfoMessage()), 0);
  EXPECT_EQ(report(), "");
}

TEST_F(OpenRawWriter, TimestampsStayTicksWhateverTheFrequency) {
  pwr::SystemMetadata metadata;
  metadata.m_timestampFrequency = 1000;
  pwr::SystemMessage system;
  system.m_metadata = &metadata;
  m_writer.writeMessage(system);
  Sample sample(1, "Metric", 18'446'744'073'709'551'615U);
  add(sample);
  EXPECT_EQ(report(), "Metric\n           Timestamp\n18446744073709551615\n\n");
}

TEST_F(OpenRawWriter, MetricsOfOneIdShareTheTableOfTheFirst) {
  Sample first(1, "First", 100);
  first.declare(&m_cpu0).in(m_celsius).value(m_cpu0, 1);
  Sample second(1, "Second", 200);
  second.declare(&m_cpu1).value(m_cpu0, 2);
  add(first);
  add(second);
  EXPECT_EQ(report(),
            "First\n"
            "Timestamp, CPU0 (C)\n"
            "      100,        1\n"
            "      200,        2\n"
            "\n");
}

TEST_F(OpenRawWriter, MetricsOfOneTitleAndTwoIdsStayTwoTables) {
  Sample one(1, "Metric", 100);
  Sample two(2, "Metric", 200);
  add(one);
  add(two);
  const std::string first = "Metric\nTimestamp\n      100\n\n";
  const std::string second = "Metric\nTimestamp\n      200\n\n";
  // The order of tables has no meaning.
  EXPECT_THAT(report(), AnyOf(first + second, second + first));
}

TEST_F(OpenRawWriter, ValuesShowAsTheHostShowsThem) {
  Sample sample(1, "Metric", 1);
  sample.value(m_cpu0, pwr::Data(0.125)).value(m_cpu1, pwr::Data(std::string("on, off")));
  sample.value(m_cpu0, pwr::Data::fromInt(-3), &m_c6);
  add(sample);
  EXPECT_EQ(report(),
            "Metric\n"
            "Timestamp,  CPU0,    CPU1, CPU0 C6\n"
            "        1, 0.125, on, off,      -3\n"
            "\n");
}

TEST_F(OpenRawWriter, SecondPassGoesOnWithTheTablesOfTheFirst) {
  Sample first(1, "Metric", 100);
  add(first);
  EXPECT_EQ(m_writer.fini(), 0);
  ASSERT_EQ(m_writer.init(m_area.file("out"), false), 0);
  Sample second(1, "Metric", 200);
  add(second);
  EXPECT_EQ(report(), "Metric\nTimestamp\n      100\n      200\n\n");
}

TEST_F(OpenRawWriter, StoreOfAnIdIsMadeOnceWithTheFirstName) {
  BackingStoreWrapper* store = m_writer.getStore("First", 1);
  ASSERT_NE(store, nullptr);
  EXPECT_EQ(m_writer.getStore("Second", 1), store);
  EXPECT_EQ(qumetra::test::flushed(*store).text, "First\n\n\n");
}

TEST_F(OpenRawWriter, MoreColumnsThanATableTakesLeaveTheOthersWhole) {
  std::vector<std::unique_ptr<pwr::EntityHandle>> entities;
  Sample sample(1, "Metric", 100);
  for (std::uint64_t i = 0; i < 65'540; ++i) {
    entities.push_back(
        std::make_unique<pwr::EntityHandle>(i, pwr::HandleTexts{"E", "", ""}, nullptr));
    sample.value(*entities.back(), i);
  }
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  EXPECT_EQ(add(sample), 0);
  const std::string text = report();
  // The timestamp and 65,534 values: none of the others has taken their places.
  EXPECT_NE(text.find("\n      100, 0, 1, 2, 3"), std::string::npos);
  EXPECT_EQ(text.substr(text.size() - 9), ", 65533\n\n");
}

TEST_F(OpenRawWriter, FullDiskIsAnErrorInTheLogAndNoMore) {
  m_writer.writeMessage(textOf(std::string(100, 'x')));
  const qumetra::test::FullDisk full(50);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(m_log.errors(), ElementsAre(Pair(1, "ERROR: Could not write all of " +
                                                      m_area.file("out.txt") + "\n")));
}

}  // namespace
