// The directories of pw_files.
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/src/common/pw_files.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace pwr {
namespace {

namespace fs = std::filesystem;
using qumetra::test::LogCapture;
using qumetra::test::TempDir;
using qumetra::test::writeFile;

class DirectoriesTest : public testing::Test {
 protected:
  LogCapture m_log;
  TempDir m_dir;
};

using Mkpath = DirectoriesTest;

TEST_F(Mkpath, TakesThePartBehindTheLastSlashForAFile) {
  EXPECT_EQ(mkpath(m_dir.file("one/two/three")), 0);
  EXPECT_TRUE(fs::is_directory(m_dir.file("one/two")));
  EXPECT_FALSE(fs::exists(m_dir.file("one/two/three")));
}

TEST_F(Mkpath, MakesAllPartsOfAPathThatEndsInASlash) {
  EXPECT_EQ(mkpath(m_dir.file("one//two/")), 0);
  EXPECT_TRUE(fs::is_directory(m_dir.file("one/two")));
}

TEST_F(Mkpath, LetsAllDoAllInWhatItMakesWhereTheUserMasksNothing) {
  const mode_t former = ::umask(0);
  EXPECT_EQ(mkpath(m_dir.file("one/two/")), 0);
  ::umask(former);
  for (const char* name : {"one", "one/two"}) {
    struct stat status {};
    ASSERT_EQ(::stat(m_dir.file(name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0777U) << name;
  }
}

TEST_F(Mkpath, OfARelativePathWorksFromHere) {
  const fs::path former = fs::current_path();
  fs::current_path(m_dir.path());
  EXPECT_EQ(mkpath("one/two"), 0);
  EXPECT_EQ(mkpath("file"), 0);
  EXPECT_EQ(mkpath(""), 0);
  fs::current_path(former);
  EXPECT_TRUE(fs::is_directory(m_dir.file("one")));
  EXPECT_FALSE(fs::exists(m_dir.file("file")));
}

TEST_F(Mkpath, TellsStandardErrorWhyItFailed) {
  writeFile(m_dir.file("file"), "");
  testing::internal::CaptureStderr();
  EXPECT_EQ(mkpath(m_dir.file("file/one/")), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "mkdir error: Not a directory\n");
}

TEST_F(DirectoriesTest, TheToolPathIsTheDirectoryOfThisProgram) {
  std::string path = "old";
  ASSERT_TRUE(getToolPath(path));
  EXPECT_EQ(path, fs::read_symlink("/proc/self/exe").parent_path().string() + "/");
}

constexpr const char* kTempVariables[] = {"TMPDIR", "TMP", "TEMP", "TEMPDIR"};

/// The four variables unset as long as a test runs.
class TempDirectoryPath : public DirectoriesTest {
 protected:
  TempDirectoryPath() {
    for (const char* name : kTempVariables) {
      if (const char* value = std::getenv(name); value != nullptr) {
        m_former[name] = value;
      }
      ::unsetenv(name);
    }
  }
  ~TempDirectoryPath() override {
    for (const char* name : kTempVariables) {
      ::unsetenv(name);
    }
    for (const auto& [name, value] : m_former) {
      set(name.c_str(), value);
    }
  }
  static void set(const char* name, const std::string& value) { ::setenv(name, value.c_str(), 1); }

 private:
  std::map<std::string, std::string> m_former;
};

TEST_F(TempDirectoryPath, IsMadeInTheDirectoryOfTheVariable) {
  set("TMPDIR", m_dir.path().string());
  EXPECT_EQ(qm_temp_directory_path(), m_dir.path().string() + "/qumetra_tmp/");
  EXPECT_TRUE(fs::is_directory(m_dir.file("qumetra_tmp")));
  EXPECT_EQ(qm_temp_directory_path(), m_dir.path().string() + "/qumetra_tmp/");
}

TEST_F(TempDirectoryPath, TheFirstVariableThatIsSetWins) {
  const char* const names[] = {"TEMPDIR", "TEMP", "TMP", "TMPDIR"};
  for (const char* name : names) {
    fs::create_directory(m_dir.file(name));
    set(name, m_dir.file(name));
    EXPECT_EQ(qm_temp_directory_path(), m_dir.file(name) + "/qumetra_tmp/");
  }
}

TEST_F(TempDirectoryPath, WithoutAVariableItIsInTmp) {
  EXPECT_EQ(qm_temp_directory_path(), "/tmp/qumetra_tmp/");
}

TEST_F(TempDirectoryPath, AVariableThatNamesAFileYieldsTheCurrentDirectory) {
  writeFile(m_dir.file("file"), "");
  set("TMPDIR", m_dir.file("file"));
  EXPECT_EQ(qm_temp_directory_path(), "./");
}

TEST_F(TempDirectoryPath, AnEmptyVariableCountsAsSet) {
  set("TMPDIR", "");
  set("TMP", m_dir.path().string());
  EXPECT_EQ(qm_temp_directory_path(), "./");
}

TEST_F(TempDirectoryPath, AFileInItsPlaceIsTakenForItAsMakingADirectoryThereIsNoFailure) {
  writeFile(m_dir.file("qumetra_tmp"), "");
  set("TMPDIR", m_dir.path().string());
  testing::internal::CaptureStderr();
  EXPECT_EQ(qm_temp_directory_path(), m_dir.path().string() + "/qumetra_tmp/");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(fs::is_regular_file(m_dir.file("qumetra_tmp")));
}

TEST_F(TempDirectoryPath, ADirectoryThatCannotBeMadeYieldsTheCurrentDirectory) {
  set("TMPDIR", "/proc");
  testing::internal::CaptureStderr();
  EXPECT_EQ(qm_temp_directory_path(), "./");
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::StartsWith("mkdir error: "));
}

}  // namespace
}  // namespace pwr
