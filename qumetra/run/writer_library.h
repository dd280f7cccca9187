// The library of result writers, as a host loads it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class WriterPlugin;

namespace qumetra {

/// A writer of the library and what its capability record says of it.
struct LoadedWriter {
  /// Belongs to the library.
  WriterPlugin* plugin = nullptr;
  /// The name by which users choose it.
  std::string option;
  std::string suffix;
  std::string description;
  std::string guid;
  std::uint8_t flags = 0;
  /// Names and values that the writer tells about itself.
  std::vector<std::pair<std::string, std::string>> version;

  /// Whether it serves continuous runs.
  bool continuous() const;
};

/// Loads a library of writers and owns its writers. The shared object itself stays loaded to the
/// end of the process, since objects that it made may be known elsewhere.
///
/// Each writer is given its place in the list as `m_id` and asked for its version when it is
/// loaded. The rest of what a host tells plug-ins comes later: see `commandLineRead` here, and
/// `Run` for resets.
///
///     Environment environment;                   // before: constructors of writers may log
///     TempArea area;                             // before: writers look for their place early
///     WriterLibrary library(WriterLibrary::defaultPath());
///
/// REQUIRES: `g_pluginEnvironment` is set, from before the construction until after the
/// destruction. One thread.
class WriterLibrary {
 public:
  /// Throws `RunError` when the file cannot be loaded, is no library of writers, or cannot make
  /// them.
  explicit WriterLibrary(const std::string& path);
  WriterLibrary(const WriterLibrary&) = delete;
  WriterLibrary& operator=(const WriterLibrary&) = delete;
  ~WriterLibrary();

  /// Where the library lies beside the running program: in `lib` next to the program's directory,
  /// in that directory's multi-architecture folder, or with the program. Throws `RunError` with the
  /// places that were tried.
  static std::string defaultPath();

  /// The writers in the order of the library. A plug-in without a capability is not among them,
  /// since nobody can choose it.
  const std::vector<LoadedWriter>& writers() const;
  /// The names of the writers in that order, with ", " between them.
  std::string knownNames() const;
  /// The writer of that name, or null.
  const LoadedWriter* find(const std::string& option) const;

  /// Tells every plug-in the options that concern all, such as "verbosity=2" or "log-tag=TAG", one
  /// by one, and then that the command line has been read. To be called once, before the first run.
  void commandLineRead(const std::vector<std::string>& broadcastOptions);

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace qumetra
