// A prefix tree of state names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>

/// A node of a prefix tree, and the tree below it. Its operations need no stack as deep as a word
/// is long. Not synchronised.
///
/// A word that is a beginning of a word added before is not found again: nodes learn that a word
/// ends at them only when they are made. The order of states in results rests on this.
class Trie {
 public:
  Trie();
  Trie(const Trie&) = delete;
  Trie& operator=(const Trie&) = delete;
  ~Trie();

  /// Adds a word; the empty word is none.
  void addWord(const std::string& word);
  /// Inserts all words of this tree that start with `prefix` into `out`, each behind `accumulated`.
  void getWordsStartingWith(const std::string& prefix, std::set<std::string>& out,
                            const std::string& accumulated) const;
  /// The same for all words.
  void getWords(std::set<std::string>& out, const std::string& accumulated) const;

  /// How many of the beginnings of `word`, counted from the first character, are shorter than
  /// `word` and have exactly `count` words that start with them. Counting ends at the first that
  /// has not.
  std::size_t sharedBeginnings(const std::string& word, std::size_t count) const;

 private:
  const Trie* child(char c) const;
  std::size_t countWords() const;

  std::map<char, std::unique_ptr<Trie>> children;
  /// Words added through this node.
  std::uint64_t wordCount = 0;
  bool endOfWord = false;
};
