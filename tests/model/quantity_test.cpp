#include "host/quantity.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "host/handles.h"

namespace {

using pwr::Quantity;

std::string titleOf(const Quantity& quantity) {
  std::string title = "what was there";
  quantity.toTitleString(title);
  return title;
}

TEST(Quantity, GivesWhatItWasMadeFrom) {
  const Quantity energy(12, 3, "Energy", "mJ", "Energy used");
  EXPECT_EQ(energy.getId(), 12U);
  EXPECT_EQ(energy.toQuantity(), 3U);
  EXPECT_EQ(energy.toQuantityString(), "Energy");
  EXPECT_EQ(energy.toUnitsString(), "mJ");
  EXPECT_EQ(titleOf(energy), "Energy used");
}

TEST(Quantity, RateConversionGivesTheRateAndItsFactor) {
  const Quantity power(2, 9, "Power", "mW", "Power");
  Quantity energy(1, 3, "Energy", "mJ", "Energy");
  energy.setRateConversion(&power, 0.5);
  const Quantity* rate = nullptr;
  double factor = 0;
  EXPECT_EQ(energy.getRateConversion(rate, factor), 0);
  EXPECT_EQ(rate, &power);
  EXPECT_EQ(factor, 0.5);
}

TEST(Quantity, WithoutARateTheConversionFailsWithNullAndOne) {
  const Quantity power(2, 9, "Power", "mW", "Power");
  const Quantity* rate = &power;
  double factor = 7;
  EXPECT_EQ(power.getRateConversion(rate, factor), 1);
  EXPECT_EQ(rate, nullptr);
  EXPECT_EQ(factor, 1.0);
}

TEST(Quantity, RateThatIsTakenAwayLeavesNoFactor) {
  Quantity energy(1, 3, "Energy", "mJ", "Energy");
  energy.setRateConversion(&energy, 0.5);
  energy.setRateConversion(nullptr, 0.5);
  const Quantity* rate = &energy;
  double factor = 7;
  EXPECT_EQ(energy.getRateConversion(rate, factor), 1);
  EXPECT_EQ(rate, nullptr);
  EXPECT_EQ(factor, 1.0);
}

TEST(Quantity, TimeIsInSecondsAndHasNoRate) {
  const Quantity& time = *Quantity::time();
  EXPECT_EQ(time.toQuantity(), 1U);
  EXPECT_EQ(time.toQuantityString(), "Time");
  EXPECT_EQ(time.toUnitsString(), "s");
  EXPECT_EQ(titleOf(time), "Time (s)");
  const Quantity* rate = nullptr;
  double factor = 0;
  EXPECT_EQ(time.getRateConversion(rate, factor), 1);
}

TEST(Quantity, TimeIsOneObjectAndDrawsNoSecondId) {
  const Quantity* const time = Quantity::time();
  const auto before = pwr::Attribute::create("a", nullptr, pwr::AttributeType::Info)->getId();
  EXPECT_EQ(Quantity::time(), time);
  const auto after = pwr::Attribute::create("b", nullptr, pwr::AttributeType::Info)->getId();
  EXPECT_EQ(after, before + 1);
}

/// Ends the process with 0 when ids are drawn one by one, from the first reserved one up.
[[noreturn]] void drawIdsAndExit() {
  const auto attribute = pwr::Attribute::create("a", nullptr, pwr::AttributeType::Info)->getId();
  const auto time = Quantity::time()->getId();
  const auto descriptor = pwr::DataDescriptor::create({"d", "d"})->getId();
  const bool inOrder = attribute == 0x60000000U && time == 0x60000001U && descriptor == 0x60000002U;
  std::_Exit(inOrder ? 0 : 1);
}

TEST(QuantityDeathTest, FirstTimeDrawsAnIdInItsTurnFromTheFirstReservedOneUp) {
  // The process of a threadsafe death test starts anew, so nothing has been drawn in it.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(drawIdsAndExit(), testing::ExitedWithCode(0), "");
}

}  // namespace
