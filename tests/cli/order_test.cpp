// The order of metrics in reports, as users give it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/tool.h"

namespace qumetra::test {
namespace {

using ::testing::HasSubstr;

/// Two tables of the feature "f", seen in the order A, B; the recording itself asks for B first.
class Order : public ::testing::Test {
 protected:
  std::vector<std::string> report(const Tool::Arguments& more) {
    Tool::Arguments arguments = {"replay", m_recording, "-r", "sum"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ToolResult result = m_tool.run(arguments);
    EXPECT_EQ(0, result.status) << result.err;
    const std::string text = readFile(m_tool.file("qumetra.csv"));
    return text.find("Table A") < text.find("Table B") ? std::vector<std::string>{"A", "B"}
                                                       : std::vector<std::string>{"B", "A"};
  }

  Tool m_tool;
  std::string m_recording = m_tool.write(
      "r.qmrec",
      {R"({"recording":{"version":1}})",
       R"({"config":{"featureOrder":["f"],"metricOrder":{"f":["b","a"]}}})",
       R"({"handle":{"ref":"v","name":"V","type":1}})",
       R"({"container":{"metricId":1,"containerName":"A","featureName":"f","metricName":"a"}})",
       R"({"container":{"metricId":2,"containerName":"B","featureName":"f","metricName":"b"}})",
       R"({"table":{"id":1,"metricId":1,"title":"Table A","shared":["v"]}})",
       R"({"table":{"id":2,"metricId":2,"title":"Table B","shared":["v"]}})"});
  std::string m_order = m_tool.write("order.conf", {"[f]", "a", "b"});
};

TEST_F(Order, OfTheRecordingHoldsWithoutAnother) {
  EXPECT_THAT(report({}), ::testing::ElementsAre("B", "A"));
}

TEST_F(Order, OfTheUserGoesBeforeTheRecordings) {
  EXPECT_THAT(report({"--order", m_order}), ::testing::ElementsAre("A", "B"));
}

TEST_F(Order, FaultIsOneLineAndNothingIsWritten) {
  const std::string bad = m_tool.write("bad.conf", {"a"});
  for (const Tool::Arguments& command :
       {Tool::Arguments{"replay", m_recording}, Tool::Arguments{"collect", "-t", "0.1"}}) {
    Tool::Arguments arguments = command;
    arguments.insert(arguments.end(), {"-r", "sum", "--order", bad});
    const ToolResult result = m_tool.run(arguments);
    EXPECT_EQ(2, result.status);
    EXPECT_EQ(bad + ":1: metric \"a\" belongs to no feature; expected [FEATURE] before it\n",
              result.err);
    EXPECT_THAT(m_tool.files(), ::testing::Not(::testing::Contains("qumetra.csv")));
  }
}

TEST_F(Order, FileWithoutEntriesIsOneLineAndNothingIsWritten) {
  const std::string empty = m_tool.write("empty.conf", {"# later"});
  const ToolResult result = m_tool.run({"replay", m_recording, "-r", "sum", "--order", empty});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ(empty + ": names no feature; expected [FEATURE] and metrics below it\n", result.err);
  EXPECT_THAT(m_tool.files(), ::testing::Not(::testing::Contains("qumetra.csv")));
}

TEST_F(Order, CollectionTakesTheUsersOrder) {
  const std::string order = m_tool.write("mine.conf", {"[cpu_time]", "Interrupts", "CPU Time"});
  const ToolResult result =
      m_tool.run({"collect", "-t", "0.1", "-r", "sum", "--source", "cpu_time", "--order", order});
  EXPECT_EQ(0, result.status) << result.err;
  const std::string text = readFile(m_tool.file("qumetra.csv"));
  EXPECT_LT(text.find("\nInterrupts\n"), text.find("\nCPU Time\n"));
}

TEST_F(Order, DefaultFileNamesEveryMetricOfTheCollectors) {
  const ToolResult result =
      m_tool.run({"collect", "-t", "0.1", "-r", "auto", "--record", "c.qmrec"});
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_THAT(readFile(m_tool.file("c.qmrec")),
              HasSubstr(R"("metricOrder":{"cpu_idle":["CPU Idle States","CPU Idle State Entries"],)"
                        R"("cpu_time":["CPU Time","Interrupts","Context Switches"],)"
                        R"("process":["Process CPU Time"]})"));
}

}  // namespace
}  // namespace qumetra::test
