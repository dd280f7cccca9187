// Where temp files go in a test, and ways in which the disk can refuse them.
#pragma once

#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "tests/support/temp_dir.h"

namespace qumetra::test {

/// Points TMPDIR at a fresh directory as long as it lives.
class TempArea {
 public:
  TempArea() { ::setenv("TMPDIR", m_dir.path().c_str(), 1); }
  TempArea(const TempArea&) = delete;
  TempArea& operator=(const TempArea&) = delete;
  ~TempArea() { ::unsetenv("TMPDIR"); }

  /// Where the library's temp files stand, with a "/" at its end.
  std::string spillPath() const { return m_dir.path().string() + "/qumetra_tmp/"; }
  std::string file(const std::string& name) const { return m_dir.file(name); }

 private:
  TempDir m_dir;
};

/// A disk that is full at `bytes`: no file of this process can be written past them while it lives.
class FullDisk {
 public:
  explicit FullDisk(std::uint64_t bytes) : m_formerHandler(::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &m_former);
    const rlimit limit{bytes, m_former.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() {
    ::setrlimit(RLIMIT_FSIZE, &m_former);
    ::signal(SIGXFSZ, m_formerHandler);
  }

 private:
  rlimit m_former{};
  void (*m_formerHandler)(int);
};

/// A place where nobody, the superuser included, can make a temp file: TMPDIR is no directory, so
/// that the current directory serves, and that one has been removed.
class NoPlaceForTempFiles {
 public:
  NoPlaceForTempFiles() : m_formerDirectory(std::filesystem::current_path()) {
    writeFile(m_dir.file("no_directory"), "");
    ::setenv("TMPDIR", m_dir.file("no_directory").c_str(), 1);
    std::filesystem::create_directory(m_dir.path() / "gone");
    std::filesystem::current_path(m_dir.path() / "gone");
    std::filesystem::remove(m_dir.path() / "gone");
  }
  NoPlaceForTempFiles(const NoPlaceForTempFiles&) = delete;
  NoPlaceForTempFiles& operator=(const NoPlaceForTempFiles&) = delete;
  ~NoPlaceForTempFiles() {
    std::filesystem::current_path(m_formerDirectory);
    ::unsetenv("TMPDIR");
  }

 private:
  TempDir m_dir;
  std::filesystem::path m_formerDirectory;
};

}  // namespace qumetra::test
