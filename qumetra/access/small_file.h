// Attributes of devices: files with one line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qumetra {

/// The first line of a file, without its line end; nothing when it cannot be read.
std::optional<std::string> readFirstLine(const std::string& path);
/// The number that is the whole of the line: hexadecimal behind "0x", else decimal.
std::optional<std::uint64_t> readHexOrDecimal(const std::string& path);

}  // namespace qumetra
