#include <signal.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/tool.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class Collect : public ::testing::Test {
 protected:
  /// Collects into the automation summary, which says nothing where all is well.
  ToolResult collect(const Tool::Arguments& more) {
    Tool::Arguments arguments = {"collect", "-r", "auto", "-i", "20"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return m_tool.run(arguments);
  }
  std::string summary() const { return readFile(m_tool.file("Automation_Summary.csv")); }
  std::ptrdiff_t summaryLines() const {
    const std::string text = summary();
    return std::count(text.begin(), text.end(), '\n');
  }

  Tool m_tool;
};

TEST_F(Collect, SecondCollectionAddsItsLineToTheAutomationSummary) {
  EXPECT_EQ(0, collect({"-t", "0.5"}).status);
  EXPECT_EQ(2, summaryLines());
  EXPECT_THAT(summary(), StartsWith("Output_Name,Collection_Time,Duration (sec),"));
  EXPECT_EQ(0, collect({"-t", "0.5"}).status);
  EXPECT_EQ(3, summaryLines());
}

TEST_F(Collect, PutsNothingOnStandardOutputAndLeavesNothingElse) {
  EXPECT_EQ("", collect({"-t", "0.2"}).out);
  EXPECT_THAT(m_tool.files(), ElementsAre("Automation_Summary.csv"));
  EXPECT_THAT(m_tool.temporaries(), IsEmpty());
}

TEST_F(Collect, LastsAsLongAsTheCommandAndEndsWithItsStatus) {
  EXPECT_EQ(3, collect({"--", "sh", "-c", "sleep 0.3; exit 3"}).status);
  EXPECT_EQ(2, summaryLines());
}

TEST_F(Collect, CommandThatIsNotThereIs127AndLeavesNoTrace) {
  const ToolResult result = collect({"--", "no-such-command"});
  EXPECT_EQ(127, result.status);
  EXPECT_THAT(result.err, HasSubstr("no-such-command"));
  EXPECT_THAT(m_tool.files(), IsEmpty());
}

TEST_F(Collect, CommandThatIsNotThereLeavesNoTraceOfALiveRunEither) {
  EXPECT_EQ(127, collect({"--continuous", "1", "--", "no-such-command"}).status);
  EXPECT_THAT(m_tool.files(), IsEmpty());
}

TEST_F(Collect, CommandThatCannotBeRunIs126) {
  EXPECT_EQ(126, collect({"--", m_tool.write("text", {"no program"})}).status);
}

TEST_F(Collect, OptionsOfTheCommandAreTheCommands) {
  collect({"--", "sh", "-c", "echo $0 $1 $2 > words", "-t", "--", "--verbosity"});
  EXPECT_EQ("-t -- --verbosity\n", readFile(m_tool.file("words")));
}

TEST_F(Collect, CommandHasTheUsersTemporaryDirectory) {
  m_tool.setVariable("TMPDIR", "/tmp/.");
  collect({"--", "sh", "-c", "echo $TMPDIR > words"});
  EXPECT_EQ("/tmp/.\n", readFile(m_tool.file("words")));
}

TEST_F(Collect, CommandHasTheUsersLimitOfOpenFiles) {
  Tool shell("/bin/sh");
  shell.run(
      {"-c", "ulimit -S -n 61; exec " QM_TOOL " collect -r auto -- sh -c 'ulimit -S -n > limit'"});
  EXPECT_EQ("61\n", readFile(shell.file("limit")));
}

TEST_F(Collect, BadOutputPathFailsBeforeTheCommandStarts) {
  std::filesystem::create_directory(m_tool.file("Automation_Summary.csv"));
  const ToolResult result = collect({"--", "touch", "started"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("qumetra: cannot write results: Automation_Summary.csv: Is a directory\n", result.err);
  EXPECT_THAT(m_tool.files(), ElementsAre("Automation_Summary.csv"));
}

TEST_F(Collect, BadPathOfTheRecordingFailsBeforeTheCommandStarts) {
  const ToolResult result = collect({"--record", "/proc/x.qmrec", "--", "touch", "started"});
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(m_tool.files(), IsEmpty());
}

TEST_F(Collect, RecordingGetsTheDirectoriesThatAreMissing) {
  const ToolResult result = collect({"-t", "0.1", "--record", "a/b/kept.qmrec"});
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_THAT(readFile(m_tool.file("a/b/kept.qmrec")), StartsWith("{\"recording\""));
}

TEST_F(Collect, NamesTheResultFilesToThoseWhoAsk) {
  const ToolResult result = collect({"-v", "-t", "0.3"});
  const std::string path = std::filesystem::canonical(m_tool.file("Automation_Summary.csv"));
  EXPECT_THAT(result.err, HasSubstr("qumetra: result: " + path + ", " +
                                    std::to_string(summary().size()) + " bytes\n"));
}

TEST_F(Collect, RecordingReplaysToTheSameSummary) {
  EXPECT_EQ(0, collect({"-t", "0.3", "--record", "kept.qmrec"}).status);
  const std::string collected = summary();
  std::filesystem::remove(m_tool.file("Automation_Summary.csv"));
  EXPECT_EQ(0, m_tool.run({"replay", "kept.qmrec", "-r", "auto"}).status);
  EXPECT_EQ(collected, summary());
}

TEST_F(Collect, KilledCollectionLeavesARecordingThatReplaysToASummary) {
  m_tool.start({"collect", "-r", "auto", "-i", "20", "-t", "100", "--record", "kept.qmrec"});
  ASSERT_TRUE(eventually([&] {
    return std::filesystem::exists(m_tool.file("kept.qmrec")) &&
           readFile(m_tool.file("kept.qmrec")).find("{\"sample\"") != std::string::npos;
  }));
  m_tool.sendSignal(SIGKILL);
  EXPECT_EQ(128 + SIGKILL, m_tool.wait().status);
  const ToolResult result = m_tool.run({"replay", "kept.qmrec", "-r", "auto"});
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.err, HasSubstr("qumetra: the collection did not end in order"));
  EXPECT_THAT(summary(),
              HasSubstr(",CPU Time Summary: Residency (Percentage and Time)_CPU_CPU 0_"));
}

TEST_F(Collect, LiveCollectionDeliversToo) {
  EXPECT_EQ(0, collect({"-t", "0.3", "--continuous", "0.1"}).status);
  EXPECT_EQ(2, summaryLines());
}

TEST_F(Collect, WritersThatServeNoContinuousRunAreNamed) {
  const ToolResult result = collect({"-t", "0.3", "--continuous", "0.1"});
  EXPECT_THAT(result.err,
              StartsWith("qumetra: --continuous: no chosen writer (auto) makes fresh files; they "
                         "write their results at the end\n"));
  EXPECT_EQ("", collect({"-q", "-t", "0.3", "--continuous", "0.1"}).err);
}

TEST_F(Collect, FirstInterruptEndsItEarlyWithResults) {
  m_tool.start({"collect", "-r", "auto", "-t", "100"});
  ASSERT_TRUE(eventually([&] { return !m_tool.temporaries().empty(); }));
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  m_tool.sendSignal(SIGINT);
  EXPECT_EQ(0, m_tool.wait().status);
  EXPECT_EQ(2, summaryLines());
}

TEST_F(Collect, SourceAskedForByNameThatIsMissingIsAnError) {
  std::filesystem::create_directory(m_tool.file("empty"));
  const ToolResult result =
      collect({"-t", "0.1", "--procfs", "empty", "--sysfs", "empty", "--source", "cpu_time"});
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err, StartsWith("qumetra: source cpu_time: "));
}

TEST_F(Collect, UnknownSourceIsAnError) {
  const ToolResult result = collect({"-t", "0.1", "--source", "dance"});
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err, HasSubstr("dance"));
}

TEST_F(Collect, ShowsTimeAndSamplesOnATerminal) {
  m_tool.useTerminal();
  EXPECT_THAT(collect({"-t", "0.5"}).err,
              ::testing::ContainsRegex("collecting: 0\\.[0-9] s, [0-9]+ samples"));
}

TEST_F(Collect, LeavesTheTerminalToACommandThatRuns) {
  m_tool.useTerminal();
  EXPECT_EQ(
      "hello\r\n",
      m_tool.run({"collect", "-r", "auto", "--", "sh", "-c", "sleep 0.5; echo hello >&2"}).err);
}

}  // namespace
}  // namespace qumetra::test
