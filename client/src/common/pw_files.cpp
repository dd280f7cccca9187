#include "client/src/common/pw_files.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <optional>

#include "client/src/common/errno_keeper.h"
#include "client/src/common/error_text.h"
#include "client/src/common/path_ops.h"
#include "client/src/common/pw_log.h"

namespace pwr {
namespace {

constexpr int kAllOnes = -1;
constexpr mode_t kNewFilePermissions = 0644;
constexpr mode_t kNewDirectoryPermissions = 0777;
constexpr const char* kNoUsableDirectory = "./";

std::optional<int> openFlags(const std::string& mode) {
  switch (mode.empty() ? '\0' : mode.front()) {
    case 'w':
      return O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW;
    case 'a':
      // Without O_CREAT: appending is for a file that is there.
      return O_RDWR | O_APPEND | O_NOFOLLOW;
    case 'r':
      return O_RDONLY;
    default:
      return std::nullopt;
  }
}

/// Null on failure, and `errno` tells why.
FILE* makeHandle(const std::string& path, const std::string& mode, int flags) {
  const bool writes = mode.front() != 'r';
  if (writes && mkpath(path) != 0) {
    logPlainWarning("WARNING: Error creating file: %s!\n", path.c_str());
    return nullptr;
  }
  int descriptor = -1;
  if (pw_open(&descriptor, path, flags) != 0) {
    return nullptr;
  }
  FILE* const handle = ::fdopen(descriptor, mode.c_str());
  if (handle == nullptr) {
    const ErrnoKeeper keeper;
    ::close(descriptor);
  }
  return handle;
}

void warnOfFailedOpen(const std::string& path) {
  logPlainWarning("WARNING: Failed to open file: %s, errnum: %d, error: %s\n", path.c_str(), errno,
                  errorText(errno).c_str());
}

std::string baseOfTemporaryFiles() {
  for (const char* name : {"TMPDIR", "TMP", "TEMP", "TEMPDIR"}) {
    if (const char* value = std::getenv(name); value != nullptr) {
      return value;
    }
  }
  return "/tmp";
}

}  // namespace

bool openFileHandle(FILE** file, const std::string& path, const std::string& mode) {
  if (file == nullptr) {
    return false;
  }
  *file = nullptr;
  const std::optional<int> flags = openFlags(mode);
  if (!flags) {
    return false;
  }
  *file = makeHandle(path, mode, *flags);
  if (*file != nullptr) {
    return true;
  }
  // A failed open has warned already; the second warning is part of what users know.
  warnOfFailedOpen(path);
  if (errno == EACCES) {
    logError(
        "ERROR: Cannot create output files. Check if you have write permissions to result "
        "directory.\n");
  }
  return false;
}

int pw_open(int* descriptor, const std::string& path, int flags) {
  if (descriptor == nullptr) {
    errno = EINVAL;
    return kAllOnes;
  }
  *descriptor = ::open(path.c_str(), flags, kNewFilePermissions);
  if (*descriptor >= 0) {
    return 0;
  }
  warnOfFailedOpen(path);
  return kAllOnes;
}

bool pw_fileExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0;
}

bool isDir(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    logPlainWarning("WARNING: stat error in isDir for file %s: %s\n", path.c_str(),
                    errorText(errno).c_str());
    return false;
  }
  return S_ISDIR(status.st_mode);
}

bool qm_dirExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

int pw_freopen(FILE** file, const std::string& path, const std::string& mode, FILE* stream) {
  if (file == nullptr) {
    return kAllOnes;
  }
  *file = stream != nullptr ? std::freopen(path.c_str(), mode.c_str(), stream) : nullptr;
  return *file != nullptr ? 0 : kAllOnes;
}

int pw_dup2(FILE* from, FILE* to) {
  if (from == nullptr || to == nullptr) {
    return kAllOnes;
  }
  return ::dup2(::fileno(from), ::fileno(to)) >= 0 ? 0 : kAllOnes;
}

int mkpath(const std::string& path) {
  for (auto slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    const std::string prefix = path.substr(0, slash + 1);
    if (::mkdir(prefix.c_str(), kNewDirectoryPermissions) == 0 || errno == EEXIST) {
      continue;
    }
    const ErrnoKeeper keeper;
    std::perror("mkdir error");
    return kAllOnes;
  }
  return 0;
}

std::string qm_temp_directory_path() {
  const std::string base = baseOfTemporaryFiles();
  if (!qm_dirExists(base)) {
    return kNoUsableDirectory;
  }
  std::string directory = base + "/qumetra_tmp/";
  if (qm_dirExists(directory) || mkpath(directory) == 0) {
    return directory;
  }
  return kNoUsableDirectory;
}

bool getToolPath(std::string& out) {
  std::array<char, PATH_MAX> program{};
  const ssize_t length = ::readlink("/proc/self/exe", program.data(), program.size());
  // A length of the whole buffer may be a cut path.
  if (length <= 0 || static_cast<std::size_t>(length) >= program.size()) {
    return false;
  }
  std::string file;
  extract_dir_and_file_from_path({program.data(), static_cast<std::size_t>(length)}, out, file);
  return true;
}

}  // namespace pwr
