// A binary writer with its world, and its files as hexadecimal text, one line per record.
//
// What metrics were told and how files are numbered is state of the process: every test has a
// process of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/handles.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/platform_metadata.h"
#include "host/quantity.h"
#include "host/system_metadata.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "writers/binarywriter_plugin/binary_writer.h"

namespace qumetra::test {

/// "01 ff": two digits per byte.
inline std::string hexOf(const std::string& bytes) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += text.empty() ? "" : " ";
    text += {kDigits[value >> 4U], kDigits[value & 15U]};
  }
  return text;
}

/// Cuts a file into records by their lengths.
inline std::vector<std::string> recordsOf(const std::string& bytes) {
  std::vector<std::string> records;
  for (std::size_t start = 0; start + 3 <= bytes.size();) {
    const std::size_t length = static_cast<unsigned char>(bytes[start]) +
                               256U * static_cast<unsigned char>(bytes[start + 1]);
    records.push_back(hexOf(bytes.substr(start, 3 + length)));
    start += 3 + length;
  }
  return records;
}

/// One message under construction, with its elements.
class BinaryMetric {
 public:
  BinaryMetric(std::uint32_t id, pwr::Metric::MetricType type, std::string name = "M") {
    metric.metricId = id;
    metric.metricType = type;
    metric.name = std::move(name);
  }

  BinaryMetric& at(std::uint64_t timestamp) {
    m_data.timestamp = timestamp;
    return *this;
  }
  BinaryMetric& in(const pwr::Quantity& quantity) {
    metric.quantity = &quantity;
    return *this;
  }
  BinaryMetric& value(const pwr::EntityHandle& entity, pwr::Data value, std::uint64_t duration = 0,
                      const pwr::DataDescriptor* descriptor = nullptr) {
    m_elements.push_back(std::make_unique<pwr::DataElement>(&entity, descriptor, nullptr,
                                                            std::move(value), duration, nullptr));
    m_data.elements.push_back(m_elements.back().get());
    return *this;
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

class BinaryResult : public ::testing::Test {
 protected:
  static constexpr std::size_t kTypePlace = 6;

  /// 4 ticks per microsecond.
  BinaryResult() { m_metadata.m_timestampFrequency = 4; }

  void start(bool continuous = false) {
    ASSERT_EQ(m_writer.init(m_directory.file("run"), continuous), 0);
    sendSystem();
  }
  void sendSystem() {
    pwr::SystemMessage message;
    message.m_metadata = &m_metadata;
    EXPECT_EQ(m_writer.writeMessage(message), 0);
  }
  int add(BinaryMetric& metric) { return m_writer.writeMessage(metric.message()); }

  std::string bytes(const std::string& name) const { return readFile(m_directory.file(name)); }
  std::vector<std::string> records(const std::string& name) const { return recordsOf(bytes(name)); }
  /// The records of a file that have one type, given as "04".
  std::vector<std::string> recordsOfType(const std::string& type, const std::string& name) const {
    std::vector<std::string> found;
    for (const std::string& record : records(name)) {
      if (record.substr(kTypePlace, 2) == type) {
        found.push_back(record);
      }
    }
    return found;
  }
  /// Ends the run and returns the records of one type.
  std::vector<std::string> finished(const std::string& type) {
    EXPECT_EQ(m_writer.fini(), 0);
    return recordsOfType(type, "run.qmbin");
  }
  /// Ends the run; of its only sample: duration and value.
  std::string durationAndValue() {
    const std::vector<std::string> samples = finished("04");
    EXPECT_EQ(samples.size(), 1U);
    return samples.empty() ? "" : samples[0].substr(33, 11) + " | " + samples[0].substr(69);
  }

  TempDir m_directory;
  LogCapture m_log;
  pwr::SystemMetadata m_metadata;
  BinaryWriter m_writer;
  pwr::EntityHandle m_cpu0{10, {"CPU0", "", ""}, nullptr};
  pwr::EntityHandle m_cpu1{11, {"CPU1", "", ""}, &m_cpu0};
  pwr::Attribute m_attribute{20, {"A", "", ""}, nullptr, nullptr, pwr::AttributeType::Info};
  pwr::DataDescriptor m_c6{30, {"C6", "", ""}};
  pwr::DataDescriptor m_c1{31, {"C1", "", ""}};
  pwr::Quantity m_power{1, 3, "Power", "mW", "Power (mW)"};
  pwr::Quantity m_rate{2, 9, "Rate", "1/s", "Rate (1/s)"};
};

}  // namespace qumetra::test
