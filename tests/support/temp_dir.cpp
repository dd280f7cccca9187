#include "tests/support/temp_dir.h"

#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <system_error>

#include <gtest/gtest.h>

namespace qumetra::test {
namespace {

/// The running test; a name that no other process has.
std::string nameOfTest() {
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string name = std::to_string(::getpid());
  if (test != nullptr) {
    name = std::string(test->test_suite_name()) + "." + test->name() + "_" + name;
  }
  return name;
}

void keepDocuments(const std::filesystem::path& directory) {
  const char* target = ::getenv("QM_KEEP_QMJSON");
  if (target == nullptr) {
    return;
  }
  std::filesystem::create_directories(target);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
    if (entry.is_regular_file() && entry.path().extension() == ".qmjson") {
      std::filesystem::copy_file(
          entry.path(),
          std::filesystem::path(target) / (nameOfTest() + "_" + entry.path().filename().string()),
          std::filesystem::copy_options::overwrite_existing);
    }
  }
}

}  // namespace

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "qumetra_test_XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    throw std::filesystem::filesystem_error("mkdtemp", pattern,
                                            std::error_code(errno, std::generic_category()));
  }
  m_path = pattern;
}

TempDir::~TempDir() {
  try {
    keepDocuments(m_path);
  } catch (const std::filesystem::filesystem_error& error) {
    ADD_FAILURE() << error.what();
  }
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
