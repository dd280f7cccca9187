// Texts cut at delimiters.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "client/src/common/owned.h"

namespace pwr {

/// Cuts a text into tokens. A token is a maximal run of characters that are not in a set of
/// delimiters, so it is never empty. All tokens are cut at once by the constructor; beside that the
/// text can be walked token by token. A null set of delimiters gives no tokens. Not synchronised.
///
///     pwr::Tokenizer tokenizer("10.2..7", ".");
///     tokenizer.get_all_tokens();   // "10", "2", "7"
///     tokenizer.get_next_token();   // "10"
class Tokenizer {
 public:
  /// Keeps a copy of `text`. REQUIRES: `delimiters` is null or outlives the tokenizer.
  Tokenizer(const std::string& text, const char* delimiters);
  Tokenizer(const Tokenizer&) = delete;
  Tokenizer& operator=(const Tokenizer&) = delete;
  ~Tokenizer();

  /// The next token from where the last call ended, or null at the end. Belongs to the tokenizer
  /// and is valid until the next call. The delimiters given serve for this call only.
  const char* get_next_token();
  const char* get_next_token(const char* delimiters);
  /// The same with the tokenizer's own delimiters, as a string: empty at the end.
  std::string str_get_next_token();

  /// The tokens cut by the constructor.
  const std::vector<std::string>& get_all_tokens() const&;
  std::vector<std::string> get_all_tokens() &&;
  /// The whole text cut with other delimiters. The walk stays where it is. With the very pointer
  /// that the constructor got, these are the constructor's tokens.
  std::vector<std::string> get_all_tokens(const char* delimiters) const;
  /// How many tokens the constructor cut.
  std::size_t get_num_tokens() const;

 private:
  /// Moves `start` and `end` to the next token behind `end`. False when there is none.
  bool findNext(const char* delimiters, std::size_t& start, std::size_t& end) const;
  std::vector<std::string> cut(const char* delimiters) const;

  std::string m_text;
  const char* m_delimiters;
  std::size_t m_start = 0;
  std::size_t m_end = 0;
  std::vector<std::string> m_tokens;
  OwnedBytes m_current;
};

}  // namespace pwr
