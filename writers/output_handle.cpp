#include "writers/output_handle.h"

#include <vector>

#include "host/environment.h"
#include "host/logger.h"
#include "writers/without_exception.h"

pwr::Logger* outputHandle(const char* name) {
  return g_pluginEnvironment == nullptr ? nullptr : g_pluginEnvironment->getFileOutputHandle(name);
}

bool bringOut(pwr::Logger& output) {
  const int failed = withoutException([&output] {
    output.flush();
    return 0;
  });
  std::vector<char>().swap(output.m_buffer);  // `clear` would keep the memory.
  output.m_pendingBytes = 0;
  // What is written is written, also when the host throws here.
  static_cast<void>(withoutException([&output] {
    output.close();
    return 0;
  }));
  return failed == 0;
}
