#include "tests/support/temp_dir.h"

#include <stdlib.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace qumetra::test {
namespace {

TEST(TempDir, IsRemovedWithAllItHolds) {
  std::optional<TempDir> directory(std::in_place);
  const std::filesystem::path path = directory->path();
  writeFile(directory->file("below/file"), "bytes");
  directory.reset();
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TempDir, LeavesQmjsonDocumentsUnderTheNameOfTheTest) {
  const TempDir target;
  ASSERT_EQ(::setenv("QM_KEEP_QMJSON", target.file("kept").c_str(), 1), 0);
  {
    const TempDir directory;
    writeFile(directory.file("below/run.qmjson"), "{}");
    writeFile(directory.file("run.json"), "{}");
  }
  ASSERT_EQ(::unsetenv("QM_KEEP_QMJSON"), 0);
  int found = 0;
  for (const auto& entry : std::filesystem::directory_iterator(target.file("kept"))) {
    ++found;
    const std::string name = entry.path().filename().string();
    EXPECT_EQ(name.find("TempDir.LeavesQmjsonDocumentsUnderTheNameOfTheTest_"), 0U) << name;
    EXPECT_EQ(readFile(entry.path()), "{}");
  }
  EXPECT_EQ(found, 1);
}

}  // namespace
}  // namespace qumetra::test
