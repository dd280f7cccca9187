// What keeps a run from starting.
#pragma once

#include <stdexcept>

namespace qumetra {

/// Something that keeps a run from starting: no library, an unknown writer name, no temporary
/// directory. `what()` is one line for the user.
class RunError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace qumetra
