// Whether time goes forward in a .pwr file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <utility>

#include "qumetra/readers/pwr_records.h"

namespace qumetra {

/// Follows the times of the samples of each metric and entity, and those at which each wakelock is
/// given back. They have to rise; a time before the collection's start is wrong, and the start
/// itself may repeat until the first later time. When a wakelock is taken is free, since that
/// record is made up when the wakelock is given back. Not synchronised.
class PwrTimes {
 public:
  /// The most entities of metrics, and wakelocks, that are followed; what comes beyond is not
  /// checked, so that no file makes memory grow without bound.
  static constexpr std::size_t kMostFollowed = std::size_t{1} << 20;

  explicit PwrTimes(std::size_t mostFollowed = kMostFollowed) : m_mostFollowed(mostFollowed) {}

  /// The collection's start in ticks, for the times that come; 0 unless told.
  void setStart(std::uint64_t tsc) { m_start = tsc; }

  /// The metric has a sample of the entity. Returns what is wrong, or an empty text.
  std::string sample(std::uint64_t metric, std::uint64_t entity, std::uint64_t tsc);
  /// The same for wakelocks. Nothing tells whose metric they are, so they are told apart by kind,
  /// owner and name.
  std::string wakelock(const PwrKernelWakelock& wakelock);
  std::string wakelock(const PwrUserWakelock& wakelock);

  /// There were too many to follow.
  bool gaveUp() const { return m_gaveUp; }

 private:
  using Entity = std::pair<std::uint64_t, std::uint64_t>;
  /// Whether it is a package's; pid, tid and uid; the name.
  using Wakelock = std::tuple<bool, std::uint32_t, std::uint32_t, std::uint32_t, std::string>;

  template <typename Key>
  std::string next(std::map<Key, std::uint64_t>& times, const Key& key, std::uint64_t tsc);

  std::size_t m_mostFollowed;
  std::uint64_t m_start = 0;
  bool m_gaveUp = false;
  // In order, since the numbers in a hostile file could be chosen to collide in a hash table.
  std::map<Entity, std::uint64_t> m_samples;
  std::map<Wakelock, std::uint64_t> m_wakelocks;
};

}  // namespace qumetra
