#include "qumetra/run/resource_limits.h"

#include <sys/resource.h>

namespace qumetra {

std::uint64_t openFileLimit() {
  rlimit limit{};
  return ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : 0;
}

std::uint64_t raiseOpenFileLimit() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) {
    return 0;
  }
  rlimit raised = limit;
  raised.rlim_cur = limit.rlim_max;
  return ::setrlimit(RLIMIT_NOFILE, &raised) == 0 ? raised.rlim_cur : limit.rlim_cur;
}

}  // namespace qumetra
