// What a continuous run keeps of its samples between flushes.
#include <string>

#include <gtest/gtest.h>

#include "tests/writers/continuous_fixture.h"

namespace {

using pwr::Data;
using pwr::Metric;
using qumetra::test::give;
using qumetra::test::KeptResults;
using Warnings = qumetra::test::RecordingSink::Texts;

class ContinuousSample : public qumetra::test::ContinuousResults {};

TEST_F(ContinuousSample, TickScaleIsDividedInSinglePrecision) {
  m_world.system().m_timestampFrequency = 24.0F;
  EXPECT_EQ(m_writer.writeMessage(m_world.systemMessage()), 0);
  EXPECT_EQ(m_writer.tickScale, static_cast<double>(1.0F / 24.0F));
  EXPECT_NE(m_writer.tickScale, 1.0 / 24.0);
}

TEST_F(ContinuousSample, DurationShowsTheSinglePrecisionOfTheScale) {
  m_world.system().m_timestampFrequency = 24.0F;
  m_writer.writeMessage(m_world.systemMessage());
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  // A division in double would give 100000000.
  give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0), 2'400'000'000)});
  EXPECT_EQ(m_writer.data.back().duration, 100000002.0);
}

TEST_F(ContinuousSample, SystemMessageWithoutMetadataIsRefused) {
  EXPECT_EQ(m_writer.writeMessage(pwr::SystemMessage()), 1);
}

TEST_F(ContinuousSample, MetricBeforeTheSystemMessageHasNoDuration) {
  KeptResults fresh;
  Metric& metric = m_world.metric("M", Metric::SAMPLED_RESIDENCY);
  give(fresh, metric, 5, {m_world.element(m_entity, nullptr, Data(8.0), 250)});
  EXPECT_EQ(fresh.data.back().duration, 0.0);
  EXPECT_EQ(fresh.data.back().value, 0.0);
  EXPECT_EQ(fresh.data.back().timestamp, 5U);
}

TEST_F(ContinuousSample, MetricWithoutElementsKeepsNothing) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  EXPECT_EQ(give(m_writer, metric, 0, {}), 0);
  EXPECT_TRUE(m_writer.data.empty());
  EXPECT_TRUE(m_writer.metadata.empty());
}

TEST_F(ContinuousSample, SampleHasTheQualifiedEntityAndRawTicks) {
  const auto sample = sampleOf(Metric::SAMPLED_DELTA, Data(2.5), m_world.descriptor("C1"));
  EXPECT_EQ(sample.entity, "Package/Core");
  EXPECT_EQ(sample.descriptor, "C1");
  EXPECT_EQ(sample.state, "C1");
  EXPECT_EQ(sample.timestamp, 1000U);
  EXPECT_EQ(sample.duration, 250.0);
  EXPECT_EQ(sample.value, 2.5);
}

TEST_F(ContinuousSample, ElementWithoutDescriptorHasNoState) {
  const auto sample = sampleOf(Metric::SAMPLED_RESIDENCY, Data(2.5));
  EXPECT_EQ(sample.descriptor, "N/A");
  EXPECT_EQ(sample.state, "");
}

TEST_F(ContinuousSample, StateIsTheTextOfTheFirstAttribute) {
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data(1.0), m_world.descriptor("C1", Data(800UL))).state,
            "800");
}

TEST_F(ContinuousSample, AttributeWithoutATextFallsBackToTheName) {
  const Data handle = Data::fromHandle(m_entity);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data(1.0), m_world.descriptor("C1", handle)).state,
            "C1");
}

TEST_F(ContinuousSample, EntryWithoutAnAttributeFallsBackToTheName) {
  pwr::DataDescriptor* descriptor = m_world.descriptor("C1");
  descriptor->addAttributeValue(nullptr, Data(800UL));
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data(1.0), descriptor).state, "C1");
}

TEST_F(ContinuousSample, SampledValueWithAQuantityHasItsDuration) {
  const pwr::Quantity* power = m_world.quantity(4, "Power", "mW");
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data(1.0), nullptr, power).duration, 250.0);
}

TEST_F(ContinuousSample, SampledValueOfARateOrWithoutAQuantityLastsOne) {
  const pwr::Quantity* rate = m_world.quantity(9, "Rate", "1/s");
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data(1.0), nullptr, rate).duration, 1.0);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data(1.0)).duration, 1.0);
}

TEST_F(ContinuousSample, SampledStringIsAStateThatCountsForItsDuration) {
  const pwr::Quantity* power = m_world.quantity(4, "Power", "mW");
  const auto sample =
      sampleOf(Metric::SAMPLED_VALUE, Data(std::string("busy")), m_world.descriptor("C1"), power);
  EXPECT_EQ(sample.state, "busy");
  EXPECT_EQ(sample.value, 250.0);
}

TEST_F(ContinuousSample, SampledDescriptorIsAStateByItsName) {
  const auto sample =
      sampleOf(Metric::SAMPLED_VALUE, Data::fromHandle(m_world.descriptor("C1", Data(800UL))));
  EXPECT_EQ(sample.state, "C1");
  EXPECT_EQ(sample.value, 1.0);
}

TEST_F(ContinuousSample, OtherSampledHandlesCountZero) {
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data::fromHandle(m_entity)).value, 0.0);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data::fromHandle(nullptr)).value, 0.0);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data::fromHandle(nullptr)).value, 0.0);
}

TEST_F(ContinuousSample, RangeCountsItsLowEnd) {
  EXPECT_EQ(sampleOf(Metric::SAMPLED_VALUE, Data::fromIntRange({-3, 4})).value, -3.0);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data::fromUIntRange({3, 4})).value, 3.0);
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data::fromRealRange({0.5, 4})).value, 0.5);
}

TEST_F(ContinuousSample, ResidencyIsScaled) {
  m_world.system().m_timestampFrequency = 2.0F;
  m_writer.writeMessage(m_world.systemMessage());
  EXPECT_EQ(sampleOf(Metric::SAMPLED_RESIDENCY, Data(100UL)).value, 50.0);
}

TEST_F(ContinuousSample, RangeOfAResidencyIsScaledAtItsLowEnd) {
  m_world.system().m_timestampFrequency = 2.0F;
  m_writer.writeMessage(m_world.systemMessage());
  EXPECT_EQ(sampleOf(Metric::SAMPLED_RESIDENCY, Data::fromIntRange({100, 300})).value, 50.0);
}

TEST_F(ContinuousSample, UnknownTypeIsReadAsADelta) {
  const auto type = static_cast<Metric::MetricType>(9);
  const auto sample = sampleOf(type, Data(2.5), m_world.descriptor("C1"));
  EXPECT_EQ(sample.duration, 250.0);
  EXPECT_EQ(sample.value, 2.5);
  EXPECT_EQ(sample.state, "C1");
}

TEST_F(ContinuousSample, TransitionCountsItsDurationUnderItsValue) {
  const auto sample = sampleOf(Metric::TRACED_VALUE_TRANSITION, Data(1.5));
  EXPECT_EQ(sample.state, "1.5");
  EXPECT_EQ(sample.value, 250.0);
}

TEST_F(ContinuousSample, EventCountsOneUnderItsDescriptor) {
  const auto sample =
      sampleOf(Metric::TRACED_EVENT, Data::fromHandle(m_world.descriptor("wake", Data(7UL))));
  EXPECT_EQ(sample.state, "7");
  EXPECT_EQ(sample.value, 1.0);
  EXPECT_EQ(sample.duration, 1.0);
}

TEST_F(ContinuousSample, TracedHandleOfAnotherKindIsItsText) {
  EXPECT_EQ(sampleOf(Metric::TRACED_EVENT, Data::fromHandle(m_entity)).state, "Core");
}

TEST_F(ContinuousSample, TracedFalseDescriptorCostsTheStateOnly) {
  const pwr::Quantity* power = m_world.quantity(4, "Power", "mW");
  const auto sample =
      sampleOf(Metric::TRACED_EVENT, Data::fromHandle(m_world.falseDescriptor()), nullptr, power);
  EXPECT_EQ(sample.state, "");
  EXPECT_EQ(m_log.warnings(),
            (Warnings{{2, "WARNING: Continuous writer plugin failed to retrieve descriptor\n"}}));
}

TEST_F(ContinuousSample, SampledFalseDescriptorFailsTheRestOfTheMessage) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE, m_world.quantity(4, "Power", "mW"));
  EXPECT_EQ(give(m_writer, metric, 0,
                 {m_world.element(m_entity, nullptr, Data(1.0)),
                  m_world.element(m_entity, nullptr, Data::fromHandle(m_world.falseDescriptor())),
                  m_world.element(m_entity, nullptr, Data(2.0))}),
            1);
  EXPECT_EQ(m_writer.data.size(), 1U);
  EXPECT_EQ(m_log.warnings(), (Warnings{{2, "WARNING: Unable to retrieve data descriptor \n"}}));
}

TEST_F(ContinuousSample, MetricWhoseFirstElementFailsIsDescribedByTheNextOne) {
  Metric& metric = m_world.metric("M", Metric::SAMPLED_VALUE);
  const Data bad = Data::fromHandle(m_world.falseDescriptor());
  EXPECT_EQ(give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, bad)}), 1);
  EXPECT_TRUE(m_writer.data.empty());
  EXPECT_TRUE(m_writer.metadata.empty());
  EXPECT_EQ(give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))}), 0);
  EXPECT_EQ(m_writer.metadata.size(), 1U);
}

TEST_F(ContinuousSample, MetricWithoutQuantityIsAWarningOnce) {
  Metric& metric = m_world.metric("Idle", Metric::SAMPLED_DELTA);
  for (int i = 0; i < 2; ++i) {
    give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  }
  EXPECT_EQ(m_log.warnings(), (Warnings{{2, "WARNING: no quantity so no units for Idle?!\n"}}));
  EXPECT_EQ(m_writer.metadata.size(), 1U);
}

TEST_F(ContinuousSample, SecondWriterOfTheProcessGetsNoDescription) {
  KeptResults other;
  Metric& metric = m_world.metric("M", Metric::SAMPLED_DELTA);
  give(other, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  give(m_writer, metric, 0, {m_world.element(m_entity, nullptr, Data(1.0))});
  EXPECT_EQ(other.metadata.size(), 1U);
  EXPECT_TRUE(m_writer.metadata.empty());
  EXPECT_EQ(m_writer.data.size(), 1U);
}

TEST_F(ContinuousSample, FrequencyOfZeroHasADefinedDuration) {
  m_world.system().m_timestampFrequency = 0.0F;
  m_writer.writeMessage(m_world.systemMessage());
  EXPECT_EQ(sampleOf(Metric::SAMPLED_DELTA, Data(1.0)).duration, 0.0);
}

}  // namespace
