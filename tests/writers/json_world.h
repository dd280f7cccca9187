// Metrics and samples for the tests of the continuous and the JSON results.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "host/metric.h"
#include "host/quantity.h"
#include "qumetra/model/model.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {

/// Makes what a run delivers. Everything lives as long as this does.
class JsonWorld {
 public:
  JsonWorld() {
    m_system = &m_model.addSystemMetadata();
    m_system->m_timestampFrequency = 1.0F;
    m_system->m_platformMetadata[pwr::SystemMetadata::kCpu] = &m_model.addCpuMetadata();
    m_message.m_metadata = m_system;
  }

  const pwr::EntityHandle* entity(const std::string& name,
                                  const pwr::EntityHandle* parent = nullptr) {
    return &m_model.addEntity({.name = name}, parent);
  }
  pwr::DataDescriptor* descriptor(const std::string& name) {
    return &m_model.addDescriptor({.name = name});
  }
  /// With a first attribute of that value.
  pwr::DataDescriptor* descriptor(const std::string& name, const pwr::Data& value) {
    pwr::DataDescriptor* made = descriptor(name);
    made->addAttributeValue(&m_model.addAttribute({.name = "a"}, pwr::AttributeType::Data), value);
    return made;
  }
  /// A handle that says it is a descriptor and is none.
  const pwr::DataHandle* falseDescriptor() {
    return &m_model.addColumnHandle({.name = "false"}, pwr::DataHandle::kDescriptorType);
  }
  pwr::Quantity* quantity(std::uint32_t code, const std::string& name, const std::string& units) {
    return &m_model.addQuantity({.code = code, .name = name, .units = units});
  }

  pwr::Metric& metric(const std::string& name, pwr::Metric::MetricType type,
                      const pwr::Quantity* quantity = nullptr) {
    pwr::Metric& made = m_model.addMetric();
    made.name = name;
    made.metricId = ++m_metrics;
    made.metricType = type;
    made.quantity = quantity;
    return made;
  }

  const pwr::DataElement* element(const pwr::EntityHandle* entity,
                                  const pwr::DataDescriptor* descriptor, pwr::Data value,
                                  std::uint64_t duration = 0) {
    m_elements.push_back(std::make_unique<pwr::DataElement>(entity, descriptor, nullptr,
                                                            std::move(value), duration, nullptr));
    return m_elements.back().get();
  }

  pwr::SystemMetadata& system() { return *m_system; }
  const pwr::SystemMessage& systemMessage() const { return m_message; }
  Model& model() { return m_model; }

 private:
  Model m_model;
  pwr::SystemMetadata* m_system = nullptr;
  pwr::SystemMessage m_message;
  std::uint32_t m_metrics = 0;
  std::vector<std::unique_ptr<pwr::DataElement>> m_elements;
};

/// Gives a sample to whatever takes messages.
template <typename Writer>
int give(Writer& writer, pwr::Metric& metric, std::uint64_t timestamp,
         std::vector<const pwr::DataElement*> elements) {
  metric.setData({timestamp, std::move(elements)});
  return writer.writeMessage(metric);
}

/// The document in a file. Fails the test when it is none.
inline rapidjson::Document parseFile(const std::string& path) {
  const std::string text = readFile(path);
  rapidjson::Document document;
  document.Parse(text.data(), text.size());
  EXPECT_FALSE(document.HasParseError()) << path << ": " << text;
  return document;
}

}  // namespace qumetra::test
