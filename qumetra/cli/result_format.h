// Which reader reads a result file.
#pragma once

#include <string>
#include <vector>

namespace qumetra::cli {

/// The formats of results that can be read back.
enum class ResultFormat { Qmbin, Pwr };

/// The format that all of these files have, by their suffixes and, where the format has one, by the
/// mark that a regular file begins with. Throws `UsageError` for a file of no known format and for
/// files of different ones, and `ReadError` for one without a known suffix that cannot be read;
/// others that cannot be read are left to their reader.
ResultFormat formatOf(const std::vector<std::string>& files);

}  // namespace qumetra::cli
