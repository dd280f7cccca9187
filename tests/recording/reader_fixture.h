// A recording that tests read, and what they look at of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/recording/reading.h"

namespace qumetra::test {

/// Keeps copies of what single tests look at more closely than the dump does.
class Keeper : public MessageSink {
 public:
  void system(const pwr::SystemMessage& message) override {
    metadata = message.m_metadata;
    allMetadata.push_back(metadata);
  }
  void text(const pwr::TextMessage& message) override { texts.push_back(message.m_message); }
  void id(const pwr::IdMessage& /*message*/) override {}
  void sample(const pwr::Metric& metric) override {
    lastMetric = &metric;
    for (const pwr::DataElement* element : metric.getData().elements) {
      values.push_back(*element->getValue());
      infoIds.emplace_back();
      if (element->getAdditionalInfo() == nullptr) {
        continue;
      }
      infoIds.back().emplace();
      for (const auto& [id, value] : *element->getAdditionalInfo()) {
        infoIds.back()->push_back(id);
      }
    }
  }
  void table(const pwr::TableMessage& table) override { tables.push_back(describe(table)); }
  void container(const pwr::MetricContainerInfoMessage& message) override {
    notes.push_back(message.textNotes);
  }
  void flush(const pwr::SystemMetadata& given) override { flushed.push_back(&given); }

  const pwr::SystemMetadata* metadata = nullptr;
  std::vector<const pwr::SystemMetadata*> allMetadata;
  const pwr::Metric* lastMetric = nullptr;
  std::vector<std::string> texts;
  std::vector<pwr::Data> values;
  std::vector<std::optional<std::vector<std::uint64_t>>> infoIds;
  std::vector<std::string> tables;
  std::vector<const pwr::TextNotes*> notes;
  std::vector<const pwr::SystemMetadata*> flushed;
};

class Reader : public ::testing::Test {
 protected:
  Reader() { reading.second = &kept; }

  /// The only text of a recording whose JSON string is `json`.
  std::string textOf(const std::string& json) {
    EXPECT_EQ(reading.readLines({R"({"text":{"message":")" + json + R"("}})"}), "");
    return kept.texts.at(0);
  }
  /// The only value of a recording.
  pwr::Data valueOf(const std::string& json) {
    EXPECT_EQ(reading.readLines({R"({"metric":{"ref":"m","metricId":1}})",
                                 R"({"entity":{"ref":"e","id":5,"name":"thing"}})",
                                 R"({"sample":{"metric":"m","elements":[{"entity":"e","value":)" +
                                     json + "}]}}"}),
              "");
    return kept.values.at(0);
  }
  double realOf(const std::string& json) {
    double real = 0;
    EXPECT_EQ(valueOf(R"({"real":)" + json + "}").toReal(real), 0);
    return real;
  }

  Reading reading;
  Keeper kept;
};

}  // namespace qumetra::test
