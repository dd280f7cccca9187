// One stream of messages for several takers.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "qumetra/model/message_sink.h"

namespace qumetra {

/// Gives every message to all of its sinks, in their order. The sinks are borrowed.
///
/// It is where a collection's samples leave it: values that are NaN or infinite, which no result
/// can hold in good order, are left out and counted, and a sample that has only such is not given.
class TeeSink : public MessageSink {
 public:
  /// Null sinks are left out.
  explicit TeeSink(std::initializer_list<MessageSink*> sinks);
  ~TeeSink() override;

  void system(const pwr::SystemMessage& message) override;
  void text(const pwr::TextMessage& message) override;
  void id(const pwr::IdMessage& message) override;
  void sample(const pwr::Metric& metric) override;
  void table(const pwr::TableMessage& table) override;
  void container(const pwr::MetricContainerInfoMessage& message) override;
  void flush(const pwr::SystemMetadata& metadata) override;
  void attributesChanged(const pwr::DataHandle& handle) override;
  void ended(const pwr::DataHandle& handle) override;
  void metadataChanged(const pwr::SystemMetadata& metadata) override;

  /// How many samples went through.
  std::uint64_t samples() const { return m_samples; }
  /// How many values were left out.
  std::uint64_t leftOutValues() const { return m_leftOutValues; }

 private:
  void giveSample(const pwr::Metric& metric);

  std::vector<MessageSink*> m_sinks;
  std::uint64_t m_samples = 0;
  std::uint64_t m_leftOutValues = 0;
};

}  // namespace qumetra
