// Values, attribute lists and notes as they stand in records.
#pragma once

#include <string>
#include <vector>

#include "host/attributes.h"
#include "host/data.h"
#include "host/text_notes.h"
#include "qumetra/recording/definitions.h"
#include "qumetra/recording/record_object.h"

namespace qumetra {

/// A value: an object with one member that gives the tag.
pwr::Data readData(RecordValue value, const Definitions& definitions);
/// The value of tag 0 when the member is absent.
pwr::Data readData(RecordObject& record, std::string_view name, const Definitions& definitions);
/// A list of values.
std::vector<pwr::Data> readDataList(RecordObject& record, std::string_view name,
                                    const Definitions& definitions);

/// A list of `[attribute or null, value]`.
std::vector<pwr::AttributeValueManager::Entry> readAttributeValues(RecordObject& record,
                                                                   std::string_view name,
                                                                   const Definitions& definitions);

/// An object from placement to list of strings.
pwr::TextNotes readNotes(RecordValue value);

/// A list of strings.
std::vector<std::string> readStrings(RecordObject& record, std::string_view name);

}  // namespace qumetra
