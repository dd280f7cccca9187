// The parts of a report that are not tables: headings and remarks.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>

#include "host/text_notes.h"

/// An id with its remarks, which may be null.
using NotesEntry = std::pair<const std::uint32_t, const pwr::TextNotes*>;

/// Write each remark that stands before, or after, tables, followed by an empty line. Without notes
/// nothing is written.
void processPreTableTextNotes(std::FILE* out, const NotesEntry& entry);
void processPostTableTextNotes(std::FILE* out, const NotesEntry& entry);

// The places before and after all of a metric's tables, which this report leaves empty.
void processPreMetricTextNotes(std::FILE* out, const NotesEntry& entry);
void processPostMetricTextNotes(std::FILE* out, const NotesEntry& entry);

/// Writes the heading of a metric's tables, and an empty line.
void processMetricContainerHeader(std::FILE* out, const std::string& name);
