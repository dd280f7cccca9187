// Calls into foreign code that may throw anything.
#pragma once

#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace qumetra {

/// Runs `call` and returns what it threw as a text, or nothing when it returned. Writers throw
/// character pointers too.
template <typename Call>
std::optional<std::string> thrownBy(Call&& call) {
  try {
    std::forward<Call>(call)();
    return std::nullopt;
  } catch (const std::exception& exception) {
    return exception.what();
  } catch (const char* text) {
    return text != nullptr ? text : "a null text";
  } catch (...) {
    return "something that has no text";
  }
}

}  // namespace qumetra
