#include "host/services.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

int pw_snprintf(char* buffer, std::size_t size, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(buffer, size, format, arguments);
  va_end(arguments);
  if (length < 0 && size > 0) {
    buffer[0] = '\0';
  }
  return length;
}

char* pw_strncpy(char* destination, const char* source, std::size_t size) {
  if (size == 0) {
    return destination;
  }
  const std::size_t length = source == nullptr ? 0 : ::strnlen(source, size - 1);
  if (length > 0) {
    std::memcpy(destination, source, length);
  }
  destination[length] = '\0';
  return destination;
}

namespace pwr {
namespace {

std::string& mutableSysfsRoot() {
  static std::string s_root = "/sys";
  return s_root;
}

}  // namespace

std::string resolveEntityName(const std::string& name, const std::string& device,
                              const std::string& /*tag*/) {
  return device.empty() ? name : device;
}

const std::string& sysfsRoot() { return mutableSysfsRoot(); }

void setSysfsRoot(const std::string& root) { mutableSysfsRoot() = root; }

}  // namespace pwr
