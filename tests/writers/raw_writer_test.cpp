#include "writers/textwriter_plugin/raw_writer.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/handles.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "host/system_metadata.h"
#include "tests/support/disk_faults.h"
#include "tests/support/log_capture.h"
#include "tests/writers/flushed_table.h"

namespace {

using qumetra::test::LogCapture;
using qumetra::test::readFile;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

pwr::TextMessage textOf(const std::string& text) {
  pwr::TextMessage message;
  message.setMessage(text);
  return message;
}

/// A metric under construction, with the elements that its samples need.
class Sample {
 public:
  Sample(std::uint32_t id, const std::string& name, std::uint64_t timestamp) {
    m_metric.metricId = id;
    m_metric.name = name;
    m_data.timestamp = timestamp;
  }

  Sample& declare(const pwr::EntityHandle* entity,
                  const pwr::DataDescriptor* descriptor = nullptr) {
    m_metric.entities.emplace_back(entity, descriptor);
    return *this;
  }
  Sample& in(const pwr::Quantity& quantity) {
    m_metric.quantity = &quantity;
    return *this;
  }
  Sample& value(const pwr::EntityHandle& entity, pwr::Data value,
                const pwr::DataDescriptor* descriptor = nullptr) {
    m_elements.push_back(std::make_unique<pwr::DataElement>(&entity, descriptor, nullptr,
                                                            std::move(value), 0, nullptr));
    m_data.elements.push_back(m_elements.back().get());
    return *this;
  }
  Sample& value(const pwr::EntityHandle& entity, unsigned long number) {
    return value(entity, pwr::Data(number));
  }

  const pwr::Metric& message() {
    m_metric.setData(m_data);
    return m_metric;
  }

 private:
  pwr::Metric m_metric;
  pwr::SampleData m_data;
  std::vector<std::unique_ptr<pwr::DataElement>> m_elements;
};

class RawWriter : public ::testing::Test {
 protected:
  static pwr::EntityHandle entity(std::uint64_t id, const std::string& name,
                                  const pwr::EntityHandle* parent = nullptr) {
    return {id, {name, "field of " + name, ""}, parent};
  }

  int add(Sample& sample) { return m_writer.writeMessage(sample.message()); }

  /// Ends the collection and returns the file.
  std::string report() {
    EXPECT_EQ(m_writer.fini(), 0);
    return readFile(m_area.file("out.txt"));
  }

  qumetra::test::TempArea m_area;
  LogCapture m_log;
  RawWriterV2 m_writer;
  pwr::EntityHandle m_cpu0 = entity(10, "CPU0");
  pwr::EntityHandle m_cpu1 = entity(11, "CPU1");
  pwr::DataDescriptor m_c6{3, {"C6", "", ""}};
  pwr::Quantity m_celsius{1, 3, "Temperature", "C", "Temperature (C)"};
};

/// A writer that has opened its file.
class OpenRawWriter : public RawWriter {
 protected:
  void SetUp() override { ASSERT_EQ(m_writer.init(m_area.file("out"), false), 0); }
};

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

TEST_F(OpenRawWriter, DeclaredColumnsStandInTheirOrderWithUnits) {
  Sample sample(1, "CPU Temperature", 100);
  sample.declare(&m_cpu0).declare(&m_cpu1).in(m_celsius).value(m_cpu1, 41).value(m_cpu0, 42);
  EXPECT_EQ(add(sample), 0);
  EXPECT_EQ(report(),
            "CPU Temperature\n"
            "Timestamp, CPU0 (C), CPU1 (C)\n"
            "      100,       42,       41\n"
            "\n");
}

TEST_F(OpenRawWriter, QuantityWithoutUnitsLeavesEmptyBrackets) {
  const pwr::Quantity plain(2, 1, "Count", "", "Count");
  Sample sample(1, "Metric", 100);
  sample.in(plain).value(m_cpu0, 1);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, CPU0 ()\n      100,       1\n\n");
}

TEST_F(OpenRawWriter, ColumnIsTitledByQualifiedNameAndDescriptor) {
  const pwr::EntityHandle core = entity(12, "Core1", &m_cpu0);
  Sample sample(1, "Residency", 100);
  sample.declare(&core, &m_c6).in(m_celsius);
  add(sample);
  EXPECT_EQ(report(), "Residency\nTimestamp, CPU0/Core1 C6 (C)\n      100,               N/A\n\n");
}

TEST_F(OpenRawWriter, MetricWithoutDeclaredColumnsGetsThemFromItsElements) {
  Sample sample(1, "Metric", 100);
  sample.value(m_cpu0, 42).value(m_cpu0, pwr::Data(1.5), &m_c6);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, CPU0, CPU0 C6\n      100,   42,     1.5\n\n");
}

TEST_F(OpenRawWriter, LateColumnIsFilledWithMissingTextInEarlierRows) {
  Sample first(1, "Metric", 100);
  first.value(m_cpu0, 1);
  Sample second(1, "Metric", 200);
  second.value(m_cpu0, 2);
  Sample third(1, "Metric", 300);
  third.in(m_celsius).value(m_cpu0, 3).value(m_cpu1, 4);
  add(first);
  add(second);
  add(third);
  EXPECT_EQ(report(),
            "Metric\n"
            "Timestamp, CPU0, CPU1 (C)\n"
            "      100,    1,      N/A\n"
            "      200,    2,      N/A\n"
            "      300,    3,        4\n"
            "\n");
}

TEST_F(OpenRawWriter, ElementsMayComeInAnyOrderAndNumber) {
  Sample first(1, "Metric", 100);
  first.value(m_cpu0, 1).value(m_cpu1, 2);
  Sample second(1, "Metric", 200);
  second.value(m_cpu1, 3).value(m_cpu0, 4);
  Sample third(1, "Metric", 300);
  third.value(m_cpu1, 5);
  Sample fourth(1, "Metric", 400);
  fourth.value(m_cpu0, 6).value(m_cpu1, 7);
  for (Sample* sample : {&first, &second, &third, &fourth}) {
    add(*sample);
  }
  EXPECT_EQ(report(),
            "Metric\n"
            "Timestamp, CPU0, CPU1\n"
            "      100,    1,    2\n"
            "      200,    4,    3\n"
            "      300,  N/A,    5\n"
            "      400,    6,    7\n"
            "\n");
}

TEST_F(OpenRawWriter, LaterValueOfAColumnReplacesTheEarlier) {
  Sample sample(1, "Metric", 100);
  sample.value(m_cpu0, 1).value(m_cpu0, 2);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, CPU0\n      100,    2\n\n");
}

TEST_F(OpenRawWriter, ColumnsAreToldApartByIdsAndNotByNames) {
  const pwr::EntityHandle twin = entity(99, "CPU0");
  Sample sample(1, "Metric", 100);
  sample.value(m_cpu0, 1).value(twin, 2);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, CPU0, CPU0\n      100,    1,    2\n\n");
}

TEST_F(OpenRawWriter, EntityOfIdZeroHasAColumn) {
  const pwr::EntityHandle zero = entity(0, "Zero");
  Sample sample(1, "Metric", 100);
  sample.value(zero, 7);
  add(sample);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, Zero\n      100,    7\n      100,    7\n\n");
}

TEST_F(OpenRawWriter, DescriptorOfIdZeroSharesTheColumnOfItsEntity) {
  const pwr::DataDescriptor zero(0, {"Zero", "", ""});
  Sample sample(1, "Metric", 100);
  sample.value(m_cpu0, pwr::Data(1UL), &zero).value(m_cpu0, 2);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, CPU0 Zero\n      100,         2\n\n");
}

TEST_F(OpenRawWriter, KeyIsTheEntitysIdAboveTheDescriptors) {
  // 1 shifted up by 32 and 3 is the key of entity 1 with descriptor 3.
  const pwr::EntityHandle one = entity(1, "One");
  const pwr::EntityHandle same = entity((std::uint64_t{1} << 32) + 3, "Same");
  Sample sample(1, "Metric", 100);
  sample.value(one, pwr::Data(1UL), &m_c6).value(same, 2);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, One C6\n      100,      2\n\n");
}

/// An entity whose class has a qualified name of its own.
class NamedEntity : public pwr::EntityHandle {
 public:
  NamedEntity() : EntityHandle(50, {"plain", "", ""}, nullptr) {}
  std::string getQualifiedName() const override { return "special"; }
};

TEST_F(OpenRawWriter, DeclaredColumnBearsTheNameOfTheEntitysClass) {
  const NamedEntity named;
  Sample sample(1, "Metric", 100);
  sample.declare(&named).value(named, 1);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, special\n      100,       1\n\n");
}

TEST_F(OpenRawWriter, LateColumnBearsThePlainEntitysName) {
  const NamedEntity named;
  Sample sample(1, "Metric", 100);
  sample.value(named, 1);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, plain\n      100,     1\n\n");
}

TEST_F(OpenRawWriter, DeclaredPairWithoutEntityMakesNoColumn) {
  Sample sample(1, "Metric", 100);
  sample.declare(nullptr).declare(nullptr, &m_c6).declare(&m_cpu0).value(m_cpu0, 1);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, CPU0\n      100,    1\n\n");
}

TEST_F(OpenRawWriter, PairDeclaredTwiceMakesOneColumn) {
  Sample sample(1, "Metric", 100);
  sample.declare(&m_cpu0).declare(&m_cpu0).value(m_cpu0, 1);
  add(sample);
  EXPECT_EQ(report(), "Metric\nTimestamp, CPU0\n      100,    1\n\n");
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
