#include "client/src/common/deliberate_stop.h"

#include <cstdio>
#include <cstdlib>

namespace pwr {

void stopDeliberately(const char* where, const char* condition) {
  std::fprintf(stderr, "%s: assertion failed: %s\n", where, condition);
  std::abort();
}

}  // namespace pwr
