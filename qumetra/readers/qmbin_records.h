// What the records of a .qmbin file say, names being resolved.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qumetra {

/// A name and what kind of thing it is; the attribute is empty where there is none.
struct QmbinDescriptor {
  std::uint16_t index = 0;
  std::string attribute;
  std::string name;
};

/// The measured system and the collection.
struct QmbinSystem {
  /// Ticks.
  std::uint64_t firstTimestamp = 0;
  std::uint64_t lastTimestamp = 0;
  float durationSeconds = 0;
  float highFrequencyMHz = 0;
  float lowFrequencyMHz = 0;
  float cpuFrequencyMHz = 0;
  float busFrequencyMHz = 0;
  std::uint32_t platformId = 0;
  std::string platformName;
  std::string cpuCodeName;
  std::string nativeModelName;
  std::string controllerHubs;
  std::string hostName;
  std::uint16_t packages = 0;
  std::uint16_t modules = 0;
  std::uint16_t cores = 0;
  std::uint16_t threads = 0;
  std::string osType;
  std::string osName;
};

/// What is told of a metric. The texts of the quantity, where there are any, say something only for
/// a metric that has a quantity; the format does not tell whether they are left over from another.
struct QmbinMetric {
  struct Column {
    /// Empty for a column of no entity.
    std::optional<std::string> entity;
    /// 0 for none.
    std::uint16_t descriptor = 0;
  };

  std::uint32_t id = 0;
  std::string group;
  std::string name;
  std::string type;
  std::string quantity;
  std::string units;
  bool hasQuantity = false;
  std::vector<Column> columns;
  std::vector<std::string> metadata;
};

/// One value. The pointers are valid during the call that delivers it.
struct QmbinSample {
  /// Ticks.
  std::uint64_t timestamp = 0;
  float durationMicroseconds = 0;
  std::uint32_t metricId = 0;
  /// Null when no record has told the metric.
  const QmbinMetric* metric = nullptr;
  /// The entity, or the state for a metric of deltas.
  const std::string* name = nullptr;
  /// Null for none, and when no record has told it.
  const QmbinDescriptor* descriptor = nullptr;
  float value = 0;
};

}  // namespace qumetra
