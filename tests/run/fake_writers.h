// What the library of fake writers and the tests agree on.
#pragma once

#include <string>
#include <vector>

namespace qumetra::test {

/// The calls that the fake writers got, in order, each as "writer.operation" and, where there is
/// something to tell, its arguments in brackets.
using Calls = std::vector<std::string>;

/// The function `fakeCalls` of the library: the list, which the caller may clear.
using FakeCallsFunction = Calls* (*)();
inline constexpr const char* kFakeCalls = "fakeCalls";

/// Makes the library's constructor of writers fail when set: "null", "throw" or "none".
inline constexpr const char* kCreateVariable = "QM_FAKE_CREATE";

}  // namespace qumetra::test
