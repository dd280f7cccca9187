// What the writer makes of messages is what the reader finds. A process makes one file, so this is
// one long stream of numbers drawn with a fixed seed.
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/handles.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/platform_metadata.h"
#include "host/system_metadata.h"
#include "qumetra/readers/byte_source.h"
#include "qumetra/readers/pwr_checker.h"
#include "qumetra/readers/pwr_findings.h"
#include "qumetra/readers/pwr_names.h"
#include "qumetra/readers/pwr_reader.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "writers/keltowriter_plugin/kelto_writer.h"

namespace qumetra::test {
namespace {

/// Metric, time, entity, state, duration, what kind of value, and its bits.
using Value = std::tuple<std::string, std::uint64_t, std::string, std::string, std::uint64_t,
                         std::string, std::uint64_t>;

constexpr std::uint64_t kStart = 1000;

/// Sends random samples and keeps what they said.
class World {
 public:
  World() {
    for (int i = 0; i < 6; ++i) {
      const pwr::HandleTexts entity{"entity " + std::to_string(i), "", ""};
      const pwr::EntityHandle* const parent = i < 2 ? nullptr : m_entities[0].get();
      m_entities.push_back(std::make_unique<pwr::EntityHandle>(m_nextId++, entity, parent));
      const pwr::HandleTexts state{"state " + std::to_string(i), "", ""};
      m_states.push_back(std::make_unique<pwr::DataDescriptor>(m_nextId++, state));
    }
  }

  /// One sample of one of five metrics, of one element per entity at most.
  void send(KeltoWriter& writer) {
    m_time += 1 + draw(1000);
    const std::size_t which = draw(5);
    pwr::Metric metric;
    metric.metricId = static_cast<std::uint32_t>(40 + which);
    metric.name = "metric " + std::to_string(which);
    metric.metricType = which == 0   ? pwr::Metric::SAMPLED_RESIDENCY
                        : which == 1 ? pwr::Metric::SAMPLED_DELTA
                                     : pwr::Metric::SAMPLED_VALUE;
    std::vector<std::unique_ptr<pwr::DataElement>> elements;
    for (const auto& entity : m_entities) {
      if (draw(3) != 0) {
        elements.push_back(element(metric, *entity));
      }
    }
    pwr::SampleData data{m_time, {}};
    for (const auto& one : elements) {
      data.elements.push_back(one.get());
    }
    metric.setData(std::move(data));
    EXPECT_EQ(writer.writeMessage(metric), 0);
  }

  const std::multiset<Value>& said() const { return m_said; }

 private:
  std::uint64_t draw(std::uint64_t below) { return m_random() % below; }

  std::unique_ptr<pwr::DataElement> element(const pwr::Metric& metric,
                                            const pwr::EntityHandle& entity) {
    const pwr::DataDescriptor& state = *m_states[draw(m_states.size())];
    const std::uint64_t duration = 1 + draw(500);
    const auto [kind, bits, data] = value(metric.metricType);
    m_said.emplace(metric.name, m_time, entity.getName(), state.getName(), duration, kind, bits);
    return std::make_unique<pwr::DataElement>(&entity, &state, nullptr, data, duration, nullptr);
  }

  std::tuple<std::string, std::uint64_t, pwr::Data> value(pwr::Metric::MetricType type) {
    const std::uint64_t bits = m_random();
    switch (type == pwr::Metric::SAMPLED_RESIDENCY ? 0 : draw(3)) {
      case 0:
        return {"uint", bits, pwr::Data(static_cast<unsigned long>(bits))};
      case 1:
        return {"int", bits, pwr::Data::fromInt(static_cast<long>(bits))};
      default: {
        const double real = static_cast<double>(static_cast<std::int64_t>(bits)) / 1024;
        return {"real", std::bit_cast<std::uint64_t>(real), pwr::Data(real)};
      }
    }
  }

  std::uint64_t m_nextId = 100;
  std::uint64_t m_time = kStart;
  std::mt19937_64 m_random{20240607};
  std::vector<std::unique_ptr<pwr::EntityHandle>> m_entities;
  std::vector<std::unique_ptr<pwr::DataDescriptor>> m_states;
  std::multiset<Value> m_said;
};

/// Puts samples together from their attributes, names being resolved.
class Collector : public PwrVisitor {
 public:
  void record(const PwrRecord& record) override {
    m_names.learn(record);
    const auto* const sample = std::get_if<PwrSample>(&record.body);
    if (sample != nullptr) {
      for (const PwrAttribute& attribute : sample->attributes) {
        take(sample->tsc, attribute);
      }
    }
  }
  void fault(std::uint64_t /*offset*/, const std::string& what) override { ADD_FAILURE() << what; }

  std::multiset<Value> found;

 private:
  void take(std::uint64_t tsc, const PwrAttribute& attribute) {
    switch (attribute.id) {
      case PwrAttributeId::Metric:
        m_metric = nameOf(attribute);
        return;
      case PwrAttributeId::Entity:
        m_entity = nameOf(attribute);
        return;
      case PwrAttributeId::Field:
        m_state = nameOf(attribute);
        return;
      case PwrAttributeId::Duration:
        m_duration = attribute.bits;
        return;
      case PwrAttributeId::Color:
        EXPECT_NE(nameOf(attribute), "?");
        return;
      default:
        found.emplace(m_metric, tsc, m_entity, m_state, m_duration, pwrAttributeName(attribute.id),
                      attribute.bits);
    }
  }
  std::string nameOf(const PwrAttribute& attribute) const {
    const std::string* const name = m_names.find(*pwrReferredUid(attribute));
    return name == nullptr ? "?" : *name;
  }

  PwrNames m_names;
  std::string m_metric;
  std::string m_entity;
  std::string m_state;
  std::uint64_t m_duration = 0;
};

/// Nothing is to be found.
class NoFindings : public PwrFindings {
 public:
  void fault(std::uint64_t offset, const std::string& what) override {
    ADD_FAILURE() << offset << ": " << what;
  }
  void warning(std::uint64_t offset, const std::string& what) override { fault(offset, what); }
};

TEST(PwrRoundTrip, FileSaysWhatTheMessagesSaidAndPassesTheCheck) {
  const TempDir directory;
  const LogCapture log;
  pwr::CPUMetadata cpu;
  cpu.m_cpuWords.cpuFrequencyMHz = 2000;
  pwr::SystemMetadata metadata;
  metadata.m_platformMetadata[pwr::SystemMetadata::kCpu] = &cpu;
  metadata.m_timestampFrequency = 1000;
  metadata.m_firstTimestamp = kStart;
  pwr::SystemMessage system;
  system.m_id = 1;
  system.m_metadata = &metadata;
  KeltoWriter writer;
  ASSERT_EQ(writer.init(directory.file("run"), false), 0);
  ASSERT_EQ(writer.writeMessage(system), 0);
  World world;
  for (int i = 0; i < 3000; ++i) {
    world.send(writer);
  }
  ASSERT_EQ(writer.fini(), 0);

  Collector collector;
  PwrReader reader(collector);
  FileSource file(directory.file("run.pwr"));
  reader.read(file);
  EXPECT_GT(world.said().size(), 5000U);
  EXPECT_TRUE(collector.found == world.said());
  NoFindings findings;
  PwrChecker checker(findings);
  PwrReader checked(checker);
  FileSource again(directory.file("run.pwr"));
  checker.end(checked.read(again).end);
}

}  // namespace
}  // namespace qumetra::test
