// The environment of the open host: a log on standard error that can be listened to.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "host/environment.h"

namespace qumetra {

/// One thing that was logged.
struct LogEvent {
  enum class Sink { Error, Warning, Quiet };
  Sink sink;
  /// Empty for text that was inserted into the sink as a stream, which comes line by line.
  std::optional<int> level;
  std::string text;
};

/// Owns the sinks and the `PluginEnvironment` over them, and is what `g_pluginEnvironment` points
/// at while it lives. The error and warning sinks write each text to standard error as it comes;
/// the quiet stream's text goes to the listener only. At most one lives at a time. Not
/// synchronised.
class Environment {
 public:
  using Listener = std::function<void(const LogEvent&)>;

  Environment();
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  /// Gives unfinished lines to the listener and restores the former `g_pluginEnvironment`.
  ~Environment();

  PluginEnvironment& plugin();
  /// `listener` gets everything logged from now on, in order; null ends that.
  void setListener(Listener listener);
  /// `listener` gets what comes to the error sink from now on, beside the other listener and before
  /// it; null ends that.
  void setErrorListener(Listener listener);
  /// Errors go to the error listener only from now on: they are not shown, as at verbosity 0, but
  /// can still be heard where the verbosity lets writers log them. What comes to the error sink at
  /// level 0 is shown all the same.
  void hideErrors();
  /// Gives lines without a line end to the listeners.
  void finishLines();

 private:
  struct Sinks;
  std::unique_ptr<Sinks> m_sinks;
};

}  // namespace qumetra
