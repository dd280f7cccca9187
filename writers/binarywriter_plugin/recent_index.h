// Numbers of things, found quickly when things are asked for in the order of last time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace pwr::bin {

/// Whether two keys are equal.
template <typename Key>
bool isSame(const Key& a, const Key& b) {
  return a == b;
}
/// Short texts byte by byte: one that was just written, by a few narrow stores, is not there yet
/// for the wide load of a library's comparison, which would wait longer than all else takes.
inline bool isSame(const std::string& a, const std::string& b) {
  constexpr std::size_t kShort = 32;
  if (a.size() != b.size() || a.size() > kShort) {
    return a == b;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a.data()[i] != b.data()[i]) {
      return false;
    }
  }
  return true;
}

/// Remembers a number per key. Messages bring the same keys in the same order again and again: the
/// neighbour of the last answer, that answer and the first key of all are tried before anything is
/// searched. 0 stands for a key that is not known. Not synchronised.
template <typename Key>
class RecentIndex {
 public:
  RecentIndex() : m_entries(1), m_next(m_entries.data()) {}
  RecentIndex(const RecentIndex&) = delete;
  RecentIndex& operator=(const RecentIndex&) = delete;

  /// The number of `key`, or 0.
  std::uint16_t find(const Key& key) { return isOf(*m_next, key) ? answer(*m_next) : search(key); }

  /// REQUIRES: `find` has just given 0 for `key`. An index of 0 is not remembered.
  void add(const Key& key, std::uint16_t index) {
    if (index == 0) {
      return;
    }
    const std::size_t place = m_entries.size() - 1;
    m_entries.emplace_back();
    m_next = &m_entries.back();
    m_entries[place] = {key, index};
    m_places.emplace(key, place);
  }

  void clear() {
    m_places.clear();
    m_entries.assign(1, {});
    m_next = m_entries.data();
  }

 private:
  struct Entry {
    Key key{};
    std::uint16_t index = 0;
  };

  static bool isOf(const Entry& entry, const Key& key) {
    return entry.index != 0 && isSame(entry.key, key);
  }

  std::uint16_t answer(const Entry& entry) {
    m_next = &entry + 1;
    return entry.index;
  }

  // Out of line: `find` is called in innermost loops, and hardly ever gets here.
  [[gnu::noinline]] std::uint16_t search(const Key& key) {
    if (m_next != m_entries.data() && isOf(m_next[-1], key)) {
      return m_next[-1].index;
    }
    if (isOf(m_entries.front(), key)) {
      return answer(m_entries.front());
    }
    const auto found = m_places.find(key);
    return found == m_places.end() ? std::uint16_t{0} : answer(m_entries[found->second]);
  }

  /// In the order in which they came. The last one is free and has the index 0, so that there is
  /// always one to try.
  std::vector<Entry> m_entries;
  std::unordered_map<Key, std::size_t> m_places;
  /// The neighbour of the last answer.
  const Entry* m_next;
};

}  // namespace pwr::bin
