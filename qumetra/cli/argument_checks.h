// What the parser cannot check of arguments by itself.
#pragma once

#include <CLI/CLI.hpp>

namespace qumetra::cli {

/// Refuses an empty text where a name is needed: an empty variable in a script, most often.
CLI::Validator nonEmpty();

/// Takes no NaN, unlike the parser's own check of a range.
CLI::Validator numberBetween(double lowest, double highest);

}  // namespace qumetra::cli
