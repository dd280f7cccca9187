#include "client/src/common/timer.h"

#include <time.h>

#include <cstdio>

namespace pwr {
namespace {

constexpr double kNanosecondsPerSecond = 1e9;
constexpr double kNanosecondsPerMicrosecond = 1000;

/// 0 when there is no clock.
double nowMicros() {
  timespec now{};
  if (::clock_gettime(CLOCK_REALTIME, &now) != 0) {
    std::perror("clock_gettime error");
    return 0;
  }
  const double nanoseconds =
      static_cast<double>(now.tv_sec) * kNanosecondsPerSecond + static_cast<double>(now.tv_nsec);
  return nanoseconds / kNanosecondsPerMicrosecond;
}

}  // namespace

Timer::Timer(const std::string& label) { init_i(label, nullptr); }

Timer::Timer(double* result) { init_i(std::string(), result); }

Timer::~Timer() {
  m_elapsed += nowMicros();
  if (m_result != nullptr) {
    *m_result = m_elapsed;
  }
}

void Timer::init_i(const std::string& label, double* result) {
  m_label = label;
  m_result = result;
  m_elapsed = -nowMicros();
}

}  // namespace pwr
