// The order of a metric's states in results.
#pragma once

#include <string>
#include <vector>

/// Whether the whole text is a decimal number as strtol reads it; the empty text is one, 0. A text
/// that begins with the largest signed 64-bit number, or with a larger one, ends the process.
bool isNumericState(const std::string& state);

/// Sorts states by number where they are numbers or go on with one behind a beginning that all
/// share; otherwise leaves them in the order in which they were met:
///
///     C10 C2 C3     ->  C2 C3 C10        the rest behind the shared "C" is a number
///     800 1200 Idle ->  800 1200 Idle    numbers first, the others by their bytes
///     Active Idle   ->  as it was        nothing shared
///     C3 C2 C10     ->  as it was        a first name of two characters is taken for shared
///
/// Ends the process for a number as `isNumericState` does.
void sortStateNames(std::vector<std::string>& states);
