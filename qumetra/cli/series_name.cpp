#include "qumetra/cli/series_name.h"

#include <charconv>
#include <cstdint>
#include <string_view>

namespace qumetra::cli {
namespace {

constexpr std::string_view kSuffix = ".qmbin";

}  // namespace

std::optional<SeriesPlace> placeInSeries(const std::string& file) {
  std::string_view base = file;
  if (!base.ends_with(kSuffix)) {
    return std::nullopt;
  }
  base.remove_suffix(kSuffix.size());
  const std::size_t mark = base.rfind('_');
  if (mark == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view digits = base.substr(mark + 1);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size() || number == 0) {
    return std::nullopt;
  }
  const auto numbered = [front = std::string(base.substr(0, mark + 1))](std::uint32_t index) {
    return front + std::to_string(index).append(kSuffix);
  };
  return SeriesPlace{.firstFile = numbered(0), .fileBefore = numbered(number - 1)};
}

}  // namespace qumetra::cli
