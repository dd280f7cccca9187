// The expansion of path patterns.
#pragma once

#include <deque>
#include <string>

namespace pwr {

/// Appends what a shell's `ls` lists for `pattern`, without a shell: nothing in a pattern is ever
/// run.
///
/// A pattern without any of the characters `*[]^` is one result, itself without its double quotes.
/// Otherwise blanks cut it into words and each word is expanded on its own. `*`, `?` and `[...]`
/// match as in a shell, `[^...]` as `[!...]`; a backslash makes the next character literal; double
/// quotes are removed, and what they enclose is literal, blanks included. All else stands for
/// itself: `$`, backticks, `;`, `|`, `'`, `{`, `~`, a leading `-`. A word that matches nothing adds
/// nothing.
///
/// Results come as ls prints them, trimmed, in byte order whatever the locale: first the files,
/// then directory by directory the names of the visible entries in it. Beside other words or
/// matches, the entries have an empty line (unless it is the first) and a line "<directory>:" above
/// them. A file name with a newline is one result.
///
/// Returns true. The one failure is that memory did not suffice: it is told on standard error, the
/// result is false, and `results` has what was there before.
bool doGlob(const std::string& pattern, std::deque<std::string>& results);

}  // namespace pwr
