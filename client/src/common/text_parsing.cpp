#include "client/src/common/text_parsing.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale>
#include <map>
#include <sstream>
#include <string_view>

#include "client/src/common/number_text.h"
#include "client/src/common/pw_log.h"
#include "client/src/common/tokenizer.h"

namespace pwr {
namespace {

constexpr int kAllOnes = -1;
constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;

// The character functions of C take no negative value but one, and plain characters may be
// negative.
bool isDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }
bool isHexDigit(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }
char upper(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }
char lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

bool isAllDigits(const std::string& text) { return std::all_of(text.begin(), text.end(), isDigit); }

bool hasHexPrefix(std::string_view text) {
  return text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
}

template <typename Change>
std::string changeEach(std::string text, Change change) {
  std::transform(text.begin(), text.end(), text.begin(), change);
  return text;
}

}  // namespace

bool check_env(const char* name) {
  if (name == nullptr) {
    logPlainWarning("WARNING: NULL name passed to check_env!\n");
    return false;
  }
  const char* value = std::getenv(name);
  return value != nullptr && (std::strcmp(value, "Y") == 0 || std::strcmp(value, "y") == 0);
}

std::string get_required_token(const std::string& text, int index, int expected,
                               const char* delimiters) {
  // Indices count from 1, so one below that names no token either.
  if (index > expected || index < 1) {
    logPlainWarning("WARNING: tok_num = %d, max_num_toks = %d\n", index, expected);
    return {};
  }
  const Tokenizer tokenizer(text, delimiters);
  const std::size_t wanted = static_cast<std::size_t>(expected);
  if (tokenizer.get_num_tokens() != wanted) {
    logPlainWarning("WARNING: invalid # toks = %lu (expected %lu)\n", tokenizer.get_num_tokens(),
                    wanted);
    return {};
  }
  return tokenizer.get_all_tokens()[static_cast<std::size_t>(index) - 1];
}

int getNextToken(std::string& token, std::string& rest, const std::string& delimiter,
                 bool /*flag*/) {
  if (rest.empty()) {
    return kAllOnes;
  }
  const auto position = delimiter.empty() ? std::string::npos : rest.find(delimiter);
  if (position == std::string::npos) {
    token = rest;
    rest.clear();
    return 0;
  }
  token = rest.substr(0, position);
  rest.erase(0, position + delimiter.size());
  return 0;
}

bool isNumber(const std::string& text) {
  std::string_view digits = text;
  if (digits.substr(0, 1) == "-") {
    digits.remove_prefix(1);
  }
  if (digits.empty()) {
    return false;
  }
  // The bare prefix is no number: its letter is no decimal digit.
  const bool isHex = hasHexPrefix(digits) && digits.size() > 2;
  if (isHex) {
    digits.remove_prefix(2);
  }
  return std::all_of(digits.begin(), digits.end(),
                     [isHex](char c) { return c == '.' || (isHex ? isHexDigit(c) : isDigit(c)); });
}

unsigned long extract_number_i(const std::string& text) {
  const bool isHex = text.compare(0, 2, "0x") == 0 || !isAllDigits(text);
  return std::strtoul(text.c_str(), nullptr, isHex ? kHexadecimal : kDecimal);
}

template <typename Number>
Number extractNumber(const std::string& text, bool hexUnlessDecimal) {
  const bool isHex = hasHexPrefix(text) || (hexUnlessDecimal && !isAllDigits(text));
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  Number number = 0;
  if (in >> (isHex ? std::hex : std::dec) >> number) {
    return number;
  }
  warningStream() << "Failed to extract numeric value of " << text << "\n";
  return 0;
}

template unsigned long extractNumber<unsigned long>(const std::string&, bool);
template unsigned int extractNumber<unsigned int>(const std::string&, bool);
template unsigned short extractNumber<unsigned short>(const std::string&, bool);

std::uint32_t extractNumber(const std::string& text, bool hexUnlessDecimal) {
  return extractNumber<unsigned int>(text, hexUnlessDecimal);
}

unsigned int getUniqueIDFor(const std::string& name) {
  static std::map<std::string, unsigned int> s_counters;
  return s_counters[name]++;
}

std::string getUniqueName(const std::string& name) {
  return name + "-" + toString(getUniqueIDFor(name));
}

std::string getUpperCaseString(const std::string& text) { return changeEach(text, upper); }

std::string getLowerCaseString(const std::string& text) { return changeEach(text, lower); }

std::string convertToTitle(const std::string& text) {
  // Nothing stands before the very first letter, so it is no word's first: it becomes lower case.
  char previous = '\0';
  return changeEach(text, [&previous](char c) {
    const char changed = previous == ' ' ? upper(c) : lower(c);
    previous = c;
    return changed;
  });
}

std::string getMetricTag(const std::string& text) {
  return changeEach(text, [](char c) { return c == ' ' ? '-' : upper(c); });
}

std::string getCounterNameFromMsgTag(const std::string& tag) {
  const Tokenizer tokenizer(tag, "_");
  return tokenizer.get_num_tokens() > 1 ? tokenizer.get_all_tokens()[1] : std::string();
}

// By value, as callers that were built before expect it.
// NOLINTBEGIN(performance-unnecessary-value-param)
std::string getCounterNameFromInitValue(const std::string& text, std::string endMark,
                                        std::string startMark) {
  const auto start = text.find(startMark);
  if (start == std::string::npos) {
    return {};
  }
  const auto end = text.find(endMark, start + 1);
  return end == std::string::npos ? std::string() : text.substr(start, end - start);
}
// NOLINTEND(performance-unnecessary-value-param)

char* strndup(const char* text, std::size_t length) {
  if (length == std::numeric_limits<std::size_t>::max()) {
    return nullptr;
  }
  char* const copy = static_cast<char*>(std::malloc(length + 1));
  if (copy == nullptr) {
    return nullptr;
  }
  const std::size_t copied = text != nullptr ? ::strnlen(text, length) : 0;
  if (copied > 0) {
    std::memcpy(copy, text, copied);
  }
  copy[copied] = '\0';
  return copy;
}

char* qm_strndup(const char* text, std::size_t length) { return pwr::strndup(text, length); }

}  // namespace pwr
