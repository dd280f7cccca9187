// Tables as the text of a recording.
#pragma once

#include "host/table.h"
#include "host/text_notes.h"
#include "qumetra/recording/definition_writer.h"

namespace qumetra {

/// Appends the table as an object. All that is told about it is read as any reader of the contract
/// reads it; what its handles refer to is defined first.
void appendTable(JsonText& json, DefinitionWriter& definitions, const pwr::TableMessage& table);

/// Appends an object from placement to list of strings.
void appendNotes(JsonText& json, const pwr::TextNotes& notes);

}  // namespace qumetra
