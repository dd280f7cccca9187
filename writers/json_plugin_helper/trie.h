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
  using Children = std::map<char, std::unique_ptr<Trie>>;

  const Trie* child(char c) const;
  /// Makes it where there is none.
  Trie& childFor(char c, bool endsWord);
  std::size_t countWords() const;

  /// None is null.
  Children children;
  /// Words added through this node.
  std::uint64_t wordCount = 0;
  bool endOfWord = false;
  /// While the tree is taken down, see the destructor.
  std::unique_ptr<Trie> above;
};
