// The texts of procfs and sysfs.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace qumetra {

/// The unsigned decimal number that `text` is; nothing when there is anything else in it.
std::optional<std::uint64_t> parseNumber(std::string_view text);

/// `text` without blanks, tabs and line ends around it.
std::string_view trimmed(std::string_view text);

}  // namespace qumetra
