#include "tests/support/temp_dir.h"

#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <system_error>

#include <gtest/gtest.h>

namespace qumetra::test {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "qumetra_test_XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    throw std::filesystem::filesystem_error("mkdtemp", pattern,
                                            std::error_code(errno, std::generic_category()));
  }
  m_path = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::string TempDir::file(const std::string& name) const { return (m_path / name).string(); }

std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(in.is_open()) << path;
  return {std::istreambuf_iterator<char>(in), {}};
}

void writeFile(const std::filesystem::path& path, const std::string& bytes) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream out(path, std::ios::binary);
  out << bytes;
  ASSERT_TRUE(out.good()) << path;
}

}  // namespace qumetra::test
