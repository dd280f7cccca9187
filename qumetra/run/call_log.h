// A protocol of every call that writers get and of everything that is logged meanwhile.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace qumetra {

class Environment;
struct LogEvent;

/// Writes JSON Lines, in the order in which things happen:
///
///     {"log":{"sink":"warning","level":2,"text":"WARNING: ..."}}
///     {"writer":"sum","call":"sample","status":1}
///
/// A call's line is written when its status is known, so what it logged stands before it. A text
/// that was inserted into a sink as a stream comes line by line, with the level null. Texts are
/// UTF-8; a byte that is not part of valid UTF-8 is a lone \udc80 to \udcff. Each line is in the
/// file when the call returns, so that a crash of a writer loses none.
///
/// A first failure to write sticks: later lines are dropped and `close` returns it. Not
/// synchronised.
class CallLog {
 public:
  /// Touches nothing yet.
  explicit CallLog(std::string path);
  CallLog(const CallLog&) = delete;
  CallLog& operator=(const CallLog&) = delete;
  ~CallLog();

  /// Makes or truncates the file, with missing directories, and listens to `environment` until the
  /// log is closed; `environment` must live as long. A failure sticks as any other; see `error`.
  /// REQUIRES: not called before.
  void start(Environment& environment);

  // Calls and logs before `start` and after `close` are dropped.
  void call(std::string_view writer, std::string_view call, int status);
  void log(const LogEvent& event);

  /// Ends the log. Returns the first failure as "FILE: reason", empty when there was none. Calling
  /// it twice is harmless.
  std::string close();
  /// The first failure so far, as `close` returns it.
  const std::string& error() const { return m_error; }

 private:
  struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void writeLine(const std::string& line);
  void fail();

  std::string m_path;
  std::unique_ptr<std::FILE, FileCloser> m_file;
  std::string m_error;
  Environment* m_environment = nullptr;
};

}  // namespace qumetra
