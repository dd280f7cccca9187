// The records of a .qmbin file.
//
// A file is a plain run of records, without head or end. Numbers are little-endian.
//
//     0  u16  size of the payload
//     2  u8   type, a `MsgType`
//     3       payload
//
// Texts, descriptors and metrics are told once, in records of their own, which stand before all
// records that refer to them. Texts and descriptors have numbers from 1; 0 stands for none.
#pragma once

#include <cstddef>
#include <cstdint>

namespace pwr::bin {

/// The types of records. They stand in files and never change. Records stand in files in this
/// order.
enum class MsgType : std::uint8_t {
  /// u16 number, u16 size, the bytes.
  String = 0,
  /// What was measured: see `SystemField`.
  System = 1,
  /// u16 number, u16 text of the first attribute, u16 name.
  Descriptor = 2,
  /// See `MetricField`.
  Metric = 3,
  /// See `SampleField`.
  Sample = 4,
};

constexpr std::size_t kHeadSize = 3;

// What payloads have at least: the parts of variable length are not counted.
constexpr std::uint16_t kStringFixedSize = 4;
constexpr std::uint16_t kSystemSize = 64;
constexpr std::uint16_t kDescriptorSize = 6;
constexpr std::uint16_t kMetricFixedSize = 20;
constexpr std::uint16_t kSampleSize = 24;
constexpr std::size_t kSampleRecordSize = kHeadSize + kSampleSize;

// Where the fields of a payload begin. Texts are u16 numbers of text records.
enum StringField : std::size_t { kStringIndex = 0, kStringLength = 2 };
enum DescriptorField : std::size_t {
  kDescriptorIndex = 0,
  kDescriptorAttribute = 2,
  kDescriptorName = 4,
};
enum SystemField : std::size_t {
  /// u64 ticks.
  kFirstTimestamp = 0,
  kLastTimestamp = 8,
  /// f32 seconds.
  kDuration = 16,
  /// f32 MHz.
  kHighFrequency = 20,
  kLowFrequency = 24,
  kCpuFrequency = 28,
  kBusFrequency = 32,
  /// u32
  kPlatformId = 36,
  /// Texts.
  kPlatformName = 40,
  kCpuCodeName = 42,
  kNativeModelName = 44,
  kPchNames = 46,
  kHostName = 48,
  /// u16
  kPackageCount = 50,
  kModuleCount = 52,
  kCoreCount = 54,
  kThreadCount = 56,
  /// Texts. The name of the system stands there twice.
  kOsType = 58,
  kOsName = 60,
  kOsNameAgain = 62,
};
enum MetricField : std::size_t {
  /// u32
  kMetricId = 0,
  /// Texts.
  kGroupName = 4,
  kMetricName = 6,
  kTypeName = 8,
  kQuantityName = 10,
  kUnits = 12,
  /// u16, 1 where the three fields of the quantity say something.
  kHasQuantity = 14,
  /// u16: how many u32 columns and, behind them, u16 texts follow.
  kEntityCount = 16,
  kMetadataCount = 18,
};
enum SampleField : std::size_t {
  /// u64 ticks.
  kTimestamp = 0,
  /// f32 microseconds.
  kSampleDuration = 8,
  /// u32
  kSampleMetricId = 12,
  /// Text.
  kSampleName = 16,
  /// u16
  kSampleDescriptor = 18,
  /// f32
  kSampleValue = 20,
};

}  // namespace pwr::bin
