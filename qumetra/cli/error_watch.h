// Whether writers logged that a result is not whole, which not all of them tell in their status.
#pragma once

#include "qumetra/cli/command.h"

namespace qumetra {
class Environment;
}

namespace qumetra::cli {

/// Hears the errors in the log as long as it lives, whether they are shown or not. One at a time.
/// The environment is borrowed.
///
///     const ErrorWatch errors(environment);
///     int status = run.finish();
///     status = std::max(status, errors.status());
class ErrorWatch {
 public:
  explicit ErrorWatch(Environment& environment);
  ErrorWatch(const ErrorWatch&) = delete;
  ErrorWatch& operator=(const ErrorWatch&) = delete;
  ~ErrorWatch();

  /// `kWriterFailed` when an error came so far, else `kDone`.
  int status() const { return m_hasErrors ? kWriterFailed : kDone; }

 private:
  Environment& m_environment;
  bool m_hasErrors = false;
};

}  // namespace qumetra::cli
