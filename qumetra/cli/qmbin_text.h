// What the records of a .qmbin file say, as a line of text for people.
#pragma once

#include <string>

#include "qumetra/readers/qmbin_records.h"

namespace qumetra::cli {

// Append a line without its end. What a record leaves open, an empty name or a count or frequency
// of 0 in a system record, is left out. A name that would break the line, or that no terminal
// should get, is quoted as in JSON.
void appendText(std::string& out, const QmbinSystem& system);
void appendText(std::string& out, const QmbinDescriptor& descriptor);
void appendText(std::string& out, const QmbinMetric& metric);
void appendText(std::string& out, const QmbinSample& sample);

}  // namespace qumetra::cli
