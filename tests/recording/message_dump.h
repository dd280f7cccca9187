// Messages as text, so that two deliveries can be compared line by line.
#pragma once

#include <string>
#include <vector>

#include "qumetra/model/message_sink.h"

namespace qumetra::test {

/// Keeps a text for each message that it gets, made by walking the contract as a writer would. An
/// object is told with its id and all that it says, objects within it by id and name.
class MessageDump : public MessageSink {
 public:
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

  const std::vector<std::string>& messages() const { return m_messages; }

 private:
  std::vector<std::string> m_messages;
};

/// One value: its tag's name and content, reals exactly.
std::string describe(const pwr::Data& value);
/// All that a handle says.
std::string describe(const pwr::DataHandle& handle);
/// All that metadata says.
std::string describe(const pwr::SystemMetadata& metadata);
/// All that a table says, its cells included.
std::string describe(const pwr::TableMessage& table);

/// Hands every message to two sinks.
class Tee : public MessageSink {
 public:
  Tee(MessageSink& first, MessageSink& second) : m_first(first), m_second(second) {}

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

 private:
  MessageSink& m_first;
  MessageSink& m_second;
};

}  // namespace qumetra::test
