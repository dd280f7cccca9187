// The names of the files of a continuous run.
#pragma once

#include <optional>
#include <string>

namespace qumetra::cli {

/// What stands in front of a file in its series.
struct SeriesPlace {
  std::string firstFile;
  std::string fileBefore;
};

/// What the name of a file tells: "run_2.qmbin" has "run_1.qmbin" before it, and "run_0.qmbin" is
/// the first. Nothing for a name of another kind, and for the first file itself.
std::optional<SeriesPlace> placeInSeries(const std::string& file);

}  // namespace qumetra::cli
