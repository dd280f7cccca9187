#include "qumetra/run/temp_area.h"

#include <stdlib.h>
#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qumetra/run/run_error.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

/// Takes the variables of the temporary directory out of the environment.
class TempAreaTest : public ::testing::Test {
 protected:
  TempAreaTest() { clearEnvironment(); }
  ~TempAreaTest() override { clearEnvironment(); }

  static void clearEnvironment() {
    for (const char* name : {"TMPDIR", "TMP", "TEMP", "TEMPDIR"}) {
      ::unsetenv(name);
    }
  }

  TempDir m_base;
};

TEST_F(TempAreaTest, IsForItsOwnerOnly) {
  ::setenv("TMPDIR", m_base.path().c_str(), 1);
  const TempArea area;
  struct stat status {};
  ASSERT_EQ(0, ::stat(area.path().c_str(), &status));
  EXPECT_EQ(0700U, status.st_mode & 07777U);
}

TEST_F(TempAreaTest, LiesUnderTmpdirAndTmpdirNamesIt) {
  ::setenv("TMPDIR", m_base.path().c_str(), 1);
  const TempArea area;
  EXPECT_EQ(m_base.path(), area.path().parent_path());
  EXPECT_EQ(area.path(), ::getenv("TMPDIR"));
}

TEST_F(TempAreaTest, TakesTheFirstVariableThatIsSet) {
  ::setenv("TEMP", "/nowhere", 1);
  ::setenv("TMP", m_base.path().c_str(), 1);
  EXPECT_EQ(m_base.path(), TempArea().path().parent_path());
}

TEST_F(TempAreaTest, LiesInTmpWhenNothingIsSet) {
  EXPECT_EQ("/tmp", TempArea().path().parent_path());
}

TEST_F(TempAreaTest, LiesInTmpWhenTmpdirIsEmpty) {
  ::setenv("TMPDIR", "", 1);
  EXPECT_EQ("/tmp", TempArea().path().parent_path());
}

TEST_F(TempAreaTest, StaysWhereItIsKept) {
  std::filesystem::path path;
  {
    TempArea area;
    area.keep();
    path = area.path();
  }
  EXPECT_TRUE(std::filesystem::is_empty(path));
  std::filesystem::remove(path);
}

TEST_F(TempAreaTest, TwoAreasAreApart) {
  ::setenv("TMPDIR", m_base.path().c_str(), 1);
  const TempArea one;
  const TempArea other;
  EXPECT_NE(one.path(), other.path());
}

TEST_F(TempAreaTest, GoesWithAllItHolds) {
  ::setenv("TMPDIR", m_base.path().c_str(), 1);
  {
    const TempArea area;
    writeFile(area.path() / "deep" / "file", "x");
  }
  EXPECT_TRUE(fs::is_empty(m_base.path()));
}

TEST_F(TempAreaTest, RestoresTmpdir) {
  ::setenv("TMPDIR", m_base.path().c_str(), 1);
  {
    const TempArea area;
    EXPECT_EQ(m_base.path().string(), area.formerTmpdir());
  }
  EXPECT_EQ(m_base.path(), ::getenv("TMPDIR"));
}

TEST_F(TempAreaTest, RemovesTmpdirWhenItWasNotSet) {
  { const TempArea area; }
  EXPECT_EQ(nullptr, ::getenv("TMPDIR"));
}

TEST_F(TempAreaTest, RelativeBaseGivesAnAbsolutePath) {
  fs::current_path(m_base.path());
  ::setenv("TMPDIR", ".", 1);
  EXPECT_TRUE(TempArea().path().is_absolute());
  fs::current_path("/");
}

TEST_F(TempAreaTest, BaseThatIsMissingIsAnErrorThatNamesIt) {
  ::setenv("TMPDIR", "/nowhere", 1);
  try {
    const TempArea area;
    FAIL() << "no error";
  } catch (const RunError& error) {
    EXPECT_THAT(error.what(), AllOf(HasSubstr("cannot make a temporary directory in \"/nowhere\""),
                                    HasSubstr("No such file or directory")));
  }
}

}  // namespace
}  // namespace qumetra::test
