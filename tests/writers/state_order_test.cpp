// The order of states in results, and the prefix tree behind it.
#include "writers/json_plugin_helper/state_order.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "writers/json_plugin_helper/trie.h"

namespace {

using States = std::vector<std::string>;

States sorted(States states) {
  sortStateNames(states);
  return states;
}

TEST(StateOrder, NumbersBehindASharedLetterAreSorted) {
  EXPECT_EQ(sorted({"C10", "C2", "C3"}), (States{"C2", "C3", "C10"}));
}

TEST(StateOrder, NumbersBehindALongSharedBeginningAreSorted) {
  EXPECT_EQ(sorted({"P1-C10", "P1-C2"}), (States{"P1-C2", "P1-C10"}));
}

TEST(StateOrder, FirstNameOfTwoCharactersIsTakenForSharedAsAWhole) {
  EXPECT_EQ(sorted({"C1", "C2", "C10"}), (States{"C1", "C2", "C10"}));
  EXPECT_EQ(sorted({"C3", "C2", "C10"}), (States{"C3", "C2", "C10"}));
}

TEST(StateOrder, BeginningOfAnEarlierNameLeavesTheOrder) {
  EXPECT_EQ(sorted({"C10", "C2", "C1"}), (States{"C10", "C2", "C1"}));
  EXPECT_EQ(sorted({"ab", "a"}), (States{"ab", "a"}));
}

TEST(StateOrder, OneNumberSufficesForTheNumericOrder) {
  EXPECT_EQ(sorted({"Idle", "1200", "800"}), (States{"800", "1200", "Idle"}));
}

TEST(StateOrder, NamesBehindNumbersAreInByteOrder) {
  EXPECT_EQ(sorted({"b", "\xc3", "a", "7", "B"}), (States{"7", "B", "a", "b", "\xc3"}));
}

TEST(StateOrder, NothingSharedLeavesTheOrder) {
  EXPECT_EQ(sorted({"Idle", "Active"}), (States{"Idle", "Active"}));
}

/// Names of two letters, none of which begins another.
States manyNames(const std::string& beginning) {
  States names;
  for (char c = 'a'; c <= 'z'; ++c) {
    names.push_back(beginning + std::string(2, c));
  }
  return names;
}

TEST(StateOrder, ManyNamesOfNothingSharedKeepTheirOrder) {
  EXPECT_EQ(sorted(manyNames("")), manyNames(""));
}

TEST(StateOrder, ManyRestsThatAreNoNumbersEndAsEqualsDo) {
  // The sort moves equals about where there are more than sixteen.
  States expected = manyNames("S");
  std::sort(expected.begin(), expected.end(),
            [](const std::string&, const std::string&) { return false; });
  EXPECT_NE(expected, manyNames("S"));
  EXPECT_EQ(sorted(manyNames("S")), expected);
}

TEST(StateOrder, RestsThatAreNoNumbersLeaveTheOrder) {
  EXPECT_EQ(sorted({"Alpha", "Ahead"}), (States{"Alpha", "Ahead"}));
}

TEST(StateOrder, FirstNameOfOneCharacterIsSharedUnchecked) {
  EXPECT_EQ(sorted({"a", "ab"}), (States{"a", "ab"}));
  EXPECT_EQ(sorted({"a", "b3", "c2"}), (States{"a", "c2", "b3"}));
}

TEST(StateOrder, EmptyRestCountsAsZero) {
  EXPECT_EQ(sorted({"CC", "CC1"}), (States{"CC", "CC1"}));
  EXPECT_EQ(sorted({"CC", "CC-1"}), (States{"CC-1", "CC"}));
}

TEST(StateOrder, EmptyNameIsTheNumberZero) {
  EXPECT_EQ(sorted({"b", "1", "a", "", "-1"}), (States{"-1", "", "1", "a", "b"}));
}

TEST(StateOrder, NoStatesAreLeftAlone) { EXPECT_EQ(sorted({}), States{}); }

TEST(StateOrder, MixOfRestsGivesWhatAnInsertionMakesOfIt) {
  // A name without a number is equivalent to all; what stands behind it does not get past it.
  EXPECT_EQ(sorted({"S-30", "S-x", "S-10"}), (States{"S-10", "S-30", "S-x"}));
  EXPECT_EQ(sorted({"S-x0", "S-30", "S-10"}), (States{"S-x0", "S-10", "S-30"}));
  EXPECT_EQ(sorted({"S-20", "S-40", "S-x", "S-30"}), (States{"S-20", "S-40", "S-x", "S-30"}));
}

TEST(StateOrder, SmallNumberFarBehindStopsAtTheFront) {
  // Twenty numbers that only equivalents part from a smaller one: the insertion ends at the front.
  States states;
  for (int i = 0; i < 40; ++i) {
    states.push_back("S-" + std::to_string(100 + i));
  }
  states[20] = "S-x";
  states.emplace_back("S-1");
  const States result = sorted(states);
  States all = result;
  std::sort(all.begin(), all.end());
  std::sort(states.begin(), states.end());
  EXPECT_EQ(all, states);
}

TEST(NumericState, IsAWholeDecimalNumber) {
  for (const char* text :
       {"12", "-3", " 12", "+4", "", "9223372036854775806", "-99999999999999999999"}) {
    EXPECT_TRUE(isNumericState(text)) << text;
  }
  for (const char* text : {"12a", "a", "12 ", " ", "0x10", "1.5", "-"}) {
    EXPECT_FALSE(isNumericState(text)) << text;
  }
}

TEST(NumericStateDeathTest, LargestNumberEndsTheProcess) {
  EXPECT_DEATH(isNumericState("9223372036854775807"), "number < LONG_MAX");
  EXPECT_DEATH(isNumericState("99999999999999999999"), "number < LONG_MAX");
}

TEST(NumericStateDeathTest, LargestNumberEndsTheProcessAlsoInFrontOfOtherText) {
  EXPECT_DEATH(isNumericState("9223372036854775807 MHz"), "number < LONG_MAX");
}

TEST(NumericStateDeathTest, LargestNumberAmongStatesEndsTheProcess) {
  EXPECT_DEATH(sorted({"a", "9223372036854775807"}), "number < LONG_MAX");
  EXPECT_DEATH(sorted({"C9223372036854775807", "C2"}), "number < LONG_MAX");
}

TEST(StateOrder, LargestNumberThatIsNeverAskedForDoesNoHarm) {
  // The rest of the other name is asked for first, and is no number.
  EXPECT_EQ(sorted({"C9223372036854775807", "Cx"}), (States{"C9223372036854775807", "Cx"}));
}

// The tree.

std::set<std::string> wordsOf(const States& words, const std::string& prefix) {
  Trie trie;
  for (const std::string& word : words) {
    trie.addWord(word);
  }
  std::set<std::string> found;
  trie.getWordsStartingWith(prefix, found, "");
  return found;
}

using Words = std::set<std::string>;

TEST(Trie, FindsWordsByTheirBeginning) {
  EXPECT_EQ(wordsOf({"C10", "C2", "D1"}, "C"), (Words{"C10", "C2"}));
  EXPECT_EQ(wordsOf({"C10", "C2", "D1"}, "C1"), (Words{"C10"}));
  EXPECT_EQ(wordsOf({"C10", "C2", "D1"}, "x"), Words{});
  EXPECT_EQ(wordsOf({"C10", "C2", "D1"}, ""), (Words{"C10", "C2", "D1"}));
}

TEST(Trie, WordThatBeginsAnEarlierOneIsNotFound) {
  EXPECT_EQ(wordsOf({"ab", "a"}, "a"), (Words{"ab"}));
  EXPECT_EQ(wordsOf({"a", "ab"}, "a"), (Words{"a", "ab"}));
}

TEST(Trie, EmptyWordIsNone) { EXPECT_EQ(wordsOf({""}, ""), Words{}); }

TEST(Trie, WordsStandBehindWhatWasAccumulated) {
  Trie trie;
  trie.addWord("bc");
  Words found;
  trie.getWordsStartingWith("b", found, "a");
  trie.getWords(found, "x");
  EXPECT_EQ(found, (Words{"abc", "xbc"}));
}

TEST(Trie, LongNamesNeedNoDeepStack) {
  const std::string name(200'000, 'n');
  EXPECT_TRUE(wordsOf({name, name + "1"}, "n") == (Words{name, name + "1"}));
  EXPECT_TRUE(sorted({name + "20", name + "10"}) == (States{name + "10", name + "20"}));
}

RC_GTEST_PROP(TrieProperty, SharedBeginningsAgreeWithTheWordsFound, ()) {
  const auto words = *rc::gen::nonEmpty(rc::gen::container<States>(
      rc::gen::nonEmpty(rc::gen::container<std::string>(rc::gen::inRange('a', 'c')))));
  Trie trie;
  for (const std::string& word : words) {
    trie.addWord(word);
  }
  const std::string word = *rc::gen::elementOf(words);
  std::size_t expected = 0;
  for (std::size_t k = 1; k < word.size(); ++k) {
    Words found;
    trie.getWordsStartingWith(word.substr(0, k), found, "");
    if (found.size() != words.size()) {
      break;
    }
    expected = k;
  }
  RC_ASSERT(trie.sharedBeginnings(word, words.size()) == expected);
}

/// Names like those of states: a shared beginning and a rest, which often is a number.
rc::Gen<std::string> stateName() {
  return rc::gen::apply(
      [](int kind, int number) {
        const std::string text = std::to_string(number);
        return "S-" + (kind == 0 ? std::string("x") + text : text);
      },
      rc::gen::inRange(0, 4), rc::gen::inRange(-50, 1000));
}

RC_GTEST_PROP(StateOrderProperty, KeepsAllNamesOfAnyMix, ()) {
  const auto size = static_cast<std::size_t>(*rc::gen::inRange(0, 200));
  States states = *rc::gen::container<States>(size, stateName());
  states.erase(std::unique(states.begin(), states.end()), states.end());
  States result = sorted(states);
  std::sort(result.begin(), result.end());
  std::sort(states.begin(), states.end());
  RC_ASSERT(result == states);
}

RC_GTEST_PROP(StateOrderProperty, RestsThatAreAllNumbersEndInTheirOrder, ()) {
  // The two first names part behind "S-", and no name begins another.
  const auto numbers = *rc::gen::unique<std::vector<int>>(rc::gen::inRange(30, 100));
  States states{"S-10", "S-20"};
  for (const int number : numbers) {
    states.push_back("S-" + std::to_string(number));
  }
  const States result = sorted(states);
  RC_ASSERT(std::is_sorted(result.begin(), result.end()));
}

}  // namespace
