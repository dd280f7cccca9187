#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/tool.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kFirst = R"({"recording":{"version":1}})";
constexpr const char* kSystem =
    R"({"system":{"metadata":{"collectionStartTime":"noon","collectionDurationSec":2.5}}})";
constexpr const char* kFlush = R"({"flush":{}})";

/// What the automation summary of a recording of `kSystem` alone is.
constexpr const char* kHeader = "Output_Name,Collection_Time,Duration (sec),\n";
constexpr const char* kLine = "qumetra,noon,2.5,\n";

class Replay : public ::testing::Test {
 protected:
  std::string summary() const { return readFile(m_tool.file("Automation_Summary.csv")); }

  Tool m_tool;
  std::string m_recording = m_tool.write("r.qmrec", {kFirst, kSystem});
};

TEST_F(Replay, WritesTheAutomationSummaryAndSaysNothing) {
  const ToolResult result = m_tool.run({"replay", m_recording, "-r", "auto"});
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(std::string(kHeader) + kLine, summary());
  EXPECT_THAT(m_tool.files(), ElementsAre("Automation_Summary.csv", "r.qmrec"));
}

TEST_F(Replay, SecondReplayAddsItsLineOnly) {
  m_tool.run({"replay", m_recording, "-r", "auto"});
  m_tool.run({"replay", m_recording, "-r", "auto", "-o", "other"});
  EXPECT_EQ(std::string(kHeader) + kLine + "other,noon,2.5,\n", summary());
}

TEST_F(Replay, NamesOfWritersAreRepeatedOrJoinedByCommas) {
  const ToolResult result =
      m_tool.run({"replay", "-r", "auto,auto", "-r", "auto", m_recording, "--call-log", "log"});
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(
      "{\"writer\":\"auto\",\"call\":\"init\",\"status\":0}\n"
      "{\"writer\":\"auto\",\"call\":\"system\",\"status\":0}\n"
      "{\"writer\":\"auto\",\"call\":\"fini\",\"status\":0}\n",
      readFile(m_tool.file("log")));
}

TEST_F(Replay, UnknownWriterListsTheKnownOnesAndMakesNothing) {
  const ToolResult result = m_tool.run({"replay", m_recording, "-r", "atuo", "--call-log", "log"});
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err, StartsWith("qumetra: unknown writer \"atuo\"; known are "));
  EXPECT_THAT(result.err, HasSubstr("auto"));
  EXPECT_THAT(m_tool.files(), ElementsAre("r.qmrec"));
}

TEST_F(Replay, MissingRecordingIsToldWithItsNameAndMakesNothing) {
  const ToolResult result = m_tool.run({"replay", "nope", "-r", "auto", "--call-log", "log"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("nope: No such file or directory\n", result.err);
  EXPECT_THAT(m_tool.files(), ElementsAre("r.qmrec"));
}

TEST_F(Replay, FaultIsToldByFileAndLineAndWhatCameBeforeIsKept) {
  m_recording = m_tool.write("bad.qmrec", {kFirst, kSystem, R"({"dance":{}})", kSystem});
  const ToolResult result = m_tool.run({"replay", m_recording, "-r", "auto"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_THAT(result.err, StartsWith(m_recording + ":3: "));
  EXPECT_EQ(result.err.size() - 1, result.err.find('\n'));
  EXPECT_EQ(std::string(kHeader) + kLine, summary());
}

TEST_F(Replay, InterruptedRecordingIsAWarningAndCounts) {
  writeFile(m_recording, std::string(kFirst) + '\n' + kSystem + "\n{\"sam");
  const ToolResult result = m_tool.run({"replay", m_recording, "-r", "auto"});
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.err, StartsWith(m_recording + ":3: "));
  EXPECT_EQ(std::string(kHeader) + kLine, summary());
}

TEST_F(Replay, InterruptedRecordingIsNotToldToTheQuiet) {
  writeFile(m_recording, std::string(kFirst) + '\n' + kSystem + "\n{\"sam");
  EXPECT_EQ("", m_tool.run({"-q", "replay", m_recording, "-r", "auto"}).err);
}

TEST_F(Replay, CommonOptionsStandBeforeOrAfterTheCommand) {
  EXPECT_EQ(0, m_tool.run({"--verbosity", "2", "--log-tag", "a", "replay", m_recording}).status);
  EXPECT_EQ(0, m_tool.run({"replay", m_recording, "--verbosity", "2", "--log-tag", "a"}).status);
}

TEST_F(Replay, LogTagTakesOneWordAndIsRepeatable) {
  EXPECT_EQ(0, m_tool.run({"--log-tag", "a", "--log-tag", "b", "replay", m_recording}).status);
}

TEST_F(Replay, BadOutputPathFailsAtOnceAndMakesNothing) {
  std::filesystem::create_directory(m_tool.file("Automation_Summary.csv"));
  const ToolResult result = m_tool.run({"replay", m_recording, "-r", "auto", "--call-log", "log"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("qumetra: cannot write results: Automation_Summary.csv: Is a directory\n", result.err);
  EXPECT_THAT(m_tool.files(), ElementsAre("Automation_Summary.csv", "r.qmrec"));
}

TEST_F(Replay, FlushesAreSkippedUnlessContinuous) {
  m_recording = m_tool.write("r.qmrec", {kFirst, kSystem, kFlush});
  m_tool.run({"replay", m_recording, "-r", "auto", "--call-log", "log"});
  EXPECT_THAT(readFile(m_tool.file("log")), Not(HasSubstr("flush")));
}

TEST_F(Replay, FlushesCountInAContinuousReplay) {
  m_recording = m_tool.write("r.qmrec", {kFirst, kSystem, kFlush});
  m_tool.run({"replay", m_recording, "-r", "auto", "--continuous", "--call-log", "log"});
  EXPECT_THAT(readFile(m_tool.file("log")),
              HasSubstr("{\"writer\":\"auto\",\"call\":\"flush\",\"status\":0}\n"));
}

TEST_F(Replay, CallLogMustNotBeTheRecording) {
  const ToolResult result =
      m_tool.run({"replay", m_recording, "-r", "auto", "--call-log", "./r.qmrec"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("qumetra: " + m_recording + " would be written over while it is read\n", result.err);
  EXPECT_EQ(std::string(kFirst) + '\n' + kSystem + '\n', readFile(m_recording));
}

TEST_F(Replay, CallLogGetsTheDirectoriesThatAreMissing) {
  const ToolResult result =
      m_tool.run({"replay", m_recording, "-r", "auto", "--call-log", "a/b/log"});
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_THAT(readFile(m_tool.file("a/b/log")), HasSubstr("\"init\""));
}

TEST_F(Replay, CallLogThatCannotBeMadeFailsAtOnce) {
  const ToolResult result = m_tool.run({"replay", m_recording, "--call-log", "r.qmrec/log"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("qumetra: cannot write results: r.qmrec/log: Not a directory\n", result.err);
  EXPECT_THAT(m_tool.files(), ElementsAre("r.qmrec"));
}

TEST_F(Replay, CallLogThatIsFullIsToldOnceAndTheResultsAreMade) {
  const ToolResult result =
      m_tool.run({"replay", m_recording, "-r", "auto", "--call-log", "/dev/full"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("qumetra: cannot write the call log: /dev/full: No space left on device\n", result.err);
  EXPECT_EQ(std::string(kHeader) + kLine, summary());
}

TEST_F(Replay, LeavesNothingInTheTemporaryDirectory) {
  m_tool.run({"replay", m_recording, "-r", "all"});
  EXPECT_THAT(m_tool.temporaries(), IsEmpty());
}

TEST_F(Replay, TemporaryDirectoryThatIsMissingIsAnError) {
  m_tool.setVariable("TMPDIR", "/nowhere");
  const ToolResult result = m_tool.run({"replay", m_recording});
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err,
              StartsWith("qumetra: cannot make a temporary directory in \"/nowhere\": "));
}

/// A recording that comes through a pipe, so that the test decides how long it takes.
class SlowReplay : public Replay {
 protected:
  SlowReplay() {
    const std::string path = m_tool.file("pipe.qmrec");
    EXPECT_EQ(0, ::mkfifo(path.c_str(), 0600));
  }

  /// Starts the replay and sends the first lines.
  void start() {
    m_tool.start({"replay", "pipe.qmrec", "-r", "auto"});
    m_pipe.open(m_tool.file("pipe.qmrec"));
    send(kFirst);
    send(kSystem);
  }
  void send(const std::string& line) { m_pipe << line << std::endl; }
  /// Sends lines for longer than the second before which no progress shows.
  void dawdle() {
    for (int i = 0; i < 14; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      send("");
    }
  }

  std::ofstream m_pipe;
};

TEST_F(SlowReplay, ShowsProgressOnATerminalAndWipesIt) {
  m_tool.useTerminal();
  start();
  dawdle();
  m_pipe.close();
  const ToolResult result = m_tool.wait();
  EXPECT_THAT(result.err, HasSubstr("replaying: 0.0 MiB"));
  EXPECT_THAT(result.err, ::testing::EndsWith("\r\033[K"));
  EXPECT_EQ(0, result.status);
}

TEST_F(SlowReplay, ShowsNoProgressWhereNoColorIsSet) {
  m_tool.useTerminal();
  m_tool.setVariable("NO_COLOR", "");
  start();
  dawdle();
  m_pipe.close();
  EXPECT_EQ("", m_tool.wait().err);
}

TEST_F(SlowReplay, ShowsNoProgressOutsideATerminal) {
  start();
  dawdle();
  m_pipe.close();
  EXPECT_EQ("", m_tool.wait().err);
}

TEST_F(Replay, ShowsNoProgressForShortFiles) {
  m_tool.useTerminal();
  EXPECT_EQ("", m_tool.run({"replay", m_recording, "-r", "auto"}).err);
}

TEST_F(SlowReplay, FirstInterruptEndsItEarlyWithResults) {
  start();
  ASSERT_TRUE(eventually([&] { return m_tool.temporaries().size() == 1; }));
  // The signals are watched from just after the directory was made; the lines have been read then.
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  m_tool.sendSignal(SIGINT);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  send("");
  const ToolResult result = m_tool.wait();
  EXPECT_EQ(128 + SIGINT, result.status);
  EXPECT_EQ(std::string(kHeader) + kLine, summary());
  EXPECT_THAT(m_tool.temporaries(), IsEmpty());
}

TEST_F(SlowReplay, SecondInterruptLeavesAtOnceAndTellsWhatStays) {
  start();
  ASSERT_TRUE(eventually([&] { return m_tool.temporaries().size() == 1; }));
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  m_tool.sendSignal(SIGINT);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  m_tool.sendSignal(SIGTERM);
  const ToolResult result = m_tool.wait();
  EXPECT_EQ(128 + SIGTERM, result.status);
  ASSERT_EQ(1U, m_tool.temporaries().size());
  EXPECT_EQ("qumetra: left early; what was received so far is kept in " +
                m_tool.temporaries().front().string() + "\n",
            result.err);
}

TEST_F(SlowReplay, CrashTellsWhatStays) {
  start();
  ASSERT_TRUE(eventually([&] { return m_tool.temporaries().size() == 1; }));
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  m_tool.sendSignal(SIGABRT);
  const ToolResult result = m_tool.wait();
  EXPECT_EQ(128 + SIGABRT, result.status);
  EXPECT_THAT(result.err, HasSubstr("is kept in " + m_tool.temporaries().front().string()));
}

}  // namespace
}  // namespace qumetra::test
