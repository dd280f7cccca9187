// The library of fake writers, seen from a test.
#pragma once

#include "tests/run/fake_writers.h"

namespace qumetra::test {

/// The calls of the fake writers. Loads the library when that has not happened yet.
Calls& fakeCalls();

}  // namespace qumetra::test
