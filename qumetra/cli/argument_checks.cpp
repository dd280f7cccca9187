#include "qumetra/cli/argument_checks.h"

#include <string>

#include <fmt/format.h>

namespace qumetra::cli {

CLI::Validator nonEmpty() {
  return CLI::Validator(
      [](const std::string& text) { return text.empty() ? "needs a name" : std::string(); }, "");
}

CLI::Validator numberBetween(double lowest, double highest) {
  const auto check = [lowest, highest](const std::string& text) {
    double value = 0;
    const bool isFine =
        CLI::detail::lexical_cast(text, value) && value >= lowest && value <= highest;
    return isFine ? std::string()
                  : fmt::format("\"{}\" is no number from {} to {:.0f}", text, lowest, highest);
  };
  return CLI::Validator(check, "");
}

}  // namespace qumetra::cli
