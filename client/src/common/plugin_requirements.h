// The conditions under which features and metrics are available, all at once.
#pragma once

#include "client/src/common/metric_enabled_requirement.h"  // IWYU pragma: export
#include "client/src/common/platform_requirements.h"       // IWYU pragma: export
#include "client/src/common/plugin_requirement.h"          // IWYU pragma: export
#include "client/src/common/plugin_requirement_group.h"    // IWYU pragma: export
#include "client/src/common/remarked_requirements.h"       // IWYU pragma: export
