#include "qumetra/run/writer_library.h"

#include <stdlib.h>

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qumetra/run/run_error.h"
#include "tests/run/fake_library.h"
#include "tests/support/log_capture.h"
#include "writers/writer_plugins.h"

namespace qumetra::test {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// The message of the `RunError` that loading the library throws.
std::string loadingError(const std::string& path) {
  try {
    WriterLibrary library(path);
  } catch (const RunError& error) {
    return error.what();
  }
  return "no error";
}

class WriterLibraryTest : public ::testing::Test {
 protected:
  ~WriterLibraryTest() override { ::unsetenv(kCreateVariable); }

  LogCapture m_log;
};

TEST_F(WriterLibraryTest, ListsTheWritersInTheOrderOfTheLibraryWithoutNullEntries) {
  const WriterLibrary library(QM_FAKE_WRITERS);
  EXPECT_EQ("first, badinit, badfini, throws, throwsptr, logs, last", library.knownNames());
}

TEST_F(WriterLibraryTest, DescribesAWriterFromItsCapabilityRecord) {
  const WriterLibrary library(QM_FAKE_WRITERS);
  const LoadedWriter& writer = library.writers().front();
  EXPECT_EQ("first", writer.option);
  EXPECT_EQ(".first", writer.suffix);
  EXPECT_EQ("Writes first", writer.description);
  EXPECT_EQ("guid-of-first", writer.guid);
  EXPECT_EQ(0, writer.flags);
  EXPECT_FALSE(writer.continuous());
}

TEST_F(WriterLibraryTest, TellsWritersForContinuousRunsByTheirFlag) {
  const WriterLibrary library(QM_FAKE_WRITERS);
  EXPECT_EQ(4, library.find("last")->flags);
  EXPECT_TRUE(library.find("last")->continuous());
}

TEST_F(WriterLibraryTest, AsksEachWriterForItsVersion) {
  const WriterLibrary library(QM_FAKE_WRITERS);
  EXPECT_THAT(library.find("logs")->version, ElementsAre(std::pair("name", "logs")));
}

TEST_F(WriterLibraryTest, AssignsTheIdsFromZeroUp) {
  const WriterLibrary library(QM_FAKE_WRITERS);
  EXPECT_EQ(0, library.find("first")->plugin->m_id);
  EXPECT_EQ(6, library.find("last")->plugin->m_id);
}

TEST_F(WriterLibraryTest, FindsNothingUnderAnUnknownName) {
  const WriterLibrary library(QM_FAKE_WRITERS);
  EXPECT_EQ(nullptr, library.find("First"));
}

TEST_F(WriterLibraryTest, TellsAllPluginsTheOptionsAndThenThatTheCommandLineWasRead) {
  WriterLibrary library(QM_FAKE_WRITERS);
  fakeCalls().clear();
  library.commandLineRead({"verbosity=2", "log-tag=x"});
  ASSERT_EQ(21U, fakeCalls().size());
  EXPECT_EQ("first.option(verbosity=2)", fakeCalls()[0]);
  EXPECT_EQ("last.option(verbosity=2)", fakeCalls()[6]);
  EXPECT_EQ("first.option(log-tag=x)", fakeCalls()[7]);
  EXPECT_EQ("first.commandLineRead", fakeCalls()[14]);
  EXPECT_EQ("last.commandLineRead", fakeCalls()[20]);
}

TEST_F(WriterLibraryTest, GivesTheListBackAtItsEnd) {
  { const WriterLibrary library(QM_FAKE_WRITERS); }
  EXPECT_EQ("destroyed", fakeCalls().back());
}

TEST_F(WriterLibraryTest, FileThatIsMissingIsAnError) {
  EXPECT_THAT(loadingError("/nowhere/libWriters.so"),
              AllOf(HasSubstr("cannot load the writers"), HasSubstr("/nowhere/libWriters.so")));
}

TEST_F(WriterLibraryTest, LibraryWithoutTheEntryPointsIsAnError) {
  EXPECT_THAT(loadingError(QM_HOST_LIBRARY),
              HasSubstr("is no library of writers: it has no function createPlugins"));
}

TEST_F(WriterLibraryTest, NoMemoryForTheListIsAnError) {
  ::setenv(kCreateVariable, "null", 1);
  EXPECT_THAT(loadingError(QM_FAKE_WRITERS), HasSubstr("cannot make its writers: no memory"));
}

TEST_F(WriterLibraryTest, ConstructorThatThrowsIsAnError) {
  ::setenv(kCreateVariable, "throw", 1);
  EXPECT_THAT(loadingError(QM_FAKE_WRITERS), HasSubstr("cannot make its writers: no constructor"));
}

TEST_F(WriterLibraryTest, EmptyListHasNoWriters) {
  ::setenv(kCreateVariable, "none", 1);
  EXPECT_TRUE(WriterLibrary(QM_FAKE_WRITERS).writers().empty());
}

TEST_F(WriterLibraryTest, DefaultPathIsInTheLibraryDirectoryBesideTheProgram) {
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
  const auto expected = program.parent_path().parent_path() / "lib" / "libQMWriterPlugins.so";
  EXPECT_EQ(expected.string(), WriterLibrary::defaultPath());
}

TEST_F(WriterLibraryTest, LoadsTheRealLibraryWithTheAutomationWriter) {
  const WriterLibrary library(QM_REAL_WRITERS);
  ASSERT_NE(nullptr, library.find("auto"));
  EXPECT_EQ("894d2fa0-61c8-11e7-9598-0800200c9a66", library.find("auto")->guid);
  EXPECT_EQ(".csv", library.find("auto")->suffix);
}

}  // namespace
}  // namespace qumetra::test
