// Texts of any bytes as JSON strings.
#pragma once

#include <string>
#include <string_view>

namespace qumetra {

/// Appends `text` with its quotes. Valid UTF-8 stays as it is but for quotes, backslashes and
/// control characters; a byte that is not part of valid UTF-8 becomes a lone \udc80 to \udcff.
void appendJsonText(std::string& out, std::string_view text);

}  // namespace qumetra
