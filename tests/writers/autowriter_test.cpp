// The automation summary: the columns of every run, and what its file holds after several runs.
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "host/messages.h"
#include "host/metric.h"
#include "host/system_metadata.h"
#include "tests/writers/autowriter_fixture.h"

namespace {

using qumetra::test::AutoWriterTest;
using qumetra::test::kFile;
using qumetra::test::readFile;
using qumetra::test::RecordingSink;
using qumetra::test::Texts;
using qumetra::test::writeFile;

constexpr const char* kError = "ERROR: Could not open automation summary file.\n";

// The columns of every run.

TEST_F(AutoWriterTest, InitAddsTheOutputName) {
  EXPECT_EQ(m_writer.init("run", false), 0);
  EXPECT_EQ(summary(), "Output_Name,\nrun,\n");
}

TEST_F(AutoWriterTest, ContinuousModeMakesNoDifference) {
  EXPECT_EQ(m_writer.init("run", true), 0);
  EXPECT_EQ(summary(), "Output_Name,\nrun,\n");
}

TEST_F(AutoWriterTest, NothingIsWrittenBeforeTheEnd) {
  m_writer.init("run", false);
  titleTable("T", {"Core", "Value"});
  row("T", {"0", "1"});
  EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));
}

TEST_F(AutoWriterTest, SecondInitAppendsAgain) {
  m_writer.init("first", false);
  m_writer.init("second", false);
  EXPECT_EQ(summary(), "Output_Name,Output_Name,\nfirst,second,\n");
}

TEST_F(AutoWriterTest, RunAfterTheEndKeepsTheColumnsOfTheOneBefore) {
  m_writer.init("first", false);
  ASSERT_EQ(m_writer.fini(), 0);
  m_writer.init("second", false);
  EXPECT_EQ(summary(), "Output_Name,\nfirst,\nOutput_Name,Output_Name,\nfirst,second,\n");
}

TEST_F(AutoWriterTest, SystemMessageAddsStartAndDuration) {
  pwr::SystemMetadata metadata;
  metadata.m_collectionStartTime = "Tue May  5 10:00:00 2026";
  metadata.m_collectionDurationSec = 12.5;
  pwr::SystemMessage message;
  message.m_metadata = &metadata;
  m_writer.init("run", false);
  EXPECT_EQ(m_writer.writeMessage(message), 0);
  EXPECT_EQ(summary(),
            "Output_Name,Collection_Time,Duration (sec),\n"
            "run,Tue May  5 10:00:00 2026,12.5,\n");
}

TEST_F(AutoWriterTest, DurationHasSixSignificantDigits) {
  pwr::SystemMetadata metadata;
  pwr::SystemMessage message;
  message.m_metadata = &metadata;
  for (const double seconds : {12.3456789, 1234567.0, 100.0}) {
    metadata.m_collectionDurationSec = seconds;
    m_writer.writeMessage(message);
  }
  EXPECT_TRUE(summary().ends_with("\n,12.3457,,1.23457e+06,,100,\n"));
}

TEST_F(AutoWriterTest, SystemMessageWithoutMetadataFailsAndAddsNothing) {
  m_writer.init("run", false);
  EXPECT_EQ(m_writer.writeMessage(pwr::SystemMessage()), 1);
  EXPECT_EQ(summary(), "Output_Name,\nrun,\n");
}

TEST_F(AutoWriterTest, TextsAndSamplesAreNotTaken) {
  m_writer.init("run", false);
  EXPECT_EQ(m_writer.writeMessage(pwr::TextMessage()), 0);
  EXPECT_EQ(m_writer.writeMessage(pwr::Metric()), 0);
  EXPECT_EQ(summary(), "Output_Name,\nrun,\n");
}

// Where the file stands.

TEST_F(AutoWriterTest, OnlyABackslashEndsADirectory) {
  m_writer.init(m_dir.file("sub\\dir\\run"), false);
  ASSERT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(readFile(m_dir.file("sub\\dir\\Automation_Summary.csv")),
            "Output_Name,\n" + m_dir.file("sub\\dir\\run") + ",\n");
}

TEST_F(AutoWriterTest, NameWithForwardSlashesPutsTheFileIntoTheCurrentDirectory) {
  std::filesystem::create_directory("sub");
  m_writer.init("sub/run", false);
  EXPECT_EQ(summary(), "Output_Name,\nsub/run,\n");
  EXPECT_TRUE(std::filesystem::is_empty("sub"));
}

// When a header is written.

TEST_F(AutoWriterTest, SecondRunWithEqualColumnsWritesItsLineOnly) {
  EXPECT_EQ(run("one", {"A"}), 0);
  EXPECT_EQ(run("two", {"A"}), 0);
  EXPECT_EQ(readFile(kFile), "Output_Name,T_Key_k_A,\none,v,\ntwo,v,\n");
}

TEST_F(AutoWriterTest, RunWithOtherColumnsWritesANewHeaderBelow) {
  run("one", {"A"});
  run("two", {"A", "B"});
  EXPECT_EQ(readFile(kFile),
            "Output_Name,T_Key_k_A,\none,v,\nOutput_Name,T_Key_k_A,T_Key_k_B,\ntwo,v,v,\n");
}

TEST_F(AutoWriterTest, LastHeaderDecides) {
  run("one", {"A"});
  run("two", {"B"});
  run("three", {"B"});
  run("four", {"A"});
  EXPECT_EQ(readFile(kFile),
            "Output_Name,T_Key_k_A,\none,v,\n"
            "Output_Name,T_Key_k_B,\ntwo,v,\nthree,v,\n"
            "Output_Name,T_Key_k_A,\nfour,v,\n");
}

TEST_F(AutoWriterTest, HeaderThatOnlyBeginsEqualIsAnotherHeader) {
  run("one", {"A", "B"});
  run("two", {"A"});
  EXPECT_EQ(readFile(kFile),
            "Output_Name,T_Key_k_A,T_Key_k_B,\none,v,v,\nOutput_Name,T_Key_k_A,\ntwo,v,\n");
}

TEST_F(AutoWriterTest, FileWithoutHeaderGetsOneBehindWhatItHolds) {
  writeFile(m_dir.file(kFile), "notes of a person\n Output_Name,\n");
  run("one", {});
  EXPECT_EQ(readFile(kFile), "notes of a person\n Output_Name,\nOutput_Name,\none,\n");
}

TEST_F(AutoWriterTest, DataLineThatBeginsAsAHeaderIsTakenForOne) {
  run("Output_Name_1", {});
  run("two", {});
  EXPECT_EQ(readFile(kFile), "Output_Name,\nOutput_Name_1,\nOutput_Name,\ntwo,\n");
}

TEST_F(AutoWriterTest, SuccessIsSilent) {
  run("one", {"A"});
  EXPECT_TRUE(m_log.errors().empty());
  EXPECT_TRUE(m_log.warnings().empty());
}

// What can go wrong at the end.

TEST_F(AutoWriterTest, FileThatCannotBeOpenedIsAnError) {
  std::filesystem::create_directory(kFile);
  EXPECT_EQ(run("one", {}), 1);
  EXPECT_EQ(m_log.errors(), (RecordingSink::Texts{{LogSink::kError, kError}}));
  EXPECT_TRUE(m_log.warnings().empty());
}

TEST_F(AutoWriterTest, FileThatCannotBeOpenedIsSilentAtVerbosityZero) {
  m_log.environment().verbosity = PluginEnvironment::kQuiet;
  std::filesystem::create_directory(kFile);
  EXPECT_EQ(run("one", {}), 1);
  EXPECT_TRUE(m_log.errors().empty());
}

/// No file of this process grows past a size, as on a full disk, as long as this lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : m_formerHandler(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &m_formerLimit);
    const rlimit limit{bytes, m_formerLimit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &m_formerLimit);
    std::signal(SIGXFSZ, m_formerHandler);
  }

 private:
  void (*m_formerHandler)(int);
  rlimit m_formerLimit{};
};

TEST_F(AutoWriterTest, FileThatTakesNoMoreIsAnErrorAndKeepsItsLines) {
  run("one", {});
  const std::string before = readFile(kFile);
  {
    const FileSizeLimit limit(before.size());
    EXPECT_EQ(run("two", {}), 1);
  }
  EXPECT_EQ(m_log.errors(), (RecordingSink::Texts{{LogSink::kError, kError}}));
  EXPECT_EQ(readFile(kFile), before);
}

}  // namespace
