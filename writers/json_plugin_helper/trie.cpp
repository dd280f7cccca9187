#include "writers/json_plugin_helper/trie.h"

#include <utility>
#include <vector>

Trie::Trie() = default;

Trie::~Trie() {
  // One after the other, each holding the one above it: children that destroy their own would
  // recurse, and a list of those that wait would need memory.
  std::unique_ptr<Trie> current;
  while (true) {
    Children& below = current == nullptr ? children : current->children;
    if (!below.empty()) {
      std::unique_ptr<Trie> next = std::move(below.begin()->second);
      below.erase(below.begin());
      next->above = std::move(current);
      current = std::move(next);
    } else if (current != nullptr) {
      current = std::move(current->above);
    } else {
      return;
    }
  }
}

void Trie::addWord(const std::string& word) {
  Trie* node = this;
  for (std::size_t i = 0; i < word.size(); ++i) {
    ++node->wordCount;
    node = &node->childFor(word[i], i + 1 == word.size());
  }
}

Trie& Trie::childFor(char c, bool endsWord) {
  const auto place = children.lower_bound(c);
  if (place != children.end() && place->first == c) {
    return *place->second;
  }
  auto made = std::make_unique<Trie>();
  // Only here: see the class.
  made->endOfWord = endsWord;
  return *children.emplace_hint(place, c, std::move(made))->second;
}

void Trie::getWordsStartingWith(const std::string& prefix, std::set<std::string>& out,
                                const std::string& accumulated) const {
  const Trie* node = this;
  for (const char c : prefix) {
    node = node->child(c);
    if (node == nullptr) {
      return;
    }
  }
  node->getWords(out, accumulated + prefix);
}

void Trie::getWords(std::set<std::string>& out, const std::string& accumulated) const {
  struct Step {
    const Trie* node;
    decltype(children)::const_iterator next;
  };
  std::string word = accumulated;
  if (endOfWord) {
    out.insert(word);
  }
  std::vector<Step> path{{this, children.begin()}};
  while (!path.empty()) {
    Step& step = path.back();
    if (step.next == step.node->children.end()) {
      path.pop_back();
      if (!path.empty()) {
        word.pop_back();
      }
      continue;
    }
    const auto& [c, below] = *step.next++;
    word.push_back(c);
    if (below->endOfWord) {
      out.insert(word);
    }
    path.push_back({below.get(), below->children.begin()});
  }
}

std::size_t Trie::sharedBeginnings(const std::string& word, std::size_t count) const {
  if (word.size() < 2) {
    return 0;
  }
  const Trie* node = child(word[0]);
  if (node == nullptr || node->countWords() != count) {
    return 0;
  }
  std::size_t length = 1;
  // Every branch has a word, so the next beginning has as many as this one exactly when no word
  // ends here and there is no other branch.
  while (length + 1 < word.size() && !node->endOfWord && node->children.size() == 1) {
    node = node->child(word[length]);
    if (node == nullptr) {
      break;
    }
    ++length;
  }
  return length;
}

const Trie* Trie::child(char c) const {
  const auto found = children.find(c);
  return found == children.end() ? nullptr : found->second.get();
}

std::size_t Trie::countWords() const {
  std::size_t count = 0;
  std::vector<const Trie*> waiting{this};
  while (!waiting.empty()) {
    const Trie* node = waiting.back();
    waiting.pop_back();
    count += node->endOfWord ? 1 : 0;
    for (const auto& [c, below] : node->children) {
      waiting.push_back(below.get());
    }
  }
  return count;
}
