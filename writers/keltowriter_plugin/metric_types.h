// The numbers of metric types in the import stream. They stand in files and never change.
#pragma once

#include <cstdint>

namespace kelto {

inline constexpr std::uint16_t kSampledFiniteSetCounter = 4;
inline constexpr std::uint16_t kSampledValue = 5;
inline constexpr std::uint16_t kSampledFiniteSetValue = 6;
inline constexpr std::uint16_t kTracedFiniteSetCounter = 7;
inline constexpr std::uint16_t kSampledCounter = 8;
inline constexpr std::uint16_t kTracedEvent = 9;
/// A type without a node; also a sample's state hint before a value tells more.
inline constexpr std::uint16_t kNoMetricType = 10;

}  // namespace kelto
