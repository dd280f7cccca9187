// The texts of the operating system's error numbers.
#pragma once

#include <cstddef>
#include <string>

namespace pwr {

/// Writes the text of the error `number` and a zero byte into `buffer` of `size` bytes. A text that
/// does not fit is a failed copy: a plain warning, and an empty `buffer`. `errno` is kept.
void pw_strerror(int number, char* buffer, std::size_t size);

/// The same text as a string.
std::string errorText(int number);

}  // namespace pwr
