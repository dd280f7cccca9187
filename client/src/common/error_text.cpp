#include "client/src/common/error_text.h"

#include <string.h>

#include <array>
#include <cstdio>

#include "client/src/common/errno_keeper.h"
#include "client/src/common/pw_log.h"

namespace pwr {

void pw_strerror(int number, char* buffer, std::size_t size) {
  const ErrnoKeeper keeper;
  std::array<char, 256> scratch{};
  const char* text = ::strerror_r(number, scratch.data(), scratch.size());
  const bool hasRoom = buffer != nullptr && size > 0;
  const int length = hasRoom ? std::snprintf(buffer, size, "%s", text) : -1;
  if (length < 0 || static_cast<std::size_t>(length) >= size) {
    if (hasRoom) {
      buffer[0] = '\0';
    }
    logPlainWarning(
        "WARNING: SNPRINTF_S failed, when handling strerror_r returned char *, "
        "which(strerror_r) was used to get description of previous error\n");
  }
}

std::string errorText(int number) {
  std::array<char, 256> buffer{};
  pw_strerror(number, buffer.data(), buffer.size());
  return buffer.data();
}

}  // namespace pwr
