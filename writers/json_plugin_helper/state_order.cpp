#include "writers/json_plugin_helper/state_order.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <optional>

#include "client/src/common/deliberate_stop.h"
#include "writers/json_plugin_helper/trie.h"
#include "writers/json_plugin_helper/unstable_sort.h"

namespace {

/// The number that a text is, as a whole. A text that begins with too large a number ends the
/// process, also when it goes on with something else.
std::optional<long> numberOf(const char* text) {
  char* end = nullptr;
  const long number = std::strtol(text, &end, 10);
  if (number == std::numeric_limits<long>::max()) {
    pwr::stopDeliberately("writers/json_plugin_helper", "number < LONG_MAX");
  }
  return *end == '\0' ? std::optional(number) : std::nullopt;
}

struct StringNumberSort {
  bool operator()(const std::string& a, const std::string& b) const {
    const std::optional<long> numberA = numberOf(a.c_str());
    const std::optional<long> numberB = numberOf(b.c_str());
    if (numberA && numberB) {
      return *numberA < *numberB;
    }
    return numberA || numberB ? numberA.has_value() : a < b;
  }
};

/// No strict weak order: a rest that is no number is equivalent to everything. Results have always
/// been ordered by it.
struct StateSort {
  std::size_t n;

  bool operator()(const std::string& a, const std::string& b) const {
    const std::optional<long> numberA = restNumber(a);
    if (!numberA) {
      return false;
    }
    const std::optional<long> numberB = restNumber(b);
    return numberB && *numberA < *numberB;
  }

 private:
  std::optional<long> restNumber(const std::string& name) const {
    return numberOf(name.c_str() + std::min(n, name.size()));
  }
};

/// How many characters all names share, as the order takes it; 0 when they share none.
std::size_t sharedLength(const std::vector<std::string>& states) {
  const std::string& first = states.front();
  if (first.size() < 2) {
    return 1;
  }
  Trie trie;
  for (const std::string& state : states) {
    trie.addWord(state);
  }
  const std::size_t proven = trie.sharedBeginnings(first, states.size());
  // The last character is not looked at: the whole of the first name is taken for shared when all
  // before it is.
  return proven + 1 == first.size() ? first.size() : proven;
}

}  // namespace

bool isNumericState(const std::string& state) { return numberOf(state.c_str()).has_value(); }

void sortStateNames(std::vector<std::string>& states) {
  if (states.empty()) {
    return;
  }
  if (std::any_of(states.begin(), states.end(), isNumericState)) {
    unstableSort(states, StringNumberSort{});
    return;
  }
  const std::size_t n = sharedLength(states);
  if (n > 0) {
    unstableSort(states, StateSort{n});
  }
}
