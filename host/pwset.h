// An ordered set whose insertion tells whether the element was new.
#pragma once

#include <cstddef>
#include <functional>
#include <set>

namespace pwr {

/// A thin ordered set. Not synchronised.
template <typename T, typename Compare = std::less<T>>
class PWSet {
 public:
  using const_iterator = typename std::set<T, Compare>::const_iterator;

  /// Returns true when `element` was new and went in, false when it was there already.
  bool add(const T& element) { return m_elements.insert(element).second; }
  bool contains(const T& element) const { return m_elements.contains(element); }
  void clear() { m_elements.clear(); }
  bool empty() const { return m_elements.empty(); }
  std::size_t size() const { return m_elements.size(); }
  const_iterator begin() const { return m_elements.begin(); }
  const_iterator end() const { return m_elements.end(); }

 private:
  std::set<T, Compare> m_elements;
};

}  // namespace pwr
