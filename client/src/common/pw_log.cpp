#include "client/src/common/pw_log.h"
