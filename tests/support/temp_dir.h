// A directory that lives as long as a test.
#pragma once

#include <filesystem>
#include <string>

namespace qumetra::test {

/// A fresh empty directory, removed with all it holds at the end. The .qmjson documents in it are
/// copied to the directory that QM_KEEP_QMJSON names, if it is set: they are checked together
/// later.
class TempDir {
 public:
  TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir();

  const std::filesystem::path& path() const { return m_path; }
  /// The path of `name` in the directory.
  std::string file(const std::string& name) const;

 private:
  std::filesystem::path m_path;
};

/// The whole of a file. Fails the test and returns nothing when it cannot be read.
std::string readFile(const std::filesystem::path& path);
/// Makes or replaces a file, with the directories above it.
void writeFile(const std::filesystem::path& path, const std::string& bytes);

}  // namespace qumetra::test
