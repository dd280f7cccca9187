#include "qumetra/cli/result_format.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "qumetra/cli/command.h"
#include "qumetra/readers/byte_source.h"

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

/// What keeps the file from being read, as an error number; 0 for nothing. Opens nothing: opening a
/// pipe waits for its other end.
int errorOfReading(const std::string& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) {
    return errno;
  }
  if (S_ISDIR(status.st_mode)) {
    return EISDIR;
  }
  return ::faccessat(AT_FDCWD, file.c_str(), R_OK, AT_EACCESS) == 0 ? 0 : errno;
}

ResultFormat formatOfFile(const std::string& file) {
  const std::filesystem::path suffix = std::filesystem::path(file).extension();
  if (suffix == ".pwr" || isImportStream(file)) {
    return ResultFormat::Pwr;
  }
  if (suffix == ".qmbin") {
    return ResultFormat::Qmbin;
  }
  if (const int error = errorOfReading(file); error != 0) {
    throw ReadError(file + ": " + std::generic_category().message(error));
  }
  throw UsageError(file +
                   ": not known as a result that can be read back; expected a name, of a pipe too, "
                   "that ends in .qmbin or .pwr");
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
