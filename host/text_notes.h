// Remarks that stand before and after tables.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace pwr {

/// Remarks by placement. Placement 0 stands before a table, placement 1 after it.
using TextNotes = std::map<std::uint32_t, std::vector<std::string>>;

}  // namespace pwr
