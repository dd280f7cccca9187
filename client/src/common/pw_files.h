// The operating system's file services, with one shape for their failures.
//
// Failures are told to the user here; `errno` still holds the reason when a call has failed. Not
// synchronised.
#pragma once

#include <cstdio>
#include <string>

namespace pwr {

/// Opens `path` as fopen would and stores the handle, which the caller closes; null on failure. The
/// first character of `mode` decides: "w" makes the file, or empties it, and makes the directories
/// above it; "a" makes the directories, but needs an existing file; "r" needs all. A symbolic link
/// as the last part is followed by "r" only. Any other mode is false without a message. Returns
/// whether the handle is there; the caller can tell why not from `errno`.
bool openFileHandle(FILE** file, const std::string& path, const std::string& mode);

/// Opens `path` with open's flags; a new file gets permissions 0644. Returns 0, or all ones when it
/// fails, which is a plain warning and stores -1. Without a place for the descriptor nothing is
/// opened and the result is all ones.
int pw_open(int* descriptor, const std::string& path, int flags);

/// Whether there is something at `path`, symbolic links followed.
bool pw_fileExists(const std::string& path);
/// Whether there is a directory at `path`. Nothing there at all is a plain warning.
bool isDir(const std::string& path);
/// Whether there is a directory at `path`, without a message.
bool qm_dirExists(const std::string& path);

/// Opens `path` in the place of `stream`, and stores the handle; null on failure, which a null
/// `stream` is. Returns 0, or all ones.
int pw_freopen(FILE** file, const std::string& path, const std::string& mode, FILE* stream);
/// Lets the descriptor of `to` mean the file of `from`. Returns 0, or all ones.
int pw_dup2(FILE* from, FILE* to);

/// Makes the directories of `path` that are missing. What stands behind the last "/" is taken for a
/// file and not made. Returns 0, or all ones at the first that cannot be made, which goes to
/// standard error.
int mkpath(const std::string& path);

/// The directory for temporary files, which is made when missing; ends in "/". It stands in the
/// directory that the first of TMPDIR, TMP, TEMP and TEMPDIR names that is set, also when it is
/// empty; without any in /tmp. "./" when that is no directory or the directory cannot be made. A
/// file that stands in its place is not noticed here: what is opened below it fails.
std::string qm_temp_directory_path();

/// Sets `out` to the directory of the running program, with a "/" at its end, and returns true. On
/// failure `out` is left alone.
bool getToolPath(std::string& out);

}  // namespace pwr
