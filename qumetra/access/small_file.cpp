#include "qumetra/access/small_file.h"

#include <fstream>

#include "qumetra/access/access_place.h"

namespace qumetra {

std::optional<std::string> readFirstLine(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  return std::getline(file, line) ? std::optional(line) : std::nullopt;
}

std::optional<std::uint64_t> readHexOrDecimal(const std::string& path) {
  const auto line = readFirstLine(path);
  return line ? parseHexOrDecimal(*line) : std::nullopt;
}

}  // namespace qumetra
