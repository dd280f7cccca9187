#include "writers/textwriter_plugin/spill_system.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "client/src/common/pw_files.h"

namespace {

bool openFile(std::FILE*& file, const std::string& path, const char* mode) {
  return pwr::openFileHandle(&file, path, mode);
}

void* mapShared(int descriptor, off_t offset, std::size_t length) {
  void* window = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, offset);
  return window == MAP_FAILED ? nullptr : window;
}

}  // namespace

const SpillSystem& SpillSystem::real() {
  static const SpillSystem s_real = {&openFile, &::posix_fallocate, &mapShared, &::pwrite,
                                     &std::realloc};
  return s_real;
}
