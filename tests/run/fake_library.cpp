#include "tests/run/fake_library.h"

#include <dlfcn.h>

#include <stdexcept>

namespace qumetra::test {

Calls& fakeCalls() {
  void* handle = ::dlopen(QM_FAKE_WRITERS, RTLD_NOW | RTLD_LOCAL);
  void* function = handle != nullptr ? ::dlsym(handle, kFakeCalls) : nullptr;
  if (function == nullptr) {
    throw std::runtime_error(::dlerror());
  }
  return *reinterpret_cast<FakeCallsFunction>(function)();
}

}  // namespace qumetra::test
