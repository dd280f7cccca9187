// Numbers of things, found quickly when things are asked for in the order of last time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace pwr::bin {

/// Remembers a number per key. Messages bring the same keys in the same order again and again: the
/// neighbour of the last answer and that answer are tried before anything is searched. 0 stands for
/// a key that is not known. Not synchronised.
template <typename Key>
class RecentIndex {
 public:
  /// The number of `key`, or 0.
  std::uint16_t find(const Key& key) {
    if (isAt(m_next, key)) {
      return answer(m_next);
    }
    return isAt(m_last, key) ? m_entries[m_last].index : search(key);
  }

  /// REQUIRES: `find` has just given 0 for `key`. An index of 0 is not remembered.
  void add(const Key& key, std::uint16_t index) {
    if (index == 0) {
      return;
    }
    m_places.emplace(key, m_entries.size());
    m_entries.push_back({key, index});
    answer(m_entries.size() - 1);
  }

  void clear() {
    m_entries.clear();
    m_places.clear();
  }

 private:
  struct Entry {
    Key key;
    std::uint16_t index;
  };

  bool isAt(std::size_t place, const Key& key) const {
    return place < m_entries.size() && m_entries[place].key == key;
  }

  std::uint16_t answer(std::size_t place) {
    m_last = place;
    m_next = place + 1 < m_entries.size() ? place + 1 : 0;
    return m_entries[place].index;
  }

  std::uint16_t search(const Key& key) {
    const auto found = m_places.find(key);
    return found == m_places.end() ? std::uint16_t{0} : answer(found->second);
  }

  /// In the order in which they came.
  std::vector<Entry> m_entries;
  std::unordered_map<Key, std::size_t> m_places;
  std::size_t m_last = 0;
  std::size_t m_next = 0;
};

}  // namespace pwr::bin
