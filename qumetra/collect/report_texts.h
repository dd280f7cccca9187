// The lines at the top of a report.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/system_metadata.h"

namespace qumetra {

/// What is known of a collection when it starts.
struct CollectionSetup {
  std::uint64_t intervalTicks = 0;
  std::vector<std::string> sources;
  /// The command with its arguments; empty for none.
  std::vector<std::string> command;
};

/// What is known of it when it is over.
struct CollectionOutcome {
  /// How often was measured after the first reading, and how often that was left out.
  std::uint64_t moments = 0;
  std::uint64_t missed = 0;
  /// Values of samples that were left out, being NaN or infinite.
  std::uint64_t leftOutValues = 0;
  /// Flushes that were left out, their samples being in the next.
  std::uint64_t joinedFlushes = 0;
  bool stopped = false;
  std::optional<int> commandStatus = std::nullopt;
};

/// A time span as people write it: "100 ms", "2.5 s".
std::string spanText(std::uint64_t ticks);
/// Arguments joined by blanks; those with blanks, quotes or nothing inside are quoted.
std::string commandText(const std::vector<std::string>& arguments);

/// Tool, host, processor, operating system, start, what is measured how often.
std::vector<std::string> openingLines(const pwr::SystemMetadata& metadata,
                                      const CollectionSetup& setup);
/// How long it took, how it ended.
std::vector<std::string> closingLines(const pwr::SystemMetadata& metadata,
                                      const CollectionSetup& setup,
                                      const CollectionOutcome& outcome);
// What makes the numbers doubtful; most often nothing.
std::optional<std::string> fewSamplesLine(const CollectionOutcome& outcome);
std::optional<std::string> missedSamplesLine(const CollectionOutcome& outcome);
std::optional<std::string> leftOutValuesLine(const CollectionOutcome& outcome);
std::optional<std::string> joinedFlushesLine(const CollectionOutcome& outcome);

}  // namespace qumetra
