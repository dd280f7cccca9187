// When samples are due.
#pragma once

#include <cstdint>

namespace qumetra {

/// Deadlines at whole multiples of an interval after a start, in ticks. They stay where they are,
/// however late one is served; deadlines that have passed meanwhile are skipped and counted.
class IntervalSchedule {
 public:
  /// An interval of 0 counts as 1 tick.
  IntervalSchedule(std::uint64_t start, std::uint64_t interval)
      : m_interval(interval == 0 ? 1 : interval), m_next(start + m_interval) {}

  /// The deadline that is served next.
  std::uint64_t next() const { return m_next; }
  /// Ends the current deadline: the next one is the first after `now`. REQUIRES: `now` is not
  /// before the current deadline.
  void advance(std::uint64_t now) {
    const std::uint64_t passed = (now - m_next) / m_interval;
    m_missed += passed;
    m_next += (passed + 1) * m_interval;
  }
  /// How many deadlines are not after `now`, those that have ended left out.
  std::uint64_t due(std::uint64_t now) const {
    return now < m_next ? 0 : (now - m_next) / m_interval + 1;
  }
  /// Ends the current deadline; the next one may have passed as well.
  void step() { m_next += m_interval; }
  /// Skips and counts `count` deadlines.
  void skip(std::uint64_t count) {
    m_missed += count;
    m_next += count * m_interval;
  }
  /// How many deadlines were skipped.
  std::uint64_t missed() const { return m_missed; }

 private:
  std::uint64_t m_interval;
  std::uint64_t m_next;
  std::uint64_t m_missed = 0;
};

}  // namespace qumetra
