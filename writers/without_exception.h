// The border that no exception of a writer crosses.
#pragma once

/// Runs `action` and returns what it returns, a status. What it throws, for want of memory most
/// likely, ends here and gives `failure`: hosts catch nothing.
template <typename Action>
int withoutException(Action action, int failure = 1) {
  try {
    return action();
  } catch (...) {
    return failure;
  }
}
