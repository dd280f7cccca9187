// Metrics and samples for the tests of the over-time writers.
#pragma once

#include <stdlib.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/handles.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "host/system_metadata.h"
#include "qumetra/model/model.h"
#include "tests/support/disk_faults.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {

inline pwr::TextMessage textOf(const std::string& text) {
  pwr::TextMessage message;
  message.setMessage(text);
  return message;
}

/// What a sample says of one value beside the value. 200000 ticks are 100 ms by the clock of
/// `TimeLineTest`.
struct Circumstances {
  std::uint64_t duration = 200'000;
  const pwr::DynamicAttributeValueManager* info = nullptr;
};

/// A sample under construction.
class Sample {
 public:
  explicit Sample(pwr::Metric::MetricType type, std::uint64_t timestamp,
                  std::uint32_t metricId = 1) {
    metric.metricType = type;
    metric.metricId = metricId;
    metric.name = "Metric";
    m_data.timestamp = timestamp;
  }

  Sample& declare(const pwr::EntityHandle* entity,
                  const pwr::DataDescriptor* descriptor = nullptr) {
    metric.entities.emplace_back(entity, descriptor);
    return *this;
  }
  Sample& named(const std::string& name) {
    metric.name = name;
    return *this;
  }
  Sample& in(const pwr::Quantity& quantity) {
    metric.quantity = &quantity;
    return *this;
  }
  Sample& group(const std::string& name) {
    metric.groupName = name;
    return *this;
  }
  Sample& list(const pwr::EntityHandle& entity) {
    metric.entityList.push_back(&entity);
    return *this;
  }
  Sample& value(const pwr::EntityHandle& entity, pwr::Data value,
                const pwr::DataDescriptor* descriptor = nullptr, Circumstances more = {}) {
    m_elements.push_back(std::make_unique<pwr::DataElement>(
        &entity, descriptor, nullptr, std::move(value), more.duration, more.info));
    m_data.elements.push_back(m_elements.back().get());
    return *this;
  }
  Sample& value(const pwr::EntityHandle& entity, unsigned long number,
                const pwr::DataDescriptor* descriptor = nullptr, Circumstances more = {}) {
    return value(entity, pwr::Data(number), descriptor, more);
  }

  const pwr::Metric& message() {
    metric.setData(m_data);
    return metric;
  }

  pwr::Metric metric;

 private:
  pwr::SampleData m_data;
  std::vector<std::unique_ptr<pwr::DataElement>> m_elements;
};

inline Sample sampledValue(std::uint64_t timestamp, std::uint32_t metricId = 1) {
  return Sample(pwr::Metric::SAMPLED_VALUE, timestamp, metricId);
}
inline Sample delta(std::uint64_t timestamp) {
  return Sample(pwr::Metric::SAMPLED_DELTA, timestamp);
}
inline Sample residency(std::uint64_t timestamp) {
  return Sample(pwr::Metric::SAMPLED_RESIDENCY, timestamp);
}
inline Sample event(std::uint64_t timestamp) {
  return Sample(pwr::Metric::TRACED_EVENT, timestamp);
}

/// Sets a variable as long as it lives.
class Variable {
 public:
  Variable(const char* name, const char* value) : m_name(name) { ::setenv(name, value, 1); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() { ::unsetenv(m_name); }

 private:
  const char* m_name;
};

/// A writer with a directory of its own, a log that can be looked at, and named objects. The clock
/// has two ticks per microsecond and starts at 1000.
template <typename Writer>
class TimeLineTest : public ::testing::Test {
 protected:
  static constexpr const char* kTag = "text-writer-plugin";

  int add(Sample& sample) { return m_writer->writeMessage(sample.message()); }
  int add(Sample&& sample) { return add(sample); }

  /// Tells the writer of the clock.
  int system(float frequency = 2, std::uint64_t start = 1000, std::uint32_t resolution = 0) {
    m_metadata.m_timestampFrequency = frequency;
    m_metadata.m_firstTimestamp = start;
    m_metadata.m_timeDisplayResolution = resolution;
    pwr::SystemMessage message;
    message.m_metadata = &m_metadata;
    return m_writer->writeMessage(message);
  }

  int wantView(std::uint8_t view, std::uint32_t metricId = 1) {
    pwr::MetricContainerInfoMessage message;
    message.metricId = metricId;
    message.residencyView = view;
    return m_writer->writeMessage(message);
  }

  /// A handle that titles a column.
  const pwr::ColumnHandle& column(const std::string& name,
                                  std::vector<const pwr::Attribute*> expected = {}) {
    return m_model.addColumnHandle(spec(name), pwr::DataHandle::kOtherType, std::move(expected));
  }
  pwr::EntityHandle& entity(const std::string& name, const pwr::EntityHandle* parent = nullptr) {
    return m_model.addEntity(spec(name), parent);
  }
  pwr::EntityHandle& entityOf(std::uint64_t id, const std::string& name) {
    HandleSpec wanted = spec(name);
    wanted.id = id;
    return m_model.addEntity(wanted);
  }
  pwr::DataDescriptor& descriptor(const std::string& name) {
    return m_model.addDescriptor(spec(name));
  }
  pwr::DataDescriptor& descriptorOf(std::uint64_t id, const std::string& name) {
    HandleSpec wanted = spec(name);
    wanted.id = id;
    return m_model.addDescriptor(wanted);
  }
  pwr::Attribute& attribute(const std::string& name) {
    return m_model.addAttribute(spec(name), pwr::AttributeType::Info);
  }
  pwr::Attribute& attributeOf(std::uint64_t id, const std::string& name) {
    HandleSpec wanted = spec(name);
    wanted.id = id;
    return m_model.addAttribute(wanted, pwr::AttributeType::Info);
  }
  pwr::NameValuePair& pair(const std::string& name) {
    return m_model.addNameValuePair(spec(name), "info of " + name, "value of " + name, 7);
  }

  static pwr::Data number(unsigned long value) { return pwr::Data(value); }
  static pwr::Data text(const std::string& value) { return pwr::Data(value); }

  /// The texts of the warnings so far.
  std::vector<std::string> warnings() const {
    std::vector<std::string> texts;
    for (const auto& [level, warning] : m_log.warnings()) {
      EXPECT_EQ(level, 2);
      texts.push_back(warning);
    }
    return texts;
  }

  Model m_model;
  TempArea m_area;
  LogCapture m_log;
  std::unique_ptr<Writer> m_writer = std::make_unique<Writer>();
  pwr::SystemMetadata m_metadata;
  pwr::EntityHandle& m_cpu0 = entityOf(10, "CPU0");
  pwr::EntityHandle& m_cpu1 = entityOf(11, "CPU1");
  pwr::DataDescriptor& m_c1 = descriptorOf(3, "C1");
  pwr::DataDescriptor& m_c6 = descriptorOf(4, "C6");
  pwr::Quantity& m_power = m_model.addQuantity({.code = 3, .name = "Power", .units = "mW"});
  pwr::Quantity& m_energy = m_model.addQuantity({.code = 4, .name = "Energy", .units = "mJ"});

 private:
  /// The field name tells itself from the name.
  static HandleSpec spec(const std::string& name) {
    HandleSpec made;
    made.name = name;
    made.fieldName = "field " + name;
    return made;
  }
};

}  // namespace qumetra::test
