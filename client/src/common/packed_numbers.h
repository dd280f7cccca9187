// Numbers in packed records.
#pragma once

#include <type_traits>

#include "client/src/common/serializer.h"

namespace pwr {

/// Appends the native bytes of `value`.
template <typename Number>
void writeNumber(Serializer& serializer, Number value) {
  static_assert(std::is_arithmetic_v<Number>, "only numbers are their bytes");
  serializer.write_to(&value, sizeof value);
}

/// Takes the bytes of a number. False, and `value` is left alone, when they fall short.
template <typename Number>
bool readNumber(Serializer& serializer, Number& value) {
  static_assert(std::is_arithmetic_v<Number>, "only numbers are their bytes");
  return serializer.read_from(&value, sizeof value) == sizeof value;
}

}  // namespace pwr
