// What is known of the objects that samples mention, so that a sample costs no texts.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace pwr {
class DataDescriptor;
class DataHandle;
class DynamicAttributeValueManager;
class EntityHandle;
class Data;
class Quantity;
}  // namespace pwr

/// One value of a sample as the record takes it. All pointers are borrowed.
struct EntityDataElement {
  const pwr::DataDescriptor* descriptor = nullptr;
  /// Null for a state that is named by a descriptor alone.
  const pwr::Data* value = nullptr;
  /// In ticks.
  std::uint64_t duration = 0;
  const pwr::DynamicAttributeValueManager* additionalInfo = nullptr;
};

namespace kelto {

/// The end of a list of elements.
inline constexpr std::uint32_t kNoElement = ~std::uint32_t{0};

/// An element and the next one of its entity.
struct LinkedElement {
  EntityDataElement data;
  std::uint32_t next = kNoElement;
};

/// The ids of the state that the last sample had at some place. Null when they depend on more than
/// the descriptor.
struct StateGuess {
  const pwr::DataDescriptor* descriptor = nullptr;
  std::uint64_t fieldId = 0;
  std::uint64_t colorId = 0;
};

/// An entity among those of a metric.
struct EntityTrack {
  const pwr::EntityHandle* entity = nullptr;
  std::uint64_t id = 0;
  /// The entry of `KeltoWriter::previousTsc`; null before the first time is checked.
  std::map<std::string, std::uint64_t>::value_type* previousTsc = nullptr;
  bool isDescribed = false;
  /// The sample that `first` and `last` belong to.
  std::uint64_t sampleNumber = 0;
  std::uint32_t first = kNoElement;
  std::uint32_t last = kNoElement;
};

/// A metric under one of its names: keys are made of names, and a metric may change its name.
struct MetricTrack {
  std::uint32_t id = 0;
  std::string name;
  std::string key;
  bool isUnsupported = false;
  std::vector<EntityTrack> entities;
  std::unordered_map<const pwr::EntityHandle*, std::uint32_t> entityIndex;
  /// The entities and states of the last sample's elements: most often the next sample's are the
  /// same.
  std::vector<std::uint32_t> lastSample;
  std::vector<StateGuess> lastStates;
};

/// The tracks of a metric. There may be as many names as messages, though most metrics have one.
struct MetricTracks {
  std::unordered_map<std::string, MetricTrack> byName;
  /// Null before the first.
  MetricTrack* last = nullptr;
};

/// A descriptor's name, and the ids of its state where they are known and depend on the name only.
struct DescriptorTrack {
  /// "NA" for a descriptor without a name.
  std::string name;
  bool hasStateIds = false;
  std::uint64_t fieldId = 0;
  std::uint64_t colorId = 0;
};

/// The parts of a quantity's metadata that could change.
struct QuantityTrack {
  const pwr::Quantity* rate = nullptr;
  double multiplier = 0;
};

/// Objects are known by their addresses, which serve for one run: `clear` before the next.
struct SampleCache {
  /// By id.
  std::unordered_map<std::uint32_t, MetricTracks> metrics;
  /// The track that was asked for last; a message asks more than once.
  MetricTrack* lastMetric = nullptr;
  std::unordered_map<const pwr::DataDescriptor*, DescriptorTrack> descriptors;
  std::unordered_map<const pwr::Quantity*, QuantityTrack> quantities;
  /// Pairs that have been written, with their ids; processes and threads that have been announced,
  /// with their pids and tids.
  std::unordered_map<const pwr::DataHandle*, std::uint64_t> pairs;
  std::unordered_map<const pwr::DataHandle*, std::uint64_t> processes;
  std::unordered_map<const pwr::DataHandle*, std::uint64_t> threads;

  void clear() {
    metrics.clear();
    lastMetric = nullptr;
    descriptors.clear();
    quantities.clear();
    pairs.clear();
    processes.clear();
    threads.clear();
  }
};

/// The sample under way. Members keep their memory from sample to sample.
struct CurrentSample {
  std::uint64_t number = 0;
  std::vector<LinkedElement> elements;
  /// Indexes of `MetricTrack::entities`, in the order in which the sample brings them.
  std::vector<std::uint32_t> entities;
};

}  // namespace kelto
