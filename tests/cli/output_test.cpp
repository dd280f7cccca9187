// What the tool writes over, and what it never does.
#include <sys/resource.h>

#include <filesystem>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/tool.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Output : public ::testing::Test {
 protected:
  Tool m_tool;
  std::vector<std::string> m_lines = {R"({"recording":{"version":1}})",
                                      R"({"text":{"id":1,"message":"hello"}})"};
};

TEST_F(Output, ResultIsNeverTheRecordingThatIsRead) {
  const std::string recording = m_tool.write("run.txt", m_lines);
  const std::string before = readFile(recording);
  const ToolResult result = m_tool.run({"replay", recording, "-r", "raw", "-o", "run"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("qumetra: " + recording + " would be written over while it is read\n", result.err);
  EXPECT_EQ(before, readFile(recording));
}

TEST_F(Output, FileThatIsNoRecordingLeavesEarlierResultsAlone) {
  const std::string junk = m_tool.write("junk", {"no recording"});
  m_tool.write("z.csv", {"good"});
  const ToolResult result = m_tool.run({"replay", junk, "-r", "sum", "-o", "z"});
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err, StartsWith(junk + ":1: "));
  EXPECT_EQ("good\n", readFile(m_tool.file("z.csv")));
}

TEST_F(Output, FileThatBeginsWithAnEmptyLineAndIsNoRecordingLeavesThemAloneToo) {
  // As a summary does.
  const std::string report = m_tool.write("report.csv", {"", "no recording"});
  m_tool.write("z.csv", {"good"});
  const ToolResult result = m_tool.run({"replay", report, "-r", "sum", "-o", "z"});
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err, StartsWith(report + ":2: "));
  EXPECT_EQ("good\n", readFile(m_tool.file("z.csv")));
}

TEST_F(Output, CallLogIsNeverAResult) {
  const std::string recording = m_tool.write("r.qmrec", m_lines);
  const ToolResult result =
      m_tool.run({"replay", recording, "-r", "raw", "-o", "x", "--call-log", "./x.txt"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("qumetra: ./x.txt would be written as two results at once\n", result.err);
  EXPECT_THAT(m_tool.files(), ElementsAre("r.qmrec"));
}

TEST_F(Output, RecordIsNeverAResult) {
  const ToolResult result =
      m_tool.run({"collect", "-t", "0.1", "-r", "raw", "-o", "z", "--record", "z.txt"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("qumetra: z.txt would be written as two results at once\n", result.err);
  EXPECT_TRUE(m_tool.files().empty());
}

TEST_F(Output, LinkInThePlaceOfAResultIsToldBeforeTheCollection) {
  std::filesystem::create_symlink("elsewhere", m_tool.file("b.csv"));
  const ToolResult result = m_tool.run({"collect", "-t", "100", "-r", "sum", "-o", "b"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ(
      "qumetra: cannot write results: b.csv: is a symbolic link, which results are not written "
      "through\n",
      result.err);
}

/// No file of this process or its children may grow past so many bytes, as long as this lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    EXPECT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &m_former));
    const rlimit limited{bytes, m_former.rlim_max};
    EXPECT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limited));
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() { EXPECT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &m_former)); }

 private:
  rlimit m_former{};
};

TEST_F(Output, LimitOfFileSizeIsAFailedWriteAndNotTheEnd) {
  m_lines.push_back(R"({"text":{"id":2,"message":")" + std::string(100'000, 'x') + "\"}}");
  const std::string recording = m_tool.write("r.qmrec", m_lines);
  const FileSizeLimit limit(50'000);
  const ToolResult result = m_tool.run({"replay", recording, "-r", "raw", "-o", "x"});
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.err, HasSubstr("Could not write"));
}

/// A writer, its result, and a recording that it makes more than 200 bytes of.
struct CutResult {
  std::string writer;
  std::string file;
  std::string recording = "all_kinds.qmrec";

  friend void PrintTo(const CutResult& result, std::ostream* out) { *out << result.file; }
};

class CutOutput : public ::testing::TestWithParam<CutResult> {
 protected:
  ToolResult replay(const Tool::Arguments& more) {
    Tool::Arguments arguments = {
        "replay", QM_RECORDINGS "/" + GetParam().recording, "-r", GetParam().writer, "-o", "x"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    // Standard error is no file, so that the limit does not silence it.
    m_tool.useTerminal();
    const FileSizeLimit limit(200);
    return m_tool.run(arguments);
  }

  Tool m_tool;
};

TEST_P(CutOutput, IsToldAndCountsInTheStatus) {
  const ToolResult result = replay({});
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.err, HasSubstr(GetParam().file));
}

TEST_P(CutOutput, CountsInTheStatusForTheQuietToo) {
  const ToolResult result = replay({"-q"});
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.err, Not(HasSubstr(GetParam().file)));
}

TEST_P(CutOutput, CountsInTheStatusBesideACallLog) {
  EXPECT_EQ(1, replay({"--call-log", "/dev/null"}).status);
}

INSTANTIATE_TEST_SUITE_P(EveryWriter, CutOutput,
                         ::testing::Values(CutResult{"sum", "x.csv"},
                                           CutResult{"qmjson", "x.qmjson"},
                                           CutResult{"json", "x.json"}, CutResult{"bin", "x.qmbin"},
                                           CutResult{"raw", "x.txt"},
                                           CutResult{"int", "x_trace.csv"},
                                           CutResult{"kelto", "x.pwr", "kelto_residency.qmrec"}),
                         [](const auto& parameter) { return parameter.param.writer; });

TEST_F(Output, CutResultsOfALiveCollectionCountInItsStatus) {
  const FileSizeLimit limit(200);
  // The first writes its results during the collection, the second at the end.
  for (const char* writer : {"bin", "raw"}) {
    const ToolResult result = m_tool.run(
        {"collect", "-t", "0.2", "-i", "20", "-r", writer, "-o", "x", "--continuous", "0.1"});
    EXPECT_EQ(1, result.status) << writer;
  }
}

TEST_F(Output, SummaryWithoutAnOrderIsWholeAndSucceeds) {
  const std::string recording = m_tool.write("r.qmrec", m_lines);
  const ToolResult result = m_tool.run({"replay", recording, "-r", "sum"});
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.err, HasSubstr("No entries present for metrics"));
}

TEST_F(Output, RecordThatIsNoRegularFileIsToldBeforeTheCollection) {
  const ToolResult result = m_tool.run({"collect", "--record", "/dev/full", "--", "touch", "x"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("qumetra: cannot write results: /dev/full: is no regular file\n", result.err);
  EXPECT_TRUE(m_tool.files().empty());
}

TEST_F(Output, RecordingOfWhichNothingIsThereIsNotReadBack) {
  // Standard error is no file, so that the limit does not silence it.
  m_tool.useTerminal();
  ToolResult result;
  {
    const FileSizeLimit limit(0);
    result = m_tool.run({"collect", "-t", "0.1", "-i", "20", "--record", "z.qmrec", "-r", "raw"});
  }
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err, HasSubstr("qumetra: z.qmrec: File too large"));
  EXPECT_THAT(result.err, Not(HasSubstr("z.qmrec:1")));
  EXPECT_THAT(m_tool.files(), ElementsAre("z.qmrec"));
}

TEST_F(Output, CutResultOfACollectionCountsInItsStatus) {
  // A full device appears in the place of the result while the command runs.
  const ToolResult result = m_tool.run(
      {"collect", "-i", "20", "-r", "bin", "-o", "x", "--", "ln", "-s", "/dev/full", "x.qmbin"});
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.err, HasSubstr("Cannot write x.qmbin"));
  EXPECT_THAT(result.err, HasSubstr("what was measured is kept: qumetra replay "));
}

TEST_F(Output, FailedResultKeepsWhatWasMeasured) {
  // A folder appears in the place of the summary while the command runs.
  const ToolResult result =
      m_tool.run({"collect", "-r", "auto", "-i", "20", "--", "mkdir", "Automation_Summary.csv"});
  EXPECT_EQ(1, result.status);
  constexpr const char* kOffer = "what was measured is kept: qumetra replay ";
  ASSERT_THAT(result.err, HasSubstr(kOffer));
  std::string path = result.err.substr(result.err.find(kOffer) + std::string(kOffer).size());
  path.erase(path.find('\n'));
  EXPECT_THAT(path, EndsWith("recording.qmrec"));
  EXPECT_THAT(readFile(path), StartsWith(m_lines[0]));
}

}  // namespace
}  // namespace qumetra::test
