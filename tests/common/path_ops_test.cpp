#include "client/src/common/path_ops.h"

#include <csignal>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace pwr {
namespace {

std::pair<std::string, std::string> cut(const std::string& path) {
  std::pair<std::string, std::string> parts{"old", "old"};
  extract_dir_and_file_from_path(path, parts.first, parts.second);
  return parts;
}

using Parts = std::pair<std::string, std::string>;

TEST(ExtractDirAndFile, WithoutASlashTheDirectoryIsTheCurrentOne) {
  EXPECT_EQ(cut("file.csv"), Parts("./", "file.csv"));
}

TEST(ExtractDirAndFile, TheDirectoryKeepsTheLastSlash) {
  EXPECT_EQ(cut("/a/b/file"), Parts("/a/b/", "file"));
  EXPECT_EQ(cut("/file"), Parts("/", "file"));
}

TEST(ExtractDirAndFile, WithASlashAtTheEndTheFileIsEmpty) {
  EXPECT_EQ(cut("a/b/"), Parts("a/b/", ""));
  EXPECT_EQ(cut("/"), Parts("/", ""));
}

TEST(ExtractDirAndFile, ThePathMayBeOneOfTheResults) {
  std::string path = "a/b";
  std::string file;
  extract_dir_and_file_from_path(path, path, file);
  EXPECT_EQ(path, "a/");
  EXPECT_EQ(file, "b");
}

TEST(ExtractDirAndFileDeathTest, AnEmptyPathStopsTheProcess) {
  EXPECT_EXIT(cut(""), testing::KilledBySignal(SIGABRT), "client/src/common/pw_utils.*size > 0");
}

TEST(PathOps, TheFilenameStandsBehindTheLastSeparator) {
  EXPECT_EQ(PathOps::getFilenameFromPath("/a/b.csv"), "b.csv");
  EXPECT_EQ(PathOps::getFilenameFromPath("b.csv"), "b.csv");
  EXPECT_EQ(PathOps::getFilenameFromPath("/a/"), "");
  EXPECT_EQ(PathOps::getFilenameFromPath(""), "");
}

TEST(PathOps, TheSeparatorIsASlash) {
  EXPECT_EQ(PathOps::getPathSeparator(), "/");
  EXPECT_EQ(PathOps::m_pathSeparator, "/");
}

TEST(PathOps, BackslashesBecomeSeparators) {
  EXPECT_EQ(PathOps::normalizePathSeparator("a\\b\\c/d"), "a/b/c/d");
  EXPECT_EQ(PathOps::normalizePathSeparator(""), "");
}

}  // namespace
}  // namespace pwr
