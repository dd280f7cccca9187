#include "qumetra/model/parent_directory.h"

#include <filesystem>
#include <system_error>

namespace qumetra {

void makeParentDirectory(const std::string& file) {
  const std::filesystem::path directory = std::filesystem::path(file).parent_path();
  if (directory.empty()) {
    return;
  }
  std::error_code ignored;
  std::filesystem::create_directories(directory, ignored);
}

}  // namespace qumetra
