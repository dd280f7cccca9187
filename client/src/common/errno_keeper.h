// `errno` kept over work that may change it.
#pragma once

#include <cerrno>

namespace pwr {

/// Gives `errno` back at its end as it was at its start: callers tell their cases from it after a
/// failure was logged or cleaned up. Belongs to one thread.
class ErrnoKeeper {
 public:
  ErrnoKeeper() = default;
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;
  ~ErrnoKeeper() { errno = m_kept; }

 private:
  int m_kept = errno;
};

}  // namespace pwr
