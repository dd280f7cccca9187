// A writer of raw text, and samples to give it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/handles.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "tests/support/disk_faults.h"
#include "tests/support/log_capture.h"
#include "tests/writers/flushed_table.h"
#include "writers/textwriter_plugin/raw_writer.h"

namespace qumetra::test {

/// A metric under construction, with the elements that its samples need.
class Sample {
 public:
  Sample(std::uint32_t id, const std::string& name, std::uint64_t timestamp) {
    m_metric.metricId = id;
    m_metric.name = name;
    m_data.timestamp = timestamp;
  }

  Sample& declare(const pwr::EntityHandle* entity,
                  const pwr::DataDescriptor* descriptor = nullptr) {
    m_metric.entities.emplace_back(entity, descriptor);
    return *this;
  }
  Sample& in(const pwr::Quantity& quantity) {
    m_metric.quantity = &quantity;
    return *this;
  }
  Sample& value(const pwr::EntityHandle& entity, pwr::Data value,
                const pwr::DataDescriptor* descriptor = nullptr) {
    m_elements.push_back(std::make_unique<pwr::DataElement>(&entity, descriptor, nullptr,
                                                            std::move(value), 0, nullptr));
    m_data.elements.push_back(m_elements.back().get());
    return *this;
  }
  Sample& value(const pwr::EntityHandle& entity, unsigned long number) {
    return value(entity, pwr::Data(number));
  }

  const pwr::Metric& message() {
    m_metric.setData(m_data);
    return m_metric;
  }

 private:
  pwr::Metric m_metric;
  pwr::SampleData m_data;
  std::vector<std::unique_ptr<pwr::DataElement>> m_elements;
};

/// A writer that has opened nothing yet.
class RawWriter : public ::testing::Test {
 protected:
  static pwr::EntityHandle entity(std::uint64_t id, const std::string& name,
                                  const pwr::EntityHandle* parent = nullptr) {
    return {id, {name, "field of " + name, ""}, parent};
  }

  int add(Sample& sample) { return m_writer.writeMessage(sample.message()); }

  /// Ends the collection and returns the file.
  std::string report() {
    EXPECT_EQ(m_writer.fini(), 0);
    return readFile(m_area.file("out.txt"));
  }

  TempArea m_area;
  LogCapture m_log;
  RawWriterV2 m_writer;
  pwr::EntityHandle m_cpu0 = entity(10, "CPU0");
  pwr::EntityHandle m_cpu1 = entity(11, "CPU1");
  pwr::DataDescriptor m_c6{3, {"C6", "", ""}};
  pwr::Quantity m_celsius{1, 3, "Temperature", "C", "Temperature (C)"};
};

/// A writer that has opened its file.
class OpenRawWriter : public RawWriter {
 protected:
  void SetUp() override { ASSERT_EQ(m_writer.init(m_area.file("out"), false), 0); }
};

}  // namespace qumetra::test
