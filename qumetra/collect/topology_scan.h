// Which hardware threads the machine has, and where each of them stands.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/topology.h"

namespace qumetra {

/// The numbers of a list as the kernel writes them, such as "0-3,5", in ascending order. Nothing
/// for any other text, and for numbers that no machine has.
std::optional<std::vector<std::uint32_t>> parseCpuList(std::string_view text);

/// The CPUs that are online, by sysfs's list, else by the lines of procfs's stat, else just CPU 0.
std::vector<std::uint32_t> onlineCpus(const std::string& procfs, const std::string& sysfs);

/// Where a CPU stands. Without topology files it is a core of its own in package 0.
pwr::ThreadLocation locateCpu(const std::string& sysfs, std::uint32_t cpu);

/// The places of all CPUs that are online, by CPU number.
std::vector<pwr::ThreadLocation> scanTopology(const std::string& procfs, const std::string& sysfs);

}  // namespace qumetra
