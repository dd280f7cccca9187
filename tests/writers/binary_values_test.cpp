// Durations and values of binary samples, by the kinds of metric and value.
#include "tests/writers/binary_fixture.h"

namespace qumetra::test {
namespace {

using pwr::Data;
using pwr::Metric;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

// Single-precision numbers as they stand in the file.
constexpr const char* k0 = "00 00 00 00";
constexpr const char* k1 = "00 00 80 3f";
constexpr const char* k2 = "00 00 00 40";
constexpr const char* k2Half = "00 00 20 40";
constexpr const char* k3 = "00 00 40 40";

std::string both(const std::string& duration, const std::string& value) {
  return duration + " | " + value;
}

constexpr const char* kWarning = "WARNING: Binary writer plugin failed to retrieve descriptor\n";

/// A host handle that claims to be a descriptor and is none.
class FalseDescriptor : public pwr::DataHandle {
 public:
  FalseDescriptor() : DataHandle(99, {"false", "", ""}, kDescriptorType) {}
};

class BinaryValues : public BinaryResult {
 protected:
  void SetUp() override { start(); }

  /// What a metric of this type makes of a value that covers `ticks`.
  std::string written(std::uint64_t type, Data value, std::uint64_t ticks = 13) {
    return written(nullptr, type, std::move(value), ticks);
  }
  std::string written(const pwr::Quantity* quantity, std::uint64_t type, Data value,
                      std::uint64_t ticks = 13) {
    BinaryMetric metric(7, static_cast<Metric::MetricType>(type));
    metric.metric.quantity = quantity;
    metric.value(m_cpu0, std::move(value), ticks);
    EXPECT_EQ(add(metric), 0);
    return durationAndValue();
  }
};

TEST_F(BinaryValues, DurationIsInWholeMicroseconds) {
  EXPECT_EQ(written(Metric::SAMPLED_DELTA, Data(2.5)), both(k3, k2Half));
}

TEST_F(BinaryValues, SampledValueWithoutQuantityHasNoDuration) {
  EXPECT_EQ(written(Metric::SAMPLED_VALUE, Data(2.5)), both(k1, k2Half));
}

TEST_F(BinaryValues, SampledRateHasNoDuration) {
  EXPECT_EQ(written(&m_rate, Metric::SAMPLED_VALUE, Data(2.5)), both(k1, k2Half));
}

TEST_F(BinaryValues, SampledValueOfAnyOtherQuantityHasItsDuration) {
  EXPECT_EQ(written(&m_power, Metric::SAMPLED_VALUE, Data(2.5)), both(k3, k2Half));
}

TEST_F(BinaryValues, EventIsOneWithADurationOfOne) {
  EXPECT_EQ(written(Metric::TRACED_EVENT, Data(2.5)), both(k1, k1));
}

TEST_F(BinaryValues, EventOfARateIsOneTooSinceQuantitiesMatterToSampledValuesOnly) {
  EXPECT_EQ(written(&m_power, Metric::TRACED_EVENT, Data(2.5)), both(k1, k1));
}

TEST_F(BinaryValues, TransitionIsWorthItsDurationInMicroseconds) {
  EXPECT_EQ(written(Metric::TRACED_VALUE_TRANSITION, Data(2.5)), both(k3, k3));
}

TEST_F(BinaryValues, TransitionOfARateHasItsDuration) {
  EXPECT_EQ(written(&m_rate, Metric::TRACED_VALUE_TRANSITION, Data(2.5)), both(k3, k3));
}

TEST_F(BinaryValues, ResidencyIsScaledFromTicksToMicroseconds) {
  EXPECT_EQ(written(Metric::SAMPLED_RESIDENCY, Data(10UL)), both(k3, k2Half));
}

TEST_F(BinaryValues, ResidencyRangeIsItsLowEndScaled) {
  EXPECT_EQ(written(Metric::SAMPLED_RESIDENCY, Data::fromIntRange({8, 9})), both(k3, k2));
}

TEST_F(BinaryValues, ResidencyOfAHandleIsZero) {
  EXPECT_EQ(written(Metric::SAMPLED_RESIDENCY, Data::fromHandle(&m_c6)), both(k3, k0));
}

TEST_F(BinaryValues, SignedNumberIsTakenAsReal) {
  EXPECT_EQ(written(Metric::SAMPLED_DELTA, Data::fromInt(-2)), both(k3, "00 00 00 c0"));
}

TEST_F(BinaryValues, DeltaRangeIsItsLowEnd) {
  EXPECT_EQ(written(Metric::SAMPLED_DELTA, Data::fromUIntRange({2, 9})), both(k3, k2));
}

TEST_F(BinaryValues, DeltaOfAHandleIsZero) {
  EXPECT_EQ(written(Metric::SAMPLED_DELTA, Data::fromHandle(&m_c6)), both(k3, k0));
}

TEST_F(BinaryValues, DeltaOfANullHandleIsZero) {
  EXPECT_EQ(written(Metric::SAMPLED_DELTA, Data::fromHandle(nullptr)), both(k3, k0));
}

TEST_F(BinaryValues, DeltaOfATextIsZero) {
  EXPECT_EQ(written(Metric::SAMPLED_DELTA, Data(std::string("x"))), both(k3, k0));
}

TEST_F(BinaryValues, TypeAboveTheKnownOnesIsReadAsADelta) {
  EXPECT_EQ(written(5, Data::fromRealRange({2.5, 9})), both(k3, k2Half));
}

TEST_F(BinaryValues, TypeIsComparedInFullWhereValuesAreRead) {
  // The low byte says sampled value, which would have no duration.
  EXPECT_EQ(written(0x102, Data(2.5)), both(k3, k2Half));
}

TEST_F(BinaryValues, SampledRangeIsItsLowEnd) {
  EXPECT_EQ(written(Metric::SAMPLED_VALUE, Data::fromRealRange({2.5, 9})), both(k1, k2Half));
}

TEST_F(BinaryValues, SampledTextIsWorthItsDuration) {
  EXPECT_EQ(written(&m_power, Metric::SAMPLED_VALUE, Data(std::string("on"))), both(k3, k3));
}

TEST_F(BinaryValues, SampledDescriptorIsWorthItsDuration) {
  EXPECT_EQ(written(&m_power, Metric::SAMPLED_VALUE, Data::fromHandle(&m_c6)), both(k3, k3));
}

TEST_F(BinaryValues, SampledHandleOfAnotherKindIsZero) {
  EXPECT_EQ(written(&m_power, Metric::SAMPLED_VALUE, Data::fromHandle(&m_cpu1)), both(k3, k0));
}

TEST_F(BinaryValues, SampledValueOfNoKindIsZero) {
  EXPECT_EQ(written(Metric::SAMPLED_VALUE, Data::fromTag(200)), both(k1, k0));
}

TEST_F(BinaryValues, NumbersBeyondSinglePrecisionBecomeInfinite) {
  EXPECT_EQ(written(Metric::SAMPLED_VALUE, Data(1e300)), both(k1, "00 00 80 7f"));
}

TEST_F(BinaryValues, LengthOfATickIsDividedInSinglePrecision) {
  // One 41st is 0x3cc7ce0c in single precision, a little too small, so that 41 ticks of 41 MHz last
  // less than the microsecond that they last in double precision.
  m_metadata.m_timestampFrequency = 41;
  sendSystem();
  EXPECT_EQ(written(Metric::TRACED_VALUE_TRANSITION, Data(1.0), 41), both(k0, k0));
}

TEST_F(BinaryValues, UnknownFrequencyGivesADefinedDuration) {
  m_metadata.m_timestampFrequency = 0;
  sendSystem();
  // Infinity has no integer: 0. No ticks of infinite length are no number: 2 to the 63rd.
  BinaryMetric metric(7, Metric::TRACED_VALUE_TRANSITION);
  metric.value(m_cpu0, Data(1.0), 5).value(m_cpu0, Data(1.0), 0);
  EXPECT_EQ(add(metric), 0);
  const auto samples = finished("04");
  ASSERT_THAT(samples, SizeIs(2));
  EXPECT_EQ(samples[0].substr(33, 11), k0);
  EXPECT_EQ(samples[1].substr(33, 11), "00 00 00 5f");
}

TEST_F(BinaryValues, MetricBeforeTheSystemMessageHasTicksOfNoLength) {
  BinaryWriter writer;
  ASSERT_EQ(writer.init(m_directory.file("run"), false), 0);
  BinaryMetric metric(7, Metric::SAMPLED_DELTA);
  metric.value(m_cpu0, Data(2.5), 13);
  EXPECT_EQ(writer.writeMessage(metric.message()), 0);
  EXPECT_EQ(writer.fini(), 0);
  const auto samples = recordsOfType("04", "run.qmbin");
  ASSERT_THAT(samples, SizeIs(1));
  EXPECT_EQ(samples[0].substr(33, 11), k0);
}

class FailingElement : public BinaryResult {
 protected:
  void SetUp() override { start(); }

  /// Sends a good element, `bad` and another good one.
  int send(Data bad) {
    BinaryMetric metric(7, Metric::SAMPLED_VALUE);
    metric.value(m_cpu0, Data(1.0)).value(m_cpu1, std::move(bad), 0, &m_c6);
    metric.value(m_cpu0, Data(2.5));
    return add(metric);
  }

  FalseDescriptor m_false;
};

TEST_F(FailingElement, HandleThatClaimsToBeADescriptorWarnsAndEndsTheMessage) {
  EXPECT_EQ(send(Data::fromHandle(&m_false)), 1);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, kWarning)));
  EXPECT_THAT(finished("04"), SizeIs(1));
}

TEST_F(FailingElement, NullHandleWarnsAndEndsTheMessage) {
  EXPECT_EQ(send(Data::fromHandle(nullptr)), 1);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, kWarning)));
  EXPECT_THAT(finished("04"), SizeIs(1));
}

TEST_F(FailingElement, WarnsOnlyWhereWarningsShow) {
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  m_log.environment().enabledTags.add("text-writer-plugin");
  EXPECT_EQ(send(Data::fromHandle(nullptr)), 1);
  EXPECT_THAT(m_log.warnings(), IsEmpty());
}

TEST_F(FailingElement, KeepsItsDescriptorAndNotItsName) {
  send(Data::fromHandle(nullptr));
  EXPECT_THAT(finished("02"), ElementsAre("06 00 02 01 00 01 00 05 00"));
  // "", "M", "SAMPLED_VALUE", "CPU0"; "" is the group. Then the descriptor's "C6", whose attribute
  // text is the empty one of the group.
  const auto strings = recordsOfType("00", "run.qmbin");
  EXPECT_EQ(strings.back(), "06 00 00 05 00 02 00 43 36");
}

TEST_F(FailingElement, InFrontKeepsTheMetricUntold) {
  BinaryMetric metric(7, Metric::SAMPLED_VALUE);
  metric.value(m_cpu0, Data::fromHandle(nullptr));
  EXPECT_EQ(add(metric), 1);
  EXPECT_THAT(finished("03"), IsEmpty());
}

}  // namespace
}  // namespace qumetra::test
