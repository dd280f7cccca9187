// The calls of the system that spill files make, so that tests can let each of them fail.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdio>
#include <string>

/// Plain functions with the meaning of those named behind them. Stateless; thread-safe as they are.
struct SpillSystem {
  /// pwr::openFileHandle: false and a null handle on failure, with the reason in `errno`.
  bool (*open)(std::FILE*& file, const std::string& path, const char* mode);
  /// posix_fallocate: 0, or the error number.
  int (*reserve)(int descriptor, off_t offset, off_t length);
  /// mmap of a shared, writable window: null on failure.
  void* (*map)(int descriptor, off_t offset, std::size_t length);
  /// pwrite: the bytes written, or -1 and the reason in `errno`.
  ssize_t (*write)(int descriptor, const void* bytes, std::size_t size, off_t offset);
  /// std::realloc.
  void* (*reallocate)(void* block, std::size_t size);

  /// The system's own.
  static const SpillSystem& real();
};
