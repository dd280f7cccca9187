// Owners of what the C library gives out.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace pwr {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
/// An open stream, closed at the end without a look at the result: who wants to know whether all
/// bytes arrived releases the stream and closes it. Null when there is none.
using OwnedFile = std::unique_ptr<std::FILE, CloseFile>;

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};
/// Bytes from malloc. Null when there are none.
using OwnedBytes = std::unique_ptr<char, FreeMemory>;

}  // namespace pwr
