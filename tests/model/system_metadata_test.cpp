#include "host/system_metadata.h"

#include <gtest/gtest.h>

namespace {

TEST(SystemMetadata, DurationIsTicksByTheFrequency) {
  pwr::SystemMetadata metadata;
  metadata.m_timestampFrequency = 2.0F;
  metadata.m_firstTimestamp = 1000000;
  metadata.m_lastTimestamp = 6000000;
  EXPECT_EQ(metadata.getCollectionDurationSec(), 2.5);
}

TEST(SystemMetadata, DurationDividesInDoublesByTheNarrowFrequency) {
  pwr::SystemMetadata metadata;
  metadata.m_timestampFrequency = 2.4F;
  metadata.m_lastTimestamp = 1000000001;
  // The float next to 2.4 is 2.400000095367431640625.
  EXPECT_EQ(metadata.getCollectionDurationSec(), 1000000001.0 / 2400000.095367431640625);
}

TEST(SystemMetadata, DurationOfAClockThatWrappedAroundIsPositive) {
  pwr::SystemMetadata metadata;
  metadata.m_timestampFrequency = 1.0F;
  metadata.m_firstTimestamp = ~std::uint64_t{0} - 499999;
  metadata.m_lastTimestamp = 500000;
  EXPECT_EQ(metadata.getCollectionDurationSec(), 1.0);
}

TEST(SystemMetadata, DurationWithAnUnknownFrequencyIsZero) {
  pwr::SystemMetadata metadata;
  metadata.m_lastTimestamp = 6000000;
  EXPECT_EQ(metadata.getCollectionDurationSec(), 0.0);
}

TEST(SystemMetadata, DurationThatWasToldOverrulesTheTimestamps) {
  pwr::SystemMetadata metadata;
  metadata.m_timestampFrequency = 1.0F;
  metadata.m_lastTimestamp = 6000000;
  metadata.m_collectionDurationSec = 0.25;
  EXPECT_EQ(metadata.getCollectionDurationSec(), 0.25);
}

TEST(SystemMetadata, TextsAreTheSameForAnyArgument) {
  pwr::SystemMetadata metadata;
  metadata.m_collectionStartTime = "start";
  metadata.m_cpuNativeModelName = "native";
  metadata.m_cpuCodeName = "code";
  metadata.m_pchDeviceNames = "hubs";
  EXPECT_EQ(metadata.getCollectionStartTime(), "start");
  EXPECT_EQ(metadata.getCPUNativeModelName(0), "native");
  EXPECT_EQ(metadata.getCPUNativeModelName(77), "native");
  EXPECT_EQ(metadata.getFormattedCPUCodeName(), "code");
  EXPECT_EQ(metadata.getFormattedPCHDeviceNamesStr("any"), "hubs");
}

}  // namespace
