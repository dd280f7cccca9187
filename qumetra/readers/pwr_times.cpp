#include "qumetra/readers/pwr_times.h"

namespace qumetra {
namespace {

bool isUnlock(PwrWakelockAction action) {
  return action == PwrWakelockAction::Unlock || action == PwrWakelockAction::UnlockAll;
}

}  // namespace

std::string PwrTimes::sample(std::uint64_t metric, std::uint64_t entity, std::uint64_t tsc) {
  const std::string problem = next(m_samples, Entity{metric, entity}, tsc);
  return problem.empty() ? problem
                         : "metric " + std::to_string(metric) + ", entity " +
                               std::to_string(entity) + ": " + problem;
}

std::string PwrTimes::wakelock(const PwrKernelWakelock& wakelock) {
  if (!isUnlock(wakelock.action)) {
    return {};
  }
  const std::string problem = next(
      m_wakelocks, Wakelock{false, wakelock.pid, wakelock.tid, 0, wakelock.name}, wakelock.tsc);
  return problem.empty() ? problem : "unlock of a kernel wakelock: " + problem;
}

std::string PwrTimes::wakelock(const PwrUserWakelock& wakelock) {
  if (!isUnlock(wakelock.action)) {
    return {};
  }
  const std::string problem =
      next(m_wakelocks, Wakelock{true, wakelock.pid, wakelock.tid, wakelock.uid, wakelock.name},
           wakelock.tsc);
  return problem.empty() ? problem : "unlock of a user wakelock: " + problem;
}

template <typename Key>
std::string PwrTimes::next(std::map<Key, std::uint64_t>& times, const Key& key, std::uint64_t tsc) {
  if (tsc < m_start) {
    return "time " + std::to_string(tsc) + " is before the collection's start " +
           std::to_string(m_start);
  }
  auto last = times.lower_bound(key);
  if (last == times.end() || last->first != key) {
    m_gaveUp = m_gaveUp || m_samples.size() + m_wakelocks.size() >= m_mostFollowed;
    if (!m_gaveUp) {
      times.emplace_hint(last, key, tsc);
    }
    return {};
  }
  if (tsc <= last->second && last->second != m_start) {
    return "time " + std::to_string(tsc) + " does not come after " + std::to_string(last->second);
  }
  last->second = tsc;
  return {};
}

}  // namespace qumetra
