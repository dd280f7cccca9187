// A binary writer that runs out of memory, at each of its allocations in turn.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/platform_metadata.h"
#include "qumetra/readers/byte_source.h"
#include "qumetra/readers/qmbin_reader.h"
#include "tests/support/disk_faults.h"
#include "tests/support/failing_allocation.h"
#include "tests/writers/binary_fixture.h"
#include "writers/binarywriter_plugin/sample_block.h"

namespace qumetra::test {
namespace {

using pwr::Data;
using pwr::Metric;
using testing::IsEmpty;

/// More than two blocks of samples hold.
constexpr std::size_t kMany = 2 * pwr::bin::SampleBlock::kMostSamples;

/// What a file says of the values of its samples, and what is wrong with it.
class Contents : public QmbinVisitor {
 public:
  explicit Contents(const std::string& path) {
    FileSource file(path);
    QmbinReader reader(*this);
    reader.read(file);
  }

  void sample(const QmbinSample& sample) override { values.push_back(sample.value); }
  void fault(std::uint64_t offset, const std::string& what) override {
    if (faults.size() < 5) {
      faults.push_back(std::to_string(offset) + ": " + what);
    }
  }

  std::vector<float> values;
  std::vector<std::string> faults;
};

/// All texts are too long to stand in a string itself.
class BinaryMemory : public BinaryResult {
 protected:
  BinaryMemory() {
    m_metadata.m_platformMetadata[pwr::SystemMetadata::kCpu] = &m_processor;
    m_metadata.m_osName = "a name of a system that needs memory";
    m_state.addAttributeValue(&m_attribute, Data("a text of an attribute that needs memory"));
    addMessage(0, Metric::SAMPLED_DELTA, 4);
    addMessage(1, Metric::SAMPLED_VALUE, 3);
    addMessage(0, Metric::SAMPLED_DELTA, kMany);
    addMessage(1, Metric::SAMPLED_VALUE, 5);
  }

  void addMessage(std::uint32_t metric, Metric::MetricType type, std::size_t count) {
    m_run.push_back(std::make_unique<BinaryMetric>(
        metric, type, "a name of metric " + std::to_string(metric) + " that needs memory"));
    BinaryMetric& message = *m_run.back();
    message.in(m_power);
    message.metric.entities = {{&m_entity, &m_state}};
    message.metric.metadataValues = {Data("a text of metadata that needs memory")};
    for (std::size_t i = 0; i < count; ++i) {
      message.value(i % 2 == 0 ? m_cpu0 : m_entity, Data(static_cast<double>(m_count++)), 8,
                    i % 2 == 0 ? &m_c6 : &m_state);
    }
    message.message();
  }

  /// Gives the metrics ids of their own, since each is told once in a process.
  void renumber() {
    static std::uint32_t s_used = 0;
    s_used += 2;
    for (const auto& message : m_run) {
      message->metric.metricId = s_used + message->metric.metricId % 2;
    }
  }

  std::string fileOf(std::size_t run) const {
    return m_directory.file("run" + std::to_string(run) + ".qmbin");
  }
  std::unique_ptr<BinaryWriter> started(std::size_t run) {
    auto writer = std::make_unique<BinaryWriter>();
    EXPECT_EQ(writer->init(m_directory.file("run" + std::to_string(run)), false), 0);
    pwr::SystemMessage message;
    message.m_metadata = &m_metadata;
    EXPECT_EQ(writer->writeMessage(message), 0);
    return writer;
  }

  TempArea m_area;
  /// The values of all elements are 0, 1, 2 … up to the count.
  std::vector<std::unique_ptr<BinaryMetric>> m_run;
  std::size_t m_count = 0;
  pwr::CPUMetadata m_processor;
  pwr::EntityHandle m_entity{40, {"a name of an entity that needs memory", "", ""}, nullptr};
  pwr::DataDescriptor m_state{41, {"a name of a state that needs memory", "", ""}};
};

std::vector<float> valuesOf(const BinaryMetric& message, float first) {
  std::vector<float> values;
  for (std::size_t i = 0; i < message.metric.getData().elements.size(); ++i) {
    values.push_back(first + static_cast<float>(i));
  }
  return values;
}

/// Calls `run` with 0, 1, 2 … until the allocation after so many others does not come.
void forEachAllocation(const std::function<bool(std::size_t)>& run) {
  std::size_t countdown = 0;
  while (run(countdown)) {
    ++countdown;
  }
  EXPECT_GT(countdown, 10U);
}

TEST_F(BinaryMemory, MessageThatFailsLosesNothingOfTheOthers) {
  forEachAllocation([this](std::size_t countdown) {
    renumber();
    const auto writer = started(countdown);
    std::vector<bool> failed(m_run.size());
    bool happened = false;
    {
      const FailingAllocation failing(countdown);
      for (std::size_t i = 0; i < m_run.size(); ++i) {
        failed[i] = writer->writeMessage(m_run[i]->metric) != 0;
      }
      happened = failing.happened();
    }
    EXPECT_EQ(writer->fini(), 0);
    const Contents contents(fileOf(countdown));
    EXPECT_THAT(contents.faults, IsEmpty()) << countdown;
    // Of a message that failed the front may be there.
    auto value = contents.values.begin();
    float first = 0;
    for (std::size_t i = 0; i < m_run.size(); ++i) {
      for (const float expected : valuesOf(*m_run[i], first)) {
        const bool there = value != contents.values.end() && *value == expected;
        EXPECT_TRUE(there || failed[i]) << expected << " at allocation " << countdown;
        value += there ? 1 : 0;
      }
      first += static_cast<float>(m_run[i]->metric.getData().elements.size());
    }
    EXPECT_EQ(value, contents.values.end()) << countdown;
    std::filesystem::remove(fileOf(countdown));
    return happened;
  });
}

TEST_F(BinaryMemory, EndThatFailsCanBeTriedAgain) {
  forEachAllocation([this](std::size_t countdown) {
    renumber();
    const auto writer = started(countdown);
    for (const auto& message : m_run) {
      EXPECT_EQ(writer->writeMessage(message->metric), 0);
    }
    bool happened = false;
    {
      const FailingAllocation failing(countdown);
      const int status = writer->fini();
      happened = failing.happened();
      EXPECT_EQ(status, happened ? 1 : 0);
    }
    if (happened) {
      EXPECT_EQ(writer->fini(), 0);
    }
    const Contents contents(fileOf(countdown));
    EXPECT_THAT(contents.faults, IsEmpty()) << countdown;
    std::vector<float> expected(m_count);
    std::iota(expected.begin(), expected.end(), 0.0F);
    EXPECT_TRUE(contents.values == expected) << countdown;
    std::filesystem::remove(fileOf(countdown));
    return happened;
  });
}

}  // namespace
}  // namespace qumetra::test
