// Runs the messages of features when their time has come.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace pwr {
class InputMsg;
}

namespace qumetra {

/// Carries the operations of all write messages with this trigger out, in order; one that fails
/// stops nothing. Returns how many failed. The messages are borrowed.
std::size_t fireWriteTrigger(const std::vector<pwr::InputMsg*>& messages,
                             const std::string& trigger);

}  // namespace qumetra
