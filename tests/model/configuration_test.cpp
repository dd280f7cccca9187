#include "host/configuration.h"

#include <deque>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Names = std::deque<std::string>;

class MetricOrderTest : public testing::Test {
 protected:
  MetricOrderTest() { parser.setOrder({{"b", "a"}, {"pre"}, {{"f", {"m2", "m1"}}, {"none", {}}}}); }
  ~MetricOrderTest() override { parser.setOrder({}); }

  pwr::WriterInterfaceConfigFileParser& parser = *pwr::WriterInterfaceConfigFileParser::instance();
  Names names{"former"};
};

TEST_F(MetricOrderTest, OrdersReplaceWhatTheDequeHolds) {
  EXPECT_TRUE(parser.getFeatureOrder(names));
  EXPECT_EQ(names, (Names{"b", "a"}));
  EXPECT_TRUE(parser.getAllFeaturePrefixes(names));
  EXPECT_EQ(names, (Names{"pre"}));
  EXPECT_TRUE(parser.getMetricOrderForFeature(names, "f"));
  EXPECT_EQ(names, (Names{"m2", "m1"}));
}

TEST_F(MetricOrderTest, UnknownFeatureHasNoOrder) {
  EXPECT_FALSE(parser.getMetricOrderForFeature(names, "unknown"));
  EXPECT_EQ(names, Names{});
}

TEST_F(MetricOrderTest, EmptyListsHaveNoOrder) {
  EXPECT_FALSE(parser.getMetricOrderForFeature(names, "none"));
  parser.setOrder({});
  names = {"former"};
  EXPECT_FALSE(parser.getFeatureOrder(names));
  EXPECT_EQ(names, Names{});
  names = {"former"};
  EXPECT_FALSE(parser.getAllFeaturePrefixes(names));
  EXPECT_EQ(names, Names{});
}

TEST_F(MetricOrderTest, ParserIsOneObject) {
  EXPECT_EQ(pwr::WriterInterfaceConfigFileParser::instance(), &parser);
}

TEST(QMConfigFileParser, PlacesAreFoundByAllThreeNames) {
  auto& parser = *pwr::QMConfigFileParser::instance();
  parser.addAggrTelemCounterInfo("f", "c", "x", {.guid = 1});
  parser.addAggrTelemCounterInfo("f", "c", "x", {.guid = 2});
  parser.addAggrTelemCounterInfo("f", "c", "y", {.guid = 3});
  std::vector<pwr::AggrTelemCounterInfo> places;
  parser.getAggrTelemCounterInfo("f", "c", "x", places);
  ASSERT_EQ(places.size(), 2U);
  EXPECT_EQ(places[0].guid, 1U);
  EXPECT_EQ(places[1].guid, 2U);
}

TEST(QMConfigFileParser, UnknownCounterHasNoPlaces) {
  std::vector<pwr::AggrTelemCounterInfo> places(3);
  pwr::QMConfigFileParser::instance()->getAggrTelemCounterInfo("f", "c", "unknown", places);
  EXPECT_TRUE(places.empty());
}

}  // namespace
