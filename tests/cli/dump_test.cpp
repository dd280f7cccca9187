// qumetra dump and qumetra check of binary results.
#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/tool.h"
#include "tests/readers/pwr_bytes.h"

namespace qumetra::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

/// The bytes of a literal, zero bytes included.
template <std::size_t Size>
std::string bytes(const char (&literal)[Size]) {
  return {literal, Size - 1};
}

/// Text 1 is "a".
const std::string kText = bytes("\x05\0\0\x01\0\x01\0a");
/// Metric 7: group, name and type are text 1; no quantity, no columns.
const std::string kMetric = bytes("\x14\0\x03\x07\0\0\0\x01\0\x01\0\x01\0\0\0\0\0\0\0\0\0\0\0");
/// Tick 9, 2.5 microseconds, metric 7, text 1, no descriptor, 0.1.
const std::string kSample =
    bytes("\x18\0\x04\x09\0\0\0\0\0\0\0\0\0\x20\x40\x07\0\0\0\x01\0\0\0\xcd\xcc\xcc\x3d");

/// A system record of which ticks, duration and counts are told. Names are `name`.
std::string systemRecord(char name, char packages, char modules, float megahertz, char id) {
  std::string payload = bytes("\x01\0\0\0\0\0\0\0\x09\0\0\0\0\0\0\0\0\0\x20\x40");
  for (int i = 0; i < 4; ++i) {
    payload.append(reinterpret_cast<const char*>(&megahertz), sizeof megahertz);
  }
  payload += {id, 0, 0, 0};
  for (int i = 0; i < 5; ++i) {
    payload += {name, 0};
  }
  payload += {packages, 0, modules, 0, 2, 0, 4, 0};
  for (int i = 0; i < 3; ++i) {
    payload += {name, 0};
  }
  return bytes("\x40\0\x01") + payload;
}

class ReadingBack : public ::testing::Test {
 protected:
  std::string result(const std::string& name, const std::string& content) const {
    writeFile(m_tool.file(name), content);
    return name;
  }

  Tool m_tool;
};

using Dump = ReadingBack;
using Check = ReadingBack;

/// A file that gives some bytes and then an error of input: a terminal whose other side is closed
/// while it is read.
class BreakingFile {
 public:
  explicit BreakingFile(const std::string& path) {
    termios raw{};
    ::cfmakeraw(&raw);
    std::array<char, 128> name{};
    EXPECT_EQ(0, ::openpty(&m_far, &m_near, name.data(), &raw, nullptr));
    // What is started must not keep the far side open.
    EXPECT_EQ(0, ::fcntl(m_far, F_SETFD, FD_CLOEXEC));
    std::filesystem::create_symlink(name.data(), path);
  }
  BreakingFile(const BreakingFile&) = delete;
  BreakingFile& operator=(const BreakingFile&) = delete;
  ~BreakingFile() { ::close(m_near); }

  /// Gives the bytes, and breaks when the reader has them and waits for more.
  void giveAndBreak(const std::string& bytes) const {
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()), ::write(m_far, bytes.data(), bytes.size()));
    int waiting = -1;
    EXPECT_TRUE(eventually([&] { return ::ioctl(m_near, FIONREAD, &waiting) == 0 && !waiting; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    ::close(m_far);
  }

 private:
  int m_far = -1;
  int m_near = -1;
};

TEST_F(Dump, ShowsOneLinePerRecordWithItsNames) {
  const ToolResult shown = m_tool.run({"dump", result("r.qmbin", kText + kMetric + kSample)});
  EXPECT_EQ(0, shown.status);
  EXPECT_EQ("metric 7: a, a, group a, 0 columns\n9 a: a = 0.1, 2.5 us\n", shown.out);
  EXPECT_EQ("", shown.err);
}

TEST_F(Dump, ShowsAllThatASystemRecordTells) {
  const ToolResult shown =
      m_tool.run({"dump", result("r.qmbin", kText + systemRecord(1, 1, 2, 100.5F, 10))});
  EXPECT_EQ(0, shown.status) << shown.err;
  EXPECT_EQ(
      "system: a, a a; platform a (a, a), hubs a, id 0xa; 1 package, 2 modules, 2 cores, 4 "
      "threads; 100.5 MHz, bus 100.5 MHz, low 100.5 MHz, high 100.5 MHz; ticks 1 to 9, 2.5 s\n",
      shown.out);
}

TEST_F(Dump, LeavesOutWhatASystemRecordLeavesOpen) {
  const std::string empty = bytes("\x04\0\0\x01\0\0\0");
  const ToolResult shown =
      m_tool.run({"dump", result("r.qmbin", empty + systemRecord(1, 0, 0, 0, 0))});
  EXPECT_EQ(0, shown.status) << shown.err;
  EXPECT_EQ("system: 2 cores, 4 threads; ticks 1 to 9, 2.5 s\n", shown.out);
}

TEST_F(Dump, CountsOneColumnAsOne) {
  std::string metric = kMetric + bytes("\x01\0\0\0");
  metric[0] = 0x18;  // The size of the payload.
  metric[19] = 1;    // The count of columns.
  const ToolResult shown = m_tool.run({"dump", result("r.qmbin", kText + metric)});
  EXPECT_EQ("metric 7: a, a, group a, 1 column\n", shown.out);
}

TEST_F(Dump, NameThatWouldBreakTheLineIsQuoted) {
  const std::string escape = bytes("\x09\0\0\x01\0\x05\0\x1b[2J\n");
  const ToolResult shown = m_tool.run({"dump", result("r.qmbin", escape + kMetric + kSample)});
  EXPECT_THAT(shown.out, EndsWith("9 \"\\u001b[2J\\n\": \"\\u001b[2J\\n\" = 0.1, 2.5 us\n"));
}

TEST_F(Dump, NameThatIsNoUtf8IsQuoted) {
  const std::string text = bytes("\x05\0\0\x01\0\x01\0\xff");
  const ToolResult shown = m_tool.run({"dump", result("r.qmbin", text + kMetric + kSample)});
  EXPECT_THAT(shown.out, EndsWith("9 \"\\udcff\": \"\\udcff\" = 0.1, 2.5 us\n"));
}

TEST_F(Dump, ReadsAPipeFromItsFront) {
  ASSERT_EQ(0, ::mkfifo(m_tool.file("r.qmbin").c_str(), 0600));
  m_tool.start({"dump", "r.qmbin"});
  writeFile(m_tool.file("r.qmbin"), kText + kMetric + kSample);
  const ToolResult shown = m_tool.wait();
  EXPECT_EQ(0, shown.status);
  EXPECT_THAT(shown.out, EndsWith("9 a: a = 0.1, 2.5 us\n"));
}

TEST_F(Dump, ShowsJsonLinesWithTheShortestNumbers) {
  const ToolResult shown =
      m_tool.run({"dump", "--json", result("r.qmbin", kText + kMetric + kSample)});
  EXPECT_EQ(0, shown.status);
  EXPECT_EQ(
      R"({"metric":{"id":7,"name":"a","group":"a","type":"a","columns":[],"metadata":[]}})"
      "\n"
      R"({"sample":{"timestamp":9,"metricId":7,"name":"a","durationMicroseconds":2.5,"value":0.1}})"
      "\n",
      shown.out);
}

TEST_F(Dump, ShowsWhatCanBeReadOfABrokenFile) {
  const ToolResult shown =
      m_tool.run({"dump", result("r.qmbin", kText + kMetric + kSample + bytes("\x18\0"))});
  EXPECT_EQ(1, shown.status);
  EXPECT_THAT(shown.out, EndsWith("9 a: a = 0.1, 2.5 us\n"));
  EXPECT_EQ("r.qmbin: byte 58: the file ends in the head of a record\n", shown.err);
}

TEST_F(Dump, ShowsWhatWasReadBeforeAnErrorOfInput) {
  const BreakingFile file(m_tool.file("r.qmbin"));
  m_tool.start({"dump", "r.qmbin"});
  file.giveAndBreak(kText + kMetric + kSample);
  const ToolResult shown = m_tool.wait();
  EXPECT_EQ(2, shown.status);
  EXPECT_THAT(shown.out, EndsWith("9 a: a = 0.1, 2.5 us\n"));
  EXPECT_EQ("r.qmbin: Input/output error\n", shown.err);
}

TEST_F(Dump, ShowsWhatWasReadOfAnImportStreamBeforeAnErrorOfInput) {
  const BreakingFile file(m_tool.file("r.pwr"));
  m_tool.start({"dump", "r.pwr"});
  file.giveAndBreak(fromHex(kMagicHex));
  const ToolResult shown = m_tool.wait();
  EXPECT_EQ(2, shown.status);
  EXPECT_EQ("0 magic\n", shown.out);
  EXPECT_EQ("r.pwr: Input/output error\n", shown.err);
}

TEST_F(Dump, ReadsTheFilesOfASeriesAsOne) {
  const ToolResult shown =
      m_tool.run({"dump", result("r_0.qmbin", kText + kMetric), result("r_1.qmbin", kSample)});
  EXPECT_EQ(0, shown.status);
  EXPECT_THAT(shown.out, EndsWith("9 a: a = 0.1, 2.5 us\n"));
}

TEST_F(Dump, MissingFileIsOneLine) {
  const ToolResult shown = m_tool.run({"dump", "none.qmbin"});
  EXPECT_EQ(2, shown.status);
  EXPECT_EQ("none.qmbin: No such file or directory\n", shown.err);
}

TEST_F(Dump, FileOfAnotherKindIsRefused) {
  const ToolResult shown = m_tool.run({"dump", result("r.csv", "a,b\n")});
  EXPECT_EQ(2, shown.status);
  EXPECT_EQ(
      "qumetra: r.csv: not known as a result that can be read back; expected a name, of a pipe "
      "too, that ends in .qmbin or .pwr\n",
      shown.err);
}

TEST_F(Dump, PipeWithoutAKnownSuffixIsRefusedAndNotWaitedFor) {
  ASSERT_EQ(0, ::mkfifo(m_tool.file("pipe").c_str(), 0600));
  const ToolResult shown = m_tool.run({"dump", "pipe"});
  EXPECT_EQ(2, shown.status);
  EXPECT_THAT(shown.err, StartsWith("qumetra: pipe: not known as a result"));
}

TEST_F(Check, FileWithoutASuffixThatCannotBeReadIsToldWithTheReason) {
  std::filesystem::create_directory(m_tool.file("folder"));
  for (const auto& [file, error] : {std::pair{"none", "none: No such file or directory\n"},
                                    {"-", "-: No such file or directory\n"},
                                    {"folder", "folder: Is a directory\n"}}) {
    const ToolResult checked = m_tool.run({"check", file});
    EXPECT_EQ(2, checked.status);
    EXPECT_EQ(error, checked.err);
  }
}

TEST_F(Check, CountsWhatIsThere) {
  const ToolResult checked = m_tool.run({"check", result("r.qmbin", kText + kMetric + kSample)});
  EXPECT_EQ(0, checked.status);
  EXPECT_EQ("r.qmbin: 1 texts, 0 system records, 0 descriptors, 1 metrics, 1 samples, 0 faults\n",
            checked.out);
}

TEST_F(Check, EmptyFileIsAWarning) {
  const ToolResult checked = m_tool.run({"check", result("r.qmbin", "")});
  EXPECT_EQ(0, checked.status);
  EXPECT_EQ("r.qmbin: warning: the file is empty; no result was written to it\n", checked.err);
  EXPECT_THAT(checked.out, StartsWith("r.qmbin: 0 texts"));
}

TEST_F(Check, FileWithoutSamplesIsNoWarning) {
  EXPECT_EQ("", m_tool.run({"check", result("r.qmbin", kText)}).err);
}

TEST_F(Check, SeriesOutOfOrderIsWrong) {
  const ToolResult checked =
      m_tool.run({"check", result("r_1.qmbin", kSample), result("r_0.qmbin", kText + kMetric)});
  EXPECT_EQ(1, checked.status);
  EXPECT_THAT(checked.err, StartsWith("r_1.qmbin: byte 0: a sample of a metric that was not told"));
  EXPECT_THAT(checked.out, HasSubstr("1 samples, 2 faults\nr_0.qmbin: 1 texts"));
}

/// What `check` and `dump` say of files of a series of which some are missing.
MATCHER(HintsAtASeries, "") { return arg.find("seems to be one of a series") != std::string::npos; }

TEST_F(Check, FilesOfTwoRunsGetOneHint) {
  const std::string run = result("a.qmbin", kText + kMetric);
  const ToolResult checked = m_tool.run({"check", run, result("b.qmbin", kText + kMetric), run});
  EXPECT_EQ(1, checked.status);
  EXPECT_THAT(checked.err,
              HasSubstr("b.qmbin: seems to belong to another run than the files before "
                        "it; several .qmbin files are read as one series\n"));
  EXPECT_THAT(checked.err, Not(HasSubstr("a.qmbin: seems")));
}

TEST_F(Check, FileOfASeriesWithoutThoseBeforeItGetsOneHint) {
  result("r_0.qmbin", kText + kMetric);
  const ToolResult checked =
      m_tool.run({"check", result("r_2.qmbin", kSample), result("r_3.qmbin", kSample)});
  EXPECT_EQ(1, checked.status);
  EXPECT_THAT(checked.err, HasSubstr("r_2.qmbin: seems to be one of a series, whose names stand in "
                                     "the file of their first use; give all files in the order of "
                                     "their numbers, from r_0.qmbin on\n"));
  EXPECT_THAT(checked.err, Not(HasSubstr("r_3.qmbin: seems")));
}

TEST_F(Check, FilesOfASeriesInTheOrderOfTheirTextGetTheHint) {
  const ToolResult checked =
      m_tool.run({"check", result("r_0.qmbin", ""), result("r_10.qmbin", kSample),
                  result("r_9.qmbin", kText + kMetric)});
  EXPECT_THAT(checked.err, HasSubstr("r_10.qmbin: seems to be one of a series"));
}

TEST_F(Check, FileThatIsNoneOfASeriesGetsNoHint) {
  for (const char* name : {"r.qmbin", "r_0.qmbin", "r_x.qmbin", "r_.qmbin", "7.qmbin"}) {
    EXPECT_THAT(m_tool.run({"check", result(name, kSample)}).err, Not(HintsAtASeries())) << name;
  }
}

TEST_F(Check, FileBehindTheOneBeforeItGetsNoHint) {
  const ToolResult checked =
      m_tool.run({"check", result("r_0.qmbin", kText), result("r_1.qmbin", kSample)});
  EXPECT_EQ(1, checked.status);
  EXPECT_THAT(checked.err, Not(HintsAtASeries()));
}

TEST_F(Check, OtherFaultsOfAFileOfASeriesGetNoHint) {
  const ToolResult checked = m_tool.run({"check", result("r_1.qmbin", bytes("\x18\0"))});
  EXPECT_EQ(1, checked.status);
  EXPECT_THAT(checked.err, Not(HintsAtASeries()));
}

TEST_F(Dump, FileOfASeriesWithoutThoseBeforeItGetsTheHint) {
  EXPECT_THAT(m_tool.run({"dump", result("r_1.qmbin", kSample)}).err, HintsAtASeries());
}

TEST_F(Check, ManyFaultsOfAFileAreCutShort) {
  std::string samples;
  for (int i = 0; i < 15; ++i) {
    samples += kSample;  // Two faults each.
  }
  const ToolResult checked = m_tool.run({"check", result("r.qmbin", samples)});
  EXPECT_EQ(1, checked.status);
  EXPECT_THAT(checked.err, EndsWith("r.qmbin: 10 more of these\n"));
}

}  // namespace
}  // namespace qumetra::test
