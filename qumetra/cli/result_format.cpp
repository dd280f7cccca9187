#include "qumetra/cli/result_format.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "qumetra/cli/command.h"

namespace qumetra::cli {
namespace {

/// What an import stream begins with, whatever its name is. A .qmbin file has no such mark.
constexpr std::string_view kImportStreamMark{"\x00\x00\x00\x08", 4};

bool isImportStream(const std::string& file) {
  std::array<char, kImportStreamMark.size()> start{};
  std::ifstream in(file, std::ios::binary);
  in.read(start.data(), start.size());
  return in.gcount() == std::streamsize{start.size()} &&
         std::string_view(start.data(), start.size()) == kImportStreamMark;
}

}  // namespace

ResultFormat formatOf(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    if (isImportStream(file)) {
      throw UsageError(file + ": an import stream, not a .qmbin file");
    }
    if (std::filesystem::path(file).extension() != ".qmbin") {
      throw UsageError(file + ": not a result that can be read back; expected a .qmbin file");
    }
  }
  return ResultFormat::Qmbin;
}

}  // namespace qumetra::cli
