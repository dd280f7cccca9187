#include "qumetra/run/order_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OrderFile : public ::testing::Test {
 protected:
  pwr::MetricOrder read(const std::string& text) {
    writeFile(m_path, text);
    return readOrderFile(m_path);
  }

  /// What is wrong with a file of that text, without its path.
  std::string fault(const std::string& text) {
    try {
      read(text);
    } catch (const OrderFileError& error) {
      const std::string what = error.what();
      EXPECT_EQ(0U, what.find(m_path)) << what;
      return what.substr(m_path.size());
    }
    return "no fault";
  }

  TempDir m_directory;
  std::string m_path = m_directory.file("order.conf");
};

TEST_F(OrderFile, FeaturesAndMetricsComeInTheOrderOfTheFile) {
  const pwr::MetricOrder order = read("[b]\nsecond\nfirst\n[a]\nthird, with comma\n");
  EXPECT_THAT(order.featureOrder, ElementsAre("b", "a"));
  EXPECT_THAT(order.metricOrder.at("b"), ElementsAre("second", "first"));
  EXPECT_THAT(order.metricOrder.at("a"), ElementsAre("third, with comma"));
  EXPECT_THAT(order.featurePrefixes, IsEmpty());
}

TEST_F(OrderFile, CommentsBlanksAndCarriageReturnsDoNotCount) {
  const pwr::MetricOrder order = read("# why\r\n\r\n  [ a ]\t\r\n  CPU Time \r\n");
  EXPECT_THAT(order.featureOrder, ElementsAre("a"));
  EXPECT_THAT(order.metricOrder.at("a"), ElementsAre("CPU Time"));
}

TEST_F(OrderFile, FileWithoutAFeatureIsAFault) {
  constexpr const char* kFault = ": names no feature; expected [FEATURE] and metrics below it";
  EXPECT_EQ(kFault, fault(""));
  EXPECT_EQ(kFault, fault("# nothing yet\n\n"));
}

TEST_F(OrderFile, FeatureWithoutMetricsIsFine) {
  EXPECT_THAT(read("[a]\n").featureOrder, ElementsAre("a"));
}

TEST_F(OrderFile, LastLineNeedsNoEnd) {
  EXPECT_THAT(read("[a]\nx").metricOrder.at("a"), ElementsAre("x"));
}

TEST_F(OrderFile, MetricBeforeTheFirstFeatureIsAFault) {
  EXPECT_EQ(":2: metric \"x\" belongs to no feature; expected [FEATURE] before it",
            fault("# c\nx\n[a]\n"));
}

TEST_F(OrderFile, UnclosedOrEmptyBracketsAreFaults) {
  EXPECT_EQ(":1: \"[a\" is no feature; expected [NAME]", fault("[a\n"));
  EXPECT_EQ(":1: \"[\" is no feature; expected [NAME]", fault("[\n"));
  EXPECT_EQ(":1: \"[ ]\" is no feature; expected [NAME]", fault("[ ]\n"));
}

TEST_F(OrderFile, FeatureNamedTwiceIsAFault) {
  EXPECT_EQ(":3: feature \"a\" is named twice; expected once", fault("[a]\n[b]\n[a]\n"));
}

TEST_F(OrderFile, MetricNamedTwiceInAFeatureIsAFaultButNotInTwo) {
  EXPECT_EQ(":3: metric \"x\" is named twice; expected once", fault("[a]\nx\nx\n"));
  EXPECT_EQ("no fault", fault("[a]\nx\n[b]\nx\n"));
}

TEST_F(OrderFile, MissingFileAndFolderAreTold) {
  EXPECT_THROW(readOrderFile(m_directory.file("missing")), OrderFileError);
  try {
    readOrderFile(m_directory.path().string());
    FAIL() << "a folder was read";
  } catch (const OrderFileError& error) {
    EXPECT_EQ(m_directory.path().string() + ": Is a directory", error.what());
  }
}

}  // namespace
}  // namespace qumetra::test
