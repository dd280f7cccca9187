#include "client/src/common/tokenizer.h"

#include <utility>

#include "client/src/common/text_parsing.h"

namespace pwr {

Tokenizer::Tokenizer(const std::string& text, const char* delimiters)
    : m_text(text), m_delimiters(delimiters), m_tokens(cut(delimiters)) {}

Tokenizer::~Tokenizer() = default;

const char* Tokenizer::get_next_token() { return get_next_token(m_delimiters); }

const char* Tokenizer::get_next_token(const char* delimiters) {
  m_current.reset();
  if (findNext(delimiters, m_start, m_end)) {
    const std::size_t length = m_end - m_start;
    m_current.reset(qm_strndup(m_text.c_str() + m_start, length));
  }
  return m_current.get();
}

std::string Tokenizer::str_get_next_token() {
  const char* token = get_next_token();
  return token != nullptr ? token : "";
}

const std::vector<std::string>& Tokenizer::get_all_tokens() const& { return m_tokens; }

std::vector<std::string> Tokenizer::get_all_tokens() && { return std::move(m_tokens); }

std::vector<std::string> Tokenizer::get_all_tokens(const char* delimiters) const {
  return delimiters == m_delimiters ? m_tokens : cut(delimiters);
}

std::size_t Tokenizer::get_num_tokens() const { return m_tokens.size(); }

bool Tokenizer::findNext(const char* delimiters, std::size_t& start, std::size_t& end) const {
  if (delimiters == nullptr) {
    return false;
  }
  start = m_text.find_first_not_of(delimiters, end);
  if (start == std::string::npos) {
    start = end = m_text.size();
    return false;
  }
  end = m_text.find_first_of(delimiters, start);
  if (end == std::string::npos) {
    end = m_text.size();
  }
  return true;
}

std::vector<std::string> Tokenizer::cut(const char* delimiters) const {
  std::vector<std::string> tokens;
  std::size_t start = 0;
  std::size_t end = 0;
  while (findNext(delimiters, start, end)) {
    tokens.push_back(m_text.substr(start, end - start));
  }
  return tokens;
}

}  // namespace pwr
