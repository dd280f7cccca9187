#include "qumetra/run/output_check.h"

#include <unistd.h>

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qumetra/run/writer_library.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
namespace fs = std::filesystem;

LoadedWriter writerOf(const std::string& option, const std::string& suffix) {
  LoadedWriter writer;
  writer.option = option;
  writer.suffix = suffix;
  return writer;
}

/// Makes the process act as a user without rights, as long as it lives: nothing is denied to the
/// superuser. Another user stays who it is.
class OrdinaryUser {
 public:
  OrdinaryUser() : m_former(::geteuid()) {
    if (m_former == 0) {
      EXPECT_EQ(0, ::seteuid(kNobody));
    }
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;
  ~OrdinaryUser() { EXPECT_EQ(0, ::seteuid(m_former)); }

 private:
  static constexpr uid_t kNobody = 65534;

  uid_t m_former;
};

constexpr auto kNobodyWrites = static_cast<fs::perms>(0555);

std::vector<std::string> pathsOf(const std::vector<OutputFile>& files) {
  std::vector<std::string> paths;
  paths.reserve(files.size());
  for (const OutputFile& file : files) {
    paths.push_back(file.path);
  }
  return paths;
}

TEST(ResultFiles, AreBaseAndSuffix) {
  const auto files = resultFiles(writerOf("int", "_trace.csv"), "a/b");
  EXPECT_THAT(pathsOf(files), ElementsAre("a/b_trace.csv"));
  EXPECT_FALSE(files[0].mayBeLink);
}

TEST(ResultFiles, OfTheAutomationSummaryHasANameOfItsOwn) {
  const auto files = resultFiles(writerOf("auto", ".csv"), "a/b");
  EXPECT_THAT(pathsOf(files), ElementsAre("Automation_Summary.csv"));
  EXPECT_TRUE(files[0].mayBeLink);
  EXPECT_TRUE(files[0].mustBeRegular);
}

TEST(ResultFiles, OfTheAutomationSummaryHasADirectoryThatEndsInABackslash) {
  EXPECT_THAT(pathsOf(resultFiles(writerOf("auto", ".csv"), "a\\b\\c")),
              ElementsAre("a\\b\\Automation_Summary.csv"));
}

TEST(ResultFiles, OfPhmAreNotWhatTheSuffixSays) {
  EXPECT_THAT(pathsOf(resultFiles(writerOf("phm-csv", ".csv"), "a/b")),
              ElementsAre("a/b_phm.csv", "a/b_meta_phm.csv"));
}

TEST(OutputCheck, NewFileInADirectoryIsFineAndNotMade) {
  const TempDir directory;
  EXPECT_EQ("", checkOutputFile({directory.file("x.csv")}));
  EXPECT_TRUE(fs::is_empty(directory.path()));
}

TEST(OutputCheck, PlainNameLiesInTheCurrentDirectory) {
  const TempDir directory;
  fs::current_path(directory.path());
  EXPECT_EQ("", checkOutputFile({"x.csv"}));
  EXPECT_EQ("", checkOutputFile({"new/x.csv"}));
  fs::current_path("/");
}

TEST(OutputCheck, ExistingFileKeepsItsBytes) {
  const TempDir directory;
  writeFile(directory.file("x.csv"), "old");
  EXPECT_EQ("", checkOutputFile({directory.file("x.csv")}));
  EXPECT_EQ("old", readFile(directory.file("x.csv")));
}

TEST(OutputCheck, MissingDirectoriesThatCouldBeMadeAreFineAndNotMade) {
  const TempDir directory;
  EXPECT_EQ("", checkOutputFile({directory.file("a/b/x.csv")}));
  EXPECT_TRUE(fs::is_empty(directory.path()));
}

TEST(OutputCheck, DirectoryInThePlaceOfTheFileIsBad) {
  const TempDir directory;
  fs::create_directory(directory.file("x.csv"));
  EXPECT_EQ(directory.file("x.csv") + ": Is a directory",
            checkOutputFile({directory.file("x.csv")}));
}

TEST(OutputCheck, NameOfADirectoryThatIsMissingIsBad) {
  const TempDir directory;
  const std::string path = directory.file("none/");
  EXPECT_EQ(path + ": Is a directory", checkOutputFile({path}));
}

TEST(OutputCheck, LinkIsBadWhereItIsNotFollowed) {
  const TempDir directory;
  const std::string link = directory.file("x.csv");
  fs::create_symlink("target.csv", link);
  const std::string refusal = link + ": is a symbolic link, which results are not written through";
  EXPECT_EQ(refusal, checkOutputFile({link}));
  EXPECT_EQ("", checkOutputFile({.path = link, .mayBeLink = true}));
  writeFile(directory.file("target.csv"), "");
  EXPECT_EQ(refusal, checkOutputFile({link}));
}

TEST(OutputCheck, SameFileIsKnownByAnyOfItsNames) {
  const TempDir directory;
  const std::string path = directory.file("x.csv");
  EXPECT_TRUE(isSameFile(path, directory.file("./x.csv")));
  EXPECT_FALSE(isSameFile(path, directory.file("y.csv")));
  writeFile(path, "");
  fs::create_hard_link(path, directory.file("y.csv"));
  EXPECT_TRUE(isSameFile(path, directory.file("y.csv")));
}

TEST(OutputCheck, FileInThePlaceOfADirectoryIsBad) {
  const TempDir directory;
  writeFile(directory.file("a"), "");
  EXPECT_EQ(directory.file("a/b/x.csv") + ": Not a directory",
            checkOutputFile({directory.file("a/b/x.csv")}));
}

TEST(OutputCheck, NameThatIsTooLongIsBad) {
  const TempDir directory;
  const std::string path = directory.file(std::string(300, 'x'));
  EXPECT_EQ(path + ": File name too long", checkOutputFile({path}));
}

TEST(OutputCheck, DirectoryOfTheKernelIsBadForTheSuperuserToo) {
  EXPECT_EQ("/proc: Read-only file system", checkOutputFile({"/proc/qumetra/x.csv"}));
}

TEST(OutputCheck, DirectoryWithoutWritePermissionIsBad) {
  const TempDir directory;
  fs::permissions(directory.path(), kNobodyWrites);
  const OrdinaryUser user;
  EXPECT_EQ(directory.path().string() + ": Permission denied",
            checkOutputFile({directory.file("x.csv")}));
}

TEST(OutputCheck, FileWithoutWritePermissionIsBad) {
  const TempDir directory;
  writeFile(directory.file("x.csv"), "");
  fs::permissions(directory.file("x.csv"), kNobodyWrites);
  fs::permissions(directory.path(), static_cast<fs::perms>(0777));
  const OrdinaryUser user;
  EXPECT_EQ(directory.file("x.csv") + ": Permission denied",
            checkOutputFile({directory.file("x.csv")}));
}

}  // namespace
}  // namespace qumetra::test
