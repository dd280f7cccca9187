// The platform entries of a system's description as the text of a recording.
#pragma once

#include "host/system_metadata.h"
#include "qumetra/recording/json_text.h"

namespace qumetra {

/// Appends the list of platform entries in the order of their types. What an entry of type `kCpu`
/// or `kPch` says is left out when it is not of the class that the type stands for.
void appendPlatform(JsonText& json, const pwr::SystemMetadata& metadata);

}  // namespace qumetra
