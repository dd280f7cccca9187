// The services of the common code, all at once.
#pragma once

#include "client/src/common/error_text.h"     // IWYU pragma: export
#include "client/src/common/line_reader.h"    // IWYU pragma: export
#include "client/src/common/number_text.h"    // IWYU pragma: export
#include "client/src/common/path_glob.h"      // IWYU pragma: export
#include "client/src/common/path_ops.h"       // IWYU pragma: export
#include "client/src/common/platform_text.h"  // IWYU pragma: export
#include "client/src/common/pw_files.h"       // IWYU pragma: export
#include "client/src/common/serializer.h"     // IWYU pragma: export
#include "client/src/common/text_parsing.h"   // IWYU pragma: export
#include "client/src/common/timer.h"          // IWYU pragma: export
#include "client/src/common/tokenizer.h"      // IWYU pragma: export
