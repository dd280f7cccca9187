// Texts taken apart and turned into numbers and names. Nothing here keeps state but the counters of
// `getUniqueIDFor`, which are not synchronised; all other calls may run together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace pwr {

/// Whether the environment variable is exactly "Y" or "y". A null name is a plain warning and
/// false.
bool check_env(const char* name);

/// Token number `index`, counted from 1, of a text that has `expected` tokens. An index out of that
/// range and another number of tokens are plain warnings and give an empty text.
std::string get_required_token(const std::string& text, int index, int expected,
                               const char* delimiters = " ");

/// Moves the part of `rest` before the first `delimiter` to `token`, and the delimiter away;
/// without one all of `rest`. Returns 0, or all ones for an empty `rest`. `flag` is not used.
int getNextToken(std::string& token, std::string& rest, const std::string& delimiter, bool flag);

/// Whether the text has the form of a number: an optional "-", then digits and points, hexadecimal
/// digits behind "0x" or "0X". How many points, and where, is not looked at.
bool isNumber(const std::string& text);

/// The leading number of a text: decimal when it is all digits, else hexadecimal. 0 when there is
/// none, and the largest number when it does not fit.
unsigned long extract_number_i(const std::string& text);

/// The leading number of a text: hexadecimal when it begins with "0x" or "0X", or when
/// `hexUnlessDecimal` is set and it has a character that is no decimal digit; else decimal. A text
/// without a number, or with one that does not fit, is a stream warning and 0.
std::uint32_t extractNumber(const std::string& text, bool hexUnlessDecimal);
/// The same for unsigned numbers of other widths: unsigned long, unsigned int and unsigned short.
template <typename Number>
Number extractNumber(const std::string& text, bool hexUnlessDecimal);

/// How many times the process has asked for `name` before.
unsigned int getUniqueIDFor(const std::string& name);
/// The name, "-" and its `getUniqueIDFor`.
std::string getUniqueName(const std::string& name);

std::string getUpperCaseString(const std::string& text);
std::string getLowerCaseString(const std::string& text);
/// Letters behind a blank in upper case, all others, also the very first, in lower case.
std::string convertToTitle(const std::string& text);
/// Upper case, with "-" for each blank.
std::string getMetricTag(const std::string& text);

/// The second of the tokens that "_" separates; empty if there is none.
std::string getCounterNameFromMsgTag(const std::string& tag);
/// The part of `text` from the first `startMark`, included, to the next `endMark` that begins
/// behind the mark's first character; empty if either is missing.
std::string getCounterNameFromInitValue(const std::string& text, std::string endMark,
                                        std::string startMark);

/// A copy of up to `length` characters in a block of `length` plus 1 bytes, which the caller gives
/// to free; a null text is taken for an empty one. Null when there is no memory, or no such size.
char* strndup(const char* text, std::size_t length);
char* qm_strndup(const char* text, std::size_t length);

}  // namespace pwr
