// A sort whose result is defined for any comparison.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

/// Sorts as the standard library's unstable sort does, step by step: introspective quicksort with
/// the median of three, heap sort where it goes too deep, insertion sort for what is short. A
/// comparison that is no strict weak order gets the same order as from that sort, where that one is
/// bound to end well; beyond, the ends of the vector hold whatever the comparison says.
///
/// `less(a, b)` tells whether a goes before b. It must not throw.
template <typename T, typename Less>
class UnstableSort {
 public:
  UnstableSort(std::vector<T>& values, Less less) : m_values(values), m_less(std::move(less)) {}

  void run() {
    const std::size_t size = m_values.size();
    std::size_t depth = 0;
    for (std::size_t rest = size; rest > 1; rest /= 2) {
      depth += 2;
    }
    partitionAll(0, size, depth);
    insertAll();
  }

 private:
  /// Ranges up to this length are left to the insertion sort.
  static constexpr std::size_t kShort = 16;

  bool less(std::size_t a, std::size_t b) const { return m_less(m_values[a], m_values[b]); }
  void swap(std::size_t a, std::size_t b) { std::swap(m_values[a], m_values[b]); }

  void partitionAll(std::size_t first, std::size_t last, std::size_t depth) {
    while (last - first > kShort) {
      if (depth == 0) {
        heapSort(first, last);
        return;
      }
      --depth;
      const std::size_t cut = partition(first, last);
      partitionAll(cut, last, depth);
      last = cut;
    }
  }

  /// Returns where the upper part begins: behind `first`, and not behind `last`.
  std::size_t partition(std::size_t first, std::size_t last) {
    const std::size_t pivot = first;
    moveMedianTo(pivot, first + 1, first + (last - first) / 2, last - 1);
    const std::size_t end = last;
    std::size_t low = first + 1;
    while (true) {
      while (low < end && less(low, pivot)) {
        ++low;
      }
      --last;
      while (last > pivot && less(pivot, last)) {
        --last;
      }
      if (low >= last) {
        return low;
      }
      swap(low, last);
      ++low;
    }
  }

  void moveMedianTo(std::size_t result, std::size_t a, std::size_t b, std::size_t c) {
    if (less(a, b)) {
      if (less(b, c)) {
        swap(result, b);
      } else {
        swap(result, less(a, c) ? c : a);
      }
    } else if (less(a, c)) {
      swap(result, a);
    } else {
      swap(result, less(b, c) ? c : b);
    }
  }

  void insertAll() {
    for (std::size_t i = 1; i < m_values.size(); ++i) {
      // Only the first elements are compared with the very first one; the others are expected to
      // find their place before they get there.
      if (i < kShort && less(i, 0)) {
        insertAt(0, i);
        continue;
      }
      std::size_t place = i;
      while (place > 0 && less(i, place - 1)) {
        --place;
      }
      insertAt(place, i);
    }
  }

  /// Moves element `from` to `to` and what lies between one up.
  void insertAt(std::size_t to, std::size_t from) {
    T value = std::move(m_values[from]);
    for (; from > to; --from) {
      m_values[from] = std::move(m_values[from - 1]);
    }
    m_values[to] = std::move(value);
  }

  void heapSort(std::size_t first, std::size_t last) {
    const std::size_t length = last - first;
    for (std::size_t parent = (length - 2) / 2 + 1; parent-- > 0;) {
      sift(first, parent, length, std::move(m_values[first + parent]));
    }
    for (std::size_t end = length; end-- > 1;) {
      T value = std::move(m_values[first + end]);
      m_values[first + end] = std::move(m_values[first]);
      sift(first, 0, end, std::move(value));
    }
  }

  /// Fills the hole of a heap of `length` elements from below, down to a leaf, then lets `value`
  /// rise from there.
  void sift(std::size_t first, std::size_t hole, std::size_t length, T value) {
    const std::size_t top = hole;
    const auto fillFrom = [&](std::size_t child) {
      m_values[first + hole] = std::move(m_values[first + child]);
      return child;
    };
    while (hole < (length - 1) / 2) {
      const std::size_t right = 2 * hole + 2;
      hole = fillFrom(less(first + right, first + right - 1) ? right - 1 : right);
    }
    if (length % 2 == 0 && hole == (length - 2) / 2) {
      hole = fillFrom(2 * hole + 1);
    }
    while (hole > top && m_less(m_values[first + (hole - 1) / 2], value)) {
      hole = fillFrom((hole - 1) / 2);
    }
    m_values[first + hole] = std::move(value);
  }

  std::vector<T>& m_values;
  Less m_less;
};

template <typename T, typename Less>
void unstableSort(std::vector<T>& values, Less less) {
  UnstableSort<T, Less>(values, std::move(less)).run();
}
