#include "qumetra/run/output_check.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "qumetra/recording/block_file.h"
#include "qumetra/run/writer_library.h"

namespace qumetra {
namespace {

std::string reason(const std::string& path, int error) {
  return path + ": " + std::generic_category().message(error);
}

/// The access that the effective user has; 0, or the error number.
int accessError(const std::string& path, int mode) {
  return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0 ? 0 : errno;
}

/// Whether the directory belongs to the kernel, where even the superuser, to whom access is never
/// denied, can make no files.
bool isKernelDirectory(const std::string& path) {
  struct statfs status {};
  return ::statfs(path.c_str(), &status) == 0 &&
         (status.f_type == PROC_SUPER_MAGIC || status.f_type == SYSFS_MAGIC);
}

std::string checkExistingFile(const OutputFile& file, const struct stat& status) {
  const std::string& path = file.path;
  if (S_ISDIR(status.st_mode)) {
    return reason(path, EISDIR);
  }
  if (file.mustBeRegular && !S_ISREG(status.st_mode)) {
    return path + ": is no regular file";
  }
  if (file.mustBeRegular && isBeingWritten(path)) {
    return path + ": is being written by another process";
  }
  const int error = accessError(path, W_OK);
  return error != 0 ? reason(path, error) : std::string();
}

/// Looks at `directory` or, where it is missing, at the nearest one above it: there it would be
/// made.
std::string checkDirectory(std::filesystem::path directory) {
  struct stat status {};
  while (::stat(directory.c_str(), &status) != 0) {
    const std::filesystem::path above = directory.parent_path();
    if (errno != ENOENT || above == directory || directory == ".") {
      return reason(directory.string(), errno);
    }
    directory = above.empty() ? "." : above;
  }
  if (!S_ISDIR(status.st_mode)) {
    return reason(directory.string(), ENOTDIR);
  }
  if (isKernelDirectory(directory.string())) {
    return reason(directory.string(), EROFS);
  }
  const int error = accessError(directory.string(), W_OK | X_OK);
  return error != 0 ? reason(directory.string(), error) : std::string();
}

}  // namespace

std::vector<OutputFile> resultFiles(const LoadedWriter& writer, const std::string& base) {
  // Two writers make other files than their suffix says.
  if (writer.option == "auto") {
    // Only a backslash ends a directory for it. It appends to the file, which it may wait for
    // without end when that is a pipe.
    const std::string directory = base.substr(0, base.rfind('\\') + 1);
    return {
        {.path = directory + "Automation_Summary.csv", .mayBeLink = true, .mustBeRegular = true}};
  }
  if (writer.option == "phm-csv") {
    return {{base + "_phm.csv"}, {base + "_meta_phm.csv"}};
  }
  return {{base + writer.suffix}};
}

std::string checkOutputFile(const OutputFile& file) {
  const std::string& path = file.path;
  struct stat status {};
  if (!file.mayBeLink && ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
    return path + ": is a symbolic link, which results are not written through";
  }
  if (::stat(path.c_str(), &status) == 0) {
    return checkExistingFile(file, status);
  }
  if (errno != ENOENT) {
    return reason(path, errno);
  }
  if (path.ends_with('/')) {
    return reason(path, EISDIR);
  }
  const std::filesystem::path directory = std::filesystem::path(path).parent_path();
  return checkDirectory(directory.empty() ? "." : directory);
}

bool isSameFile(const std::string& first, const std::string& second) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (fs::equivalent(first, second, error)) {
    return true;
  }
  const fs::path one = fs::weakly_canonical(fs::absolute(first, error), error);
  const fs::path other = fs::weakly_canonical(fs::absolute(second, error), error);
  return !one.empty() && one == other;
}

}  // namespace qumetra
