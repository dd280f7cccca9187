// Whether writers logged errors, which not all of them tell in their status.
#pragma once

namespace qumetra {
class Environment;
}

namespace qumetra::cli {

/// Listens to the log as long as it lives. Nothing else may listen meanwhile. The environment is
/// borrowed. Errors are not logged at verbosity 0, and not heard then.
class ErrorWatch {
 public:
  explicit ErrorWatch(Environment& environment);
  ErrorWatch(const ErrorWatch&) = delete;
  ErrorWatch& operator=(const ErrorWatch&) = delete;
  ~ErrorWatch();

  /// Whether an error came so far.
  bool hasErrors() const { return m_hasErrors; }

 private:
  Environment& m_environment;
  bool m_hasErrors = false;
};

}  // namespace qumetra::cli
