#include "qumetra/collect/stop_signal.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace qumetra {

StopSignal::StopSignal() : m_descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (m_descriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
}

StopSignal::~StopSignal() { ::close(m_descriptor); }

void StopSignal::requestStop() noexcept {
  m_stop.store(true);
  wakeUp();
}

void StopSignal::requestFlush() noexcept {
  m_flush.store(true);
  wakeUp();
}

bool StopSignal::stopRequested() const noexcept { return m_stop.load(); }

bool StopSignal::takeFlushRequest() noexcept { return m_flush.exchange(false); }

int StopSignal::descriptor() const noexcept { return m_descriptor; }

void StopSignal::clearWakeUp() noexcept {
  std::uint64_t count = 0;
  // Nothing to read is as good as something: the requests themselves are in the flags.
  [[maybe_unused]] const auto ignored = ::read(m_descriptor, &count, sizeof count);
}

void StopSignal::wakeUp() noexcept {
  // Runs in signal handlers: the interrupted code must find its errno unchanged.
  const int saved = errno;
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto ignored = ::write(m_descriptor, &one, sizeof one);
  errno = saved;
}

}  // namespace qumetra
