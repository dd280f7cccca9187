// What the writer makes of messages is what the reader finds.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "host/handles.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/system_metadata.h"
#include "qumetra/readers/byte_source.h"
#include "qumetra/readers/qmbin_reader.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "writers/binarywriter_plugin/binary_writer.h"

namespace qumetra::test {
namespace {

/// Timestamp, metric, name, state and value.
using Sample = std::tuple<std::uint64_t, std::string, std::string, std::string, float>;

class Collector : public QmbinVisitor {
 public:
  void sample(const QmbinSample& sample) override {
    samples.emplace_back(sample.timestamp, sample.metric == nullptr ? "?" : sample.metric->name,
                         *sample.name, sample.descriptor == nullptr ? "" : sample.descriptor->name,
                         sample.value);
  }
  void fault(std::uint64_t /*offset*/, const std::string& what) override { faults.push_back(what); }

  std::vector<Sample> samples;
  std::vector<std::string> faults;
};

/// A metric is told once in the life of a process, so each needs an id of its own.
std::uint32_t freshMetricId() {
  static std::uint32_t s_last = 0;
  return ++s_last;
}

/// Things with arbitrary names to choose from.
class World {
 public:
  explicit World(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
      const pwr::HandleTexts texts{name, "", ""};
      m_entities.push_back(std::make_unique<pwr::EntityHandle>(m_nextId++, texts, nullptr));
      m_states.push_back(std::make_unique<pwr::DataDescriptor>(m_nextId++, texts));
      m_ids.push_back(freshMetricId());
    }
  }

  /// Sends one value; even metrics are deltas, odd ones are values. Returns what is to be found.
  Sample send(BinaryWriter& writer, std::uint64_t timestamp, std::uint32_t choice, double value) {
    const std::size_t which = choice % m_ids.size();
    const pwr::EntityHandle& entity = *m_entities[(choice >> 8U) % m_ids.size()];
    const bool isDelta = which % 2 == 0;
    const bool hasState = (choice & 0x800000U) != 0;
    const pwr::DataDescriptor* state =
        hasState ? m_states[(choice >> 16U) % m_ids.size()].get() : nullptr;
    const pwr::DataElement element(&entity, state, nullptr, pwr::Data(value), 4, nullptr);
    pwr::Metric metric;
    metric.metricId = m_ids[which];
    metric.name = "metric " + std::to_string(which);
    metric.metricType = isDelta ? pwr::Metric::SAMPLED_DELTA : pwr::Metric::SAMPLED_VALUE;
    metric.entities = {{&entity, state}};
    metric.setData({timestamp, {&element}});
    EXPECT_EQ(writer.writeMessage(metric), 0);
    const std::string stateName = state == nullptr ? "" : state->getName();
    return {timestamp, metric.name, isDelta ? stateName : entity.getName(), stateName,
            static_cast<float>(value)};
  }

 private:
  std::uint64_t m_nextId = 1;
  std::vector<std::unique_ptr<pwr::EntityHandle>> m_entities;
  std::vector<std::unique_ptr<pwr::DataDescriptor>> m_states;
  std::vector<std::uint32_t> m_ids;
};

struct Step {
  std::uint64_t timestamp;
  std::uint32_t choice;
  double value;
};

std::vector<Step> arbitrarySteps() {
  const auto numbers =
      *rc::gen::arbitrary<std::vector<std::tuple<std::uint64_t, std::uint32_t, double>>>();
  std::vector<Step> steps;
  for (const auto& [timestamp, choice, value] : numbers) {
    steps.push_back({timestamp, choice * 2654435761U, value});
  }
  return steps;
}

void begin(BinaryWriter& writer, const pwr::SystemMetadata& metadata, const TempDir& directory,
           bool continuous) {
  pwr::SystemMessage system;
  system.m_metadata = &metadata;
  RC_ASSERT(writer.init(directory.file("run"), continuous) == 0);
  RC_ASSERT(writer.writeMessage(system) == 0);
}

RC_GTEST_PROP(QmbinRoundTrip, FileSaysWhatTheMessagesSaid, ()) {
  const TempDir directory;
  LogCapture log;
  World world(*rc::gen::nonEmpty<std::vector<std::string>>());
  pwr::SystemMetadata metadata;
  metadata.m_timestampFrequency = 4;
  BinaryWriter writer;
  begin(writer, metadata, directory, false);
  std::vector<Sample> expected;
  for (const Step& step : arbitrarySteps()) {
    expected.push_back(world.send(writer, step.timestamp, step.choice, step.value));
  }
  RC_ASSERT(writer.fini() == 0);
  Collector found;
  QmbinReader reader(found);
  FileSource file(directory.file("run.qmbin"));
  reader.read(file);
  RC_ASSERT(found.faults.empty());
  RC_ASSERT(found.samples == expected);
}

RC_GTEST_PROP(QmbinRoundTrip, SeriesReadInOrderSaysWhatTheMessagesSaid, ()) {
  static int s_nextFile = 0;
  const TempDir directory;
  LogCapture log;
  World world(*rc::gen::nonEmpty<std::vector<std::string>>());
  pwr::SystemMetadata metadata;
  metadata.m_timestampFrequency = 4;
  BinaryWriter writer;
  begin(writer, metadata, directory, true);
  const int firstFile = s_nextFile;
  std::vector<Sample> expected;
  for (const Step& step : arbitrarySteps()) {
    expected.push_back(world.send(writer, step.timestamp, step.choice, step.value));
    if ((step.choice & 0x1000000U) != 0) {
      RC_ASSERT(writer.flushContinuousResults(metadata) == 1);
      ++s_nextFile;
    }
  }
  RC_ASSERT(writer.flushContinuousResults(metadata) == 1);
  ++s_nextFile;
  Collector found;
  QmbinReader reader(found);
  for (int number = firstFile; number < s_nextFile; ++number) {
    FileSource file(directory.file("run_" + std::to_string(number) + ".qmbin"));
    reader.read(file);
  }
  RC_ASSERT(found.faults.empty());
  RC_ASSERT(found.samples == expected);
}

}  // namespace
}  // namespace qumetra::test
