// The private temporary directory of one run.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace qumetra {

/// Makes a fresh directory that only its owner can enter (mode 0700) and points the writers there:
/// two runs at once, or a stranger in /tmp, cannot touch a run's spill files. The base is the first
/// of TMPDIR, TMP, TEMP and TEMPDIR that is not empty, else /tmp; while the area lives, TMPDIR
/// names the directory. At the end the directory goes with all it holds and TMPDIR is what it was.
/// After a crash or a second Ctrl-C no end is reached and the directory stays: see `SignalWatch`.
///
/// Make it before the writers are loaded, and let it outlive them. The environment is the
/// process's: no other thread may use it at that moment.
class TempArea {
 public:
  /// Throws `RunError` when the directory cannot be made.
  TempArea();
  TempArea(const TempArea&) = delete;
  TempArea& operator=(const TempArea&) = delete;
  ~TempArea();

  const std::filesystem::path& path() const { return m_path; }

  /// The directory stays at the end, with what it then holds.
  void keep() { m_isKept = true; }

  /// TMPDIR as it was, for programs that are started meanwhile; empty when it was not set.
  const std::optional<std::string>& formerTmpdir() const { return m_formerTmpdir; }

 private:
  std::filesystem::path m_path;
  bool m_isKept = false;
  std::optional<std::string> m_formerTmpdir;
};

}  // namespace qumetra
