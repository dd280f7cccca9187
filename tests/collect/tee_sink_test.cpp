#include "qumetra/collect/tee_sink.h"

#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/handles.h"
#include "qumetra/collect/finite_values.h"
#include "qumetra/model/model.h"
#include "tests/collect/keeping_sink.h"

namespace qumetra::test {
namespace {

using testing::SizeIs;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(FiniteValue, NumbersTextsAndNothingAreFinite) {
  EXPECT_TRUE(isFinite(pwr::Data()));
  EXPECT_TRUE(isFinite(pwr::Data(1UL)));
  EXPECT_TRUE(isFinite(pwr::Data(std::numeric_limits<double>::max())));
  EXPECT_TRUE(isFinite(pwr::Data::fromRealRange({-1, 1})));
  EXPECT_TRUE(isFinite(pwr::Data(std::string("nan"))));
  EXPECT_TRUE(isFinite(pwr::Data::fromHandle(nullptr)));
}

TEST(FiniteValue, NanAndInfinitiesAreNotNorRangesWithThem) {
  EXPECT_FALSE(isFinite(pwr::Data(kNaN)));
  EXPECT_FALSE(isFinite(pwr::Data(kInfinity)));
  EXPECT_FALSE(isFinite(pwr::Data(-kInfinity)));
  EXPECT_FALSE(isFinite(pwr::Data::fromRealRange({0, kNaN})));
  EXPECT_FALSE(isFinite(pwr::Data::fromRealRange({-kInfinity, 0})));
}

class TeeSinkTest : public testing::Test {
 protected:
  /// Delivers a sample of these values at a time.
  void deliver(std::uint64_t timestamp, const std::vector<double>& values) {
    std::vector<pwr::DataElement> elements;
    for (const double value : values) {
      elements.emplace_back(&m_entity, &m_state, nullptr, pwr::Data(value), 10, nullptr);
    }
    pwr::SampleData data{.timestamp = timestamp, .elements = {}};
    for (const pwr::DataElement& element : elements) {
      data.elements.push_back(&element);
    }
    m_metric.setData(data);
    tee.sample(m_metric);
  }

  Model m_model;
  pwr::EntityHandle& m_entity = m_model.addEntity({.name = "E"});
  pwr::DataDescriptor& m_state = m_model.addDescriptor({.name = "S"});
  pwr::Metric& m_metric = m_model.addMetric();
  KeepingSink first;
  KeepingSink second;
  TeeSink tee{&first, nullptr, &second};
};

TEST_F(TeeSinkTest, EverySinkGetsEverySample) {
  deliver(7, {1.5, 2.5});
  EXPECT_THAT(first.samples, SizeIs(1));
  EXPECT_THAT(second.samples.at(0).elements, SizeIs(2));
  EXPECT_EQ(1U, tee.samples());
  EXPECT_EQ(0U, tee.leftOutValues());
}

TEST_F(TeeSinkTest, ValuesThatAreNotFiniteAreLeftOutAndCounted) {
  deliver(7, {1.5, kNaN, 2.5, -kInfinity});
  ASSERT_THAT(first.samples, SizeIs(1));
  EXPECT_EQ(7U, first.samples[0].timestamp);
  EXPECT_THAT(first.samples[0].elements, SizeIs(2));
  EXPECT_EQ(2U, tee.leftOutValues());
  EXPECT_THAT(m_metric.getData().elements, SizeIs(4)) << "the metric is the collector's";
}

TEST_F(TeeSinkTest, ASampleOfNothingElseIsNotGiven) {
  deliver(7, {kNaN});
  deliver(8, {1});
  EXPECT_THAT(first.samples, SizeIs(1));
  EXPECT_EQ(8U, second.samples.at(0).timestamp);
  EXPECT_EQ(1U, tee.samples());
  EXPECT_EQ(1U, tee.leftOutValues());
}

TEST_F(TeeSinkTest, ASampleThatCameEmptyIsGiven) {
  deliver(7, {});
  EXPECT_THAT(first.samples, SizeIs(1));
  EXPECT_EQ(0U, tee.leftOutValues());
}

}  // namespace
}  // namespace qumetra::test
