// The columns of raw text: which there are, in which order and under which titles.
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "tests/writers/raw_writer_fixture.h"

namespace {

using qumetra::test::OpenRawWriter;
using qumetra::test::Sample;

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

}  // namespace
