#include <sstream>

#include <gtest/gtest.h>

#include "host/environment.h"
#include "host/logger.h"

namespace {

class PluginEnvironmentTest : public testing::Test {
 protected:
  LogSink error{nullptr};
  LogSink warning{nullptr};
  std::ostringstream quiet;
  PluginEnvironment environment{error, warning, quiet};
};

TEST_F(PluginEnvironmentTest, ShowsErrorsUnlessToldOtherwise) {
  EXPECT_EQ(environment.verbosity, 1U);
  EXPECT_TRUE(environment.enabledTags.empty());
  EXPECT_TRUE(environment.notes.empty());
}

TEST_F(PluginEnvironmentTest, HasTheSinksItWasMadeFrom) {
  EXPECT_EQ(&environment.errorLog, &error);
  EXPECT_EQ(&environment.warningLog, &warning);
  EXPECT_EQ(&environment.quietLog, &quiet);
}

TEST_F(PluginEnvironmentTest, KeepsOneOutputHandlePerFileName) {
  pwr::Logger* const first = environment.getFileOutputHandle("a");
  EXPECT_NE(environment.getFileOutputHandle("b"), first);
  EXPECT_EQ(environment.getFileOutputHandle("a"), first);
}

TEST_F(PluginEnvironmentTest, EmptyNameHasAHandleToo) {
  pwr::Logger* const nameless = environment.getFileOutputHandle("");
  ASSERT_NE(nameless, nullptr);
  EXPECT_EQ(nameless->finish(), 0);
  EXPECT_EQ(environment.getFileOutputHandle(nullptr), nameless);
}

TEST(GlobalPluginEnvironment, IsNullUntilAHostSetsIt) { EXPECT_EQ(g_pluginEnvironment, nullptr); }

}  // namespace
