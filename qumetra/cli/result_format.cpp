#include "qumetra/cli/result_format.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "qumetra/cli/command.h"

namespace qumetra::cli {
namespace {

/// What an import stream usually begins with, whatever its name is. No whole .qmbin file does.
constexpr std::string_view kImportStreamMark{"\x00\x00\x00\x08", 4};

/// Regular files only: what is read of a pipe is gone.
bool isImportStream(const std::string& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    return false;
  }
  std::array<char, kImportStreamMark.size()> start{};
  std::ifstream in(file, std::ios::binary);
  in.read(start.data(), start.size());
  return in.gcount() == std::streamsize{start.size()} &&
         std::string_view(start.data(), start.size()) == kImportStreamMark;
}

ResultFormat formatOfFile(const std::string& file) {
  const std::filesystem::path suffix = std::filesystem::path(file).extension();
  if (suffix == ".pwr" || isImportStream(file)) {
    return ResultFormat::Pwr;
  }
  if (suffix == ".qmbin") {
    return ResultFormat::Qmbin;
  }
  throw UsageError(file + ": not a result that can be read back; expected a .qmbin or .pwr file");
}

}  // namespace

ResultFormat formatOf(const std::vector<std::string>& files) {
  const ResultFormat format = formatOfFile(files.at(0));
  for (std::size_t i = 1; i < files.size(); ++i) {
    if (formatOfFile(files[i]) != format) {
      throw UsageError(files[i] + ": not of the same format as " + files[0]);
    }
  }
  return format;
}

}  // namespace qumetra::cli
