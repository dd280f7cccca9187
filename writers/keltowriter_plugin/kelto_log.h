// What the import stream's writer tells the user.
#pragma once

#include <cstdint>

namespace kelto {

/// Logs a warning that begins with the writer's prefix, when plain warnings show. Returns 1, the
/// status of whoever failed.
int failure(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// A number as "%llu" takes it.
constexpr unsigned long long shown(std::uint64_t value) { return value; }

}  // namespace kelto
