// Small functions that the host gives to the library.
#pragma once

#include <cstddef>
#include <string>

/// Formats like snprintf into `buffer` of `size` bytes. The text is cut at `size` less one and
/// always ends with a zero byte; with a `size` of 0 nothing is written. Returns the length of the
/// whole text.
int pw_snprintf(char* buffer, std::size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// Copies `source` into `destination` of `size` bytes, cut at `size` less one and always ended with
/// a zero byte; with a `size` of 0 nothing is written. Returns `destination`.
char* pw_strncpy(char* destination, const char* source, std::size_t size);

namespace pwr {

/// The entity name that a telemetry feature shows: the device when it is not empty, else the name.
std::string resolveEntityName(const std::string& name, const std::string& device,
                              const std::string& tag);

/// The directory at which the system shows its devices: "/sys", unless the host has set another.
/// Not synchronised.
const std::string& sysfsRoot();
/// Host side: tests and hosts that look at another machine's tree set their own.
void setSysfsRoot(const std::string& root);

}  // namespace pwr
