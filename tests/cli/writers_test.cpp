#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "tests/cli/tool.h"

namespace qumetra::test {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace fs = std::filesystem;

/// The tool as it would be installed, with the fake writers in the place of the real ones.
class ToolWithFakes {
 public:
  explicit ToolWithFakes(const std::string& libraryPlace = "lib") {
    fs::create_directories(m_root.path() / "bin");
    fs::create_directories(m_root.path() / "lib");
    fs::copy_file(QM_TOOL, program());
    fs::create_symlink(QM_HOST_LIBRARY, m_root.path() / "lib" / "libqumetra.so");
    fs::create_symlink(QM_FAKE_WRITERS, m_root.path() / libraryPlace / "libQMWriterPlugins.so");
  }

  std::string program() const { return m_root.file("bin/qumetra"); }
  const fs::path& root() const { return m_root.path(); }

 private:
  TempDir m_root;
};

TEST(Fakes, ErrorInTheLogAloneFailsAndKeepsWhatWasMeasured) {
  const ToolWithFakes fakes;
  Tool tool(fakes.program());
  EXPECT_THAT(tool.run({"collect", "-t", "0.1", "-r", "first"}).err,
              Not(HasSubstr("what was measured is kept")));
  EXPECT_THAT(tool.temporaries(), IsEmpty());
  const ToolResult result = tool.run({"collect", "-t", "0.1", "-r", "logs"});
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.err, HasSubstr("what was measured is kept: qumetra replay "));
  ASSERT_EQ(1U, tool.temporaries().size());
  EXPECT_TRUE(fs::exists(tool.temporaries()[0] / "recording.qmrec"));
}

TEST(WritersCommand, ListsOptionSuffixAndDescription) {
  const ToolResult result = Tool().run({"writers"});
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_THAT(result.out, ContainsRegex("auto +\\.csv +Write summary data as single line to file "
                                        "Automation_Summary.csv\n"));
}

TEST(WritersCommand, JsonHasWhatTheCapabilityRecordsSay) {
  const ToolWithFakes fakes;
  rapidjson::Document document;
  document.Parse(Tool(fakes.program()).run({"writers", "--json"}).out.c_str());
  ASSERT_TRUE(document.IsArray());
  ASSERT_EQ(7U, document.Size());
  const auto& last = document[6];
  EXPECT_STREQ("last", last["option"].GetString());
  EXPECT_STREQ(".last", last["suffix"].GetString());
  EXPECT_STREQ("Writes last", last["description"].GetString());
  EXPECT_STREQ("guid-of-last", last["guid"].GetString());
  EXPECT_EQ(4, last["flags"].GetInt());
  EXPECT_TRUE(last["continuous"].GetBool());
  EXPECT_STREQ("last", last["version"]["name"].GetString());
}

TEST(WritersCommand, MakesNoFiles) {
  Tool tool;
  tool.run({"writers"});
  EXPECT_THAT(tool.files(), IsEmpty());
  EXPECT_THAT(tool.temporaries(), IsEmpty());
}

TEST(WritersCommand, LibraryIsFoundBesideTheProgramToo) {
  const ToolWithFakes fakes("bin");
  EXPECT_THAT(Tool(fakes.program()).run({"writers"}).out, HasSubstr("Writes last"));
}

TEST(WritersCommand, MissingLibraryNamesThePlacesThatWereTried) {
  const ToolWithFakes fakes;
  fs::remove(fakes.root() / "lib" / "libQMWriterPlugins.so");
  const ToolResult result = Tool(fakes.program()).run({"writers"});
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err, HasSubstr("qumetra: cannot find the writers: there is no "));
  EXPECT_THAT(result.err, HasSubstr((fakes.root() / "lib" / "libQMWriterPlugins.so").string()));
  EXPECT_THAT(result.err, HasSubstr((fakes.root() / "bin" / "libQMWriterPlugins.so").string()));
}

class FakeReplay : public ::testing::Test {
 protected:
  ToolResult replay(const std::string& writers, const Tool::Arguments& more = {}) {
    Tool::Arguments arguments = {"replay", m_recording, "-r", writers};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return m_tool.run(arguments);
  }

  ToolWithFakes m_fakes;
  Tool m_tool{m_fakes.program()};
  std::string m_recording =
      m_tool.write("r.qmrec", {R"({"recording":{"version":1}})",
                               R"({"metric":{"ref":"m","metricId":1,"name":"M"}})",
                               R"({"sample":{"metric":"m"}})", R"({"text":{"message":"t"}})"});
};

TEST_F(FakeReplay, FailedInitIsStatusOne) {
  const ToolResult result = replay("badinit,last");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "qumetra: writer badinit: init failed\n"
      "qumetra: writers tell their reasons with -v\n",
      result.err);
  EXPECT_EQ("", result.out);
}

TEST_F(FakeReplay, FailedFiniIsStatusOne) {
  const ToolResult result = replay("badfini");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "qumetra: writer badfini: fini failed\n"
      "qumetra: writers tell their reasons with -v\n",
      result.err);
}

TEST_F(FakeReplay, ThrowingWriterEndsNothing) {
  const ToolResult result = replay("throws");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("qumetra: writer throws: sample threw: no room\n", result.err);
}

TEST_F(FakeReplay, QuietTellsNothingAndHasTheStatusStill) {
  const ToolResult result = replay("badfini", {"-q"});
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", result.err);
}

TEST_F(FakeReplay, LoggedTextsGoToStandardError) {
  const ToolResult result = replay("logs");
  EXPECT_EQ("ERROR: \xff\n2WARNING: half line\n", result.err);
  EXPECT_EQ("", result.out);
}

TEST_F(FakeReplay, LoudTellsWhatWasDelivered) {
  EXPECT_EQ("qumetra: 1 samples delivered to first, last\n", replay("last,first", {"-v"}).err);
}

TEST_F(FakeReplay, FaultyRecordingIsStatusTwoThoughAWriterFailed) {
  m_recording = m_tool.write("bad.qmrec", {R"({"recording":{"version":1}})", "x"});
  EXPECT_EQ(2, replay("badinit").status);
}

}  // namespace
}  // namespace qumetra::test
