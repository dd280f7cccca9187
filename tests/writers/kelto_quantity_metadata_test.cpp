// Nodes of quantities and their rates.
#include "tests/writers/kelto_metadata_fixture.h"

namespace {

using qumetra::test::KeltoMetadata;
using qumetra::test::Node;
using ::testing::ElementsAre;

constexpr std::uint64_t kNone = 0xFFFFFFFF;

TEST_F(KeltoMetadata, NoQuantityIsMinusOne) {
  long uid = 0;
  EXPECT_EQ(m_writer.handleQuantityMetadata(nullptr, uid), 0);
  EXPECT_EQ(uid, -1);
}

TEST_F(KeltoMetadata, QuantityTellsNameUnitsAndMultiplier) {
  pwr::Quantity& rate = quantity("Rate", "W/s", 9);
  pwr::Quantity& power = quantity("Power", "W", 3);
  power.setRateConversion(&rate, 0.1234567);
  long uid = 0;
  m_writer.handleQuantityMetadata(&power, uid);
  const Node node = nodes("quantity").back();
  EXPECT_EQ(node.longName, "Power|W|0.123457");
  EXPECT_EQ(node.shortName, "Power");
  EXPECT_EQ(node.description, "quantity_type");
  EXPECT_EQ(node.value, 3U);
  EXPECT_EQ(node.uid, power.getId());
  EXPECT_EQ(node.parent, rate.getId());
  EXPECT_EQ(uid, static_cast<long>(power.getId()));
}

TEST_F(KeltoMetadata, RateStandsBeforeWhatPointsAtIt) {
  pwr::Quantity& rate = quantity("Rate", "W/s");
  pwr::Quantity& power = quantity("Power", "W");
  power.setRateConversion(&rate, 1);
  long uid = 0;
  m_writer.handleQuantityMetadata(&power, uid);
  ASSERT_EQ(nodes("quantity").size(), 2U);
  EXPECT_EQ(nodes("quantity")[0].shortName, "Rate");
  EXPECT_EQ(nodes("quantity")[0].parent, kNone);
  EXPECT_THAT(m_log.warnings(),
              ElementsAre(std::pair(2, "WARNING: Rate Quantity not specified for Rate\n")));
}

TEST_F(KeltoMetadata, PercentSignAloneBecomesAWord) {
  long uid = 0;
  m_writer.handleQuantityMetadata(&quantity("A", "%"), uid);
  m_writer.handleQuantityMetadata(&quantity("B", "%/s"), uid);
  EXPECT_EQ(nodes("quantity")[0].longName, "A|percent|1");
  EXPECT_EQ(nodes("quantity")[1].longName, "B|%/s|1");
}

TEST_F(KeltoMetadata, QuantityTypeIsTheCodeFrom1To13) {
  EXPECT_EQ(m_writer.getKeltoQuantityType(0), 0U);
  EXPECT_EQ(m_writer.getKeltoQuantityType(1), 1U);
  EXPECT_EQ(m_writer.getKeltoQuantityType(13), 13U);
  EXPECT_EQ(m_writer.getKeltoQuantityType(14), 0U);
}

TEST_F(KeltoMetadata, MissingRateIsToldAtEachUse) {
  const pwr::Quantity& power = quantity("Power", "W");
  long uid = 0;
  m_writer.handleQuantityMetadata(&power, uid);
  m_writer.handleQuantityMetadata(&power, uid);
  EXPECT_EQ(m_log.warnings().size(), 2U);
  EXPECT_EQ(nodes("quantity").size(), 1U);
}

TEST_F(KeltoMetadata, ChangedRateIsWrittenAnew) {
  pwr::Quantity& power = quantity("Power", "W");
  long uid = 0;
  m_writer.handleQuantityMetadata(&power, uid);
  power.setRateConversion(&quantity("Rate", "W/s"), 2);
  m_writer.handleQuantityMetadata(&power, uid);
  ASSERT_EQ(nodes("quantity").size(), 3U);
  EXPECT_EQ(nodes("quantity")[2].longName, "Power|W|2");
}

TEST_F(KeltoMetadata, RatesInACircleEndBeforeTheyRepeat) {
  pwr::Quantity& a = quantity("A", "a");
  pwr::Quantity& b = quantity("B", "b");
  a.setRateConversion(&b, 1);
  b.setRateConversion(&a, 1);
  long uid = 0;
  EXPECT_EQ(m_writer.handleQuantityMetadata(&a, uid), 0);
  ASSERT_EQ(nodes("quantity").size(), 2U);
  EXPECT_EQ(nodes("quantity")[0].shortName, "B");
  EXPECT_EQ(nodes("quantity")[0].parent, kNone);
  EXPECT_EQ(nodes("quantity")[1].parent, b.getId());
  EXPECT_EQ(m_writer.handleQuantityMetadata(&b, uid), 0);
  EXPECT_EQ(m_writer.handleQuantityMetadata(&a, uid), 0);
}

TEST_F(KeltoMetadata, LongChainOfRatesIsWritten) {
  pwr::Quantity* first = &quantity("Q", "u");
  for (int i = 0; i < 50'000; ++i) {
    pwr::Quantity& next = quantity("Q", "u");
    next.setRateConversion(first, 1);
    first = &next;
  }
  long uid = 0;
  EXPECT_EQ(m_writer.handleQuantityMetadata(first, uid), 0);
  EXPECT_EQ(m_writer.quantityIds.size(), 50'001U);
}

TEST_F(KeltoMetadata, FailedRateFailsWhatPointsAtIt) {
  const std::string name(200, 'q');
  pwr::Quantity& rate = quantity(name, "u", 5);
  pwr::Quantity& power = quantity("Power", "W", 3);
  power.setRateConversion(&rate, 0.5);
  long uid = 0;
  EXPECT_EQ(m_writer.handleQuantityMetadata(&power, uid), 1);
  const std::vector<std::string> texts = warnings();
  const std::string rateId = std::to_string(rate.getId());
  EXPECT_EQ(texts[texts.size() - 2], "Failed to write quantity metadata name:'" + name +
                                         "' units:'u' type:'5' uid:'" + rateId +
                                         "' rate uid:'-1' multiplier:'1.000000'.\n");
  EXPECT_EQ(texts.back(),
            "Failed to handle rate quantity metadata for quantity name:'Power' units:'W' type:'3' "
            "uid:'" +
                std::to_string(power.getId()) + "' rate uid:'" + rateId +
                "' multiplier:'0.500000'.\n");
}

}  // namespace
