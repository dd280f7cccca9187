// The class of the tables that a metric is shown in.
#pragma once

#include <cstdint>

namespace pwr {

/// A number that groups tables. The host knows what each means; only those with a name here are
/// told apart by writers. Other numbers occur.
enum class TableClass : std::uint32_t {
  Summary = 0,
  KernelWakelock = 14,
  UserWakelock = 15,
};

}  // namespace pwr
