// Messages that a process gives only once.
#pragma once

#include <utility>

namespace pwr {

/// Runs `action` the first time it is called with this `done` flag, which is static at the
/// caller's; later calls do nothing. Not synchronised.
///
///     static bool s_warned = false;
///     pwr::executeOnce(s_warned, [&] { ...warn... });
template <typename Action>
void executeOnce(bool& done, Action&& action) {
  if (done) {
    return;
  }
  done = true;
  std::forward<Action>(action)();
}

}  // namespace pwr
