// A message sink that keeps what it gets in a form that is easy to compare.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "qumetra/model/message_sink.h"

namespace qumetra::test {

/// One value of a sample.
struct KeptElement {
  std::string entity;  ///< qualified name
  std::string state;
  std::uint8_t tag = 0;
  unsigned long value = 0;
  std::uint64_t duration = 0;
  bool operator==(const KeptElement&) const = default;
};

struct KeptSample {
  std::string metric;
  std::uint64_t timestamp = 0;
  std::vector<KeptElement> elements;
};

/// One table message; cells that are absent are nothing.
struct KeptTable {
  std::string title;
  std::uint32_t id = 0;
  std::uint32_t metricId = 0;
  std::uint8_t type = 0;
  std::vector<std::string> keyNames;
  std::vector<std::string> fieldNames;
  std::vector<std::optional<std::string>> cells;
  std::vector<std::string> notesAfter;
};

class KeepingSink : public MessageSink {
 public:
  ~KeepingSink() override;

  void system(const pwr::SystemMessage& message) override;
  void text(const pwr::TextMessage& message) override;
  void id(const pwr::IdMessage& message) override;
  void sample(const pwr::Metric& metric) override;
  void table(const pwr::TableMessage& table) override;
  void container(const pwr::MetricContainerInfoMessage& message) override;
  void flush(const pwr::SystemMetadata& metadata) override;
  void ended(const pwr::DataHandle& handle) override;
  void metadataChanged(const pwr::SystemMetadata& metadata) override;

  /// The kinds of messages in their order: "system", "header", "text", "container", "sample",
  /// "table", "flush", "ended", "metadata"; repeated ones once.
  std::vector<std::string> order;
  std::vector<std::string> headers;
  std::vector<std::string> texts;
  std::vector<KeptSample> samples;
  std::vector<KeptTable> tables;
  std::vector<pwr::MetricContainerInfoMessage> containers;
  /// The metrics by name, as delivered last.
  std::map<std::string, const pwr::Metric*> metrics;
  std::uint32_t systemId = 99;
  const pwr::SystemMetadata* metadata = nullptr;
  /// The last timestamp that each flush told.
  std::vector<std::uint64_t> flushes;
  /// The processes that were told to have ended.
  std::vector<const pwr::DataHandle*> ends;

  /// The samples of one metric.
  std::vector<KeptSample> samplesOf(const std::string& metric) const;
  /// The value of one element of a sample; fails the test when there is none.
  static unsigned long valueOf(const KeptSample& sample, const std::string& entity,
                               const std::string& state);
  /// The value rows with a title, keys and fields in one list each.
  std::vector<std::vector<std::optional<std::string>>> rowsOf(const std::string& title) const;
  const KeptTable* titleTable(const std::string& title) const;

 private:
  void note(const std::string& kind);
};

}  // namespace qumetra::test
