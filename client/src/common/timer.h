// The time a scope takes.
#pragma once

#include <string>

namespace pwr {

/// Measures its own life in microseconds of the system's clock, which may be set meanwhile. Belongs
/// to one thread.
///
///     double micros = 0;
///     { const pwr::Timer timer(&micros); ...work... }
class Timer {
 public:
  explicit Timer(const std::string& label);
  /// Stores the time at its end. `result` may be null, otherwise it must outlive the timer.
  explicit Timer(double* result);
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  ~Timer();

  /// Sets label and result and starts anew. `result` as above.
  void init_i(const std::string& label, double* result);

 private:
  std::string m_label;
  /// Microseconds: the start as a negative number, to which the end is added.
  double m_elapsed = 0;
  double* m_result = nullptr;
};

}  // namespace pwr
