// The ways in which the library speaks to the user, all through the sinks of the environment.
//
// Every text brings its own prefix ("WARNING: ", "ERROR: ") and line end. Without an environment
// nothing is said. `errno` is kept by all of them. Not synchronised.
#pragma once

#include <cstdarg>
#include <ostream>
#include <string>

#include "host/environment.h"

namespace pwr {

/// The tag that switches the conditional warnings of the writers on. Hosts know it by this name.
inline constexpr const char* c_textWriterConditionalLogTag = "text-writer-plugin";

/// Logs an error at level 1, when errors show.
void logError(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Logs a warning at level 2, when warnings show.
void logPlainWarning(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Logs a warning at level 2, when warnings show or the user has switched `tag` on.
void logTaggedWarning(const char* tag, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

/// Logs a note at level 0 to the warning sink, whatever the verbosity.
void logNote(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Logs at level 0 to the error sink, whatever the verbosity.
void logFatal(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Whether plain warnings show: for texts that cost something to make.
bool plainWarningsShow();

/// The text that `format` makes of `arguments`.
__attribute__((format(printf, 1, 0))) std::string formatText(const char* format,
                                                             std::va_list arguments);

/// Logs an error at level 1, when errors show or the user has switched `tag` on.
void logTaggedError(const char* tag, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Shows a remark about the platform, whatever the level, and keeps it for the host's summary. The
/// line end is added here.
void logPlatformNote(const std::string& text);

/// The stream that takes what is below the level. Without an environment it drops everything.
std::ostream& quietStream();

/// The stream for a warning that is inserted piece by piece. When warnings show, the stream is the
/// warning sink and has got "2WARNING: " already (the digit is part of the line); otherwise it is
/// the quiet stream and has got nothing. Without an environment it drops everything.
std::ostream& warningStream();

/// The same for an error: "1ERROR: ", when errors show.
std::ostream& errorStream();

/// Inserts `label`, the number and the text of the current `errno` and a line end as a stream
/// warning.
void streamErrnoWarning(const std::string& label);

/// The same as a stream error.
void streamErrnoError(const std::string& label);

}  // namespace pwr
