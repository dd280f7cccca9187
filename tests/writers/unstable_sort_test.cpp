// The sort of state names, with comparisons of every kind.
#include "writers/json_plugin_helper/unstable_sort.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

/// A number that is told apart from its equals by where it stood, so that the order of equals
/// shows.
using Marked = std::pair<int, int>;

struct LessNumber {
  bool operator()(const Marked& a, const Marked& b) const { return a.first < b.first; }
};

std::vector<Marked> marked(const std::vector<int>& numbers) {
  std::vector<Marked> result;
  for (const int number : numbers) {
    result.emplace_back(number, static_cast<int>(result.size()));
  }
  return result;
}

void expectAsTheLibrarySorts(std::vector<Marked> values) {
  std::vector<Marked> expected = values;
  std::sort(expected.begin(), expected.end(), LessNumber{});
  unstableSort(values, LessNumber{});
  RC_ASSERT(values == expected);
}

RC_GTEST_PROP(UnstableSorting, LeavesEqualsWhereTheLibraryDoes, ()) {
  const auto size = *rc::gen::inRange(0, 300);
  const auto kinds = *rc::gen::inRange(1, 100);
  const auto numbers = *rc::gen::container<std::vector<int>>(static_cast<std::size_t>(size),
                                                             rc::gen::inRange(0, kinds));
  expectAsTheLibrarySorts(marked(numbers));
}

/// The median of three meets its worst case here, so that the heap sort takes over.
std::vector<int> medianKiller(int size) {
  std::vector<int> numbers(static_cast<std::size_t>(size));
  const int half = size / 2;
  for (int i = 0; i < half; ++i) {
    numbers[static_cast<std::size_t>(i)] = i % 2 == 0 ? i + 1 : half + i + (half % 2 == 0 ? 0 : 1);
    numbers[static_cast<std::size_t>(half + i)] = 2 * (i + 1);
  }
  return numbers;
}

RC_GTEST_PROP(UnstableSorting, GoesTooDeepWhereTheLibraryDoes, ()) {
  const auto size = *rc::gen::inRange(20, 600);
  std::vector<int> numbers = medianKiller(size * 2);
  const auto divisor = *rc::gen::inRange(1, 5);
  for (int& number : numbers) {
    number /= divisor;
  }
  expectAsTheLibrarySorts(marked(numbers));
}

/// Elements without a number are equivalent to all, which is no strict weak order. The library ends
/// well on it all the same: nothing gets past such an element, and each pivot stays in front of
/// what is sorted behind it.
struct LessIfBothCount {
  bool operator()(const Marked& a, const Marked& b) const {
    return a.first >= 0 && b.first >= 0 && a.first < b.first;
  }
};

RC_GTEST_PROP(UnstableSorting, OrdersMixesWithEquivalentsAsTheLibraryDoes, ()) {
  const auto size = static_cast<std::size_t>(*rc::gen::inRange(0, 200));
  const auto kinds = *rc::gen::inRange(1, 300);
  const auto without = *rc::gen::inRange(0, 100);
  const auto numbers = *rc::gen::container<std::vector<int>>(
      size, rc::gen::inRange(-kinds * without / 100 - 1, kinds));
  std::vector<Marked> values = marked(numbers);
  std::vector<Marked> expected = values;
  std::sort(expected.begin(), expected.end(), LessIfBothCount{});
  unstableSort(values, LessIfBothCount{});
  RC_ASSERT(values == expected);
}

RC_GTEST_PROP(UnstableSorting, KeepsAllElementsForAnyComparison, ()) {
  const auto size = static_cast<std::size_t>(*rc::gen::inRange(0, 200));
  std::vector<int> values(size);
  for (std::size_t i = 0; i < size; ++i) {
    values[i] = static_cast<int>(i);
  }
  const auto seed = *rc::gen::arbitrary<unsigned int>();
  unsigned int state = seed;
  std::vector<int> sorted = values;
  unstableSort(sorted, [&state](int, int) {
    state = state * 1664525U + 1013904223U;
    return (state >> 16U & 1U) != 0;
  });
  std::sort(sorted.begin(), sorted.end());
  RC_ASSERT(sorted == values);
}

TEST(UnstableSorting, AlwaysTrueEndsWell) {
  std::vector<int> values(200, 1);
  unstableSort(values, [](int, int) { return true; });
  EXPECT_EQ(values, std::vector<int>(200, 1));
}

}  // namespace
