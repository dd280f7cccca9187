#include "qumetra/collect/tee_sink.h"

#include <algorithm>
#include <iterator>

#include "qumetra/collect/finite_values.h"

namespace qumetra {
namespace {

template <typename Message>
void giveAll(const std::vector<MessageSink*>& sinks, void (MessageSink::*give)(const Message&),
             const Message& message) {
  for (MessageSink* sink : sinks) {
    (sink->*give)(message);
  }
}

}  // namespace

TeeSink::TeeSink(std::initializer_list<MessageSink*> sinks) {
  std::copy_if(sinks.begin(), sinks.end(), std::back_inserter(m_sinks),
               [](const MessageSink* sink) { return sink != nullptr; });
}

TeeSink::~TeeSink() = default;

void TeeSink::system(const pwr::SystemMessage& message) {
  giveAll(m_sinks, &MessageSink::system, message);
}

void TeeSink::text(const pwr::TextMessage& message) {
  giveAll(m_sinks, &MessageSink::text, message);
}

void TeeSink::id(const pwr::IdMessage& message) { giveAll(m_sinks, &MessageSink::id, message); }

void TeeSink::sample(const pwr::Metric& metric) {
  const std::optional<pwr::Metric> finite = withFiniteValues(metric);
  if (!finite) {
    giveSample(metric);
    return;
  }
  m_leftOutValues += metric.getData().elements.size() - finite->getData().elements.size();
  if (!finite->getData().elements.empty()) {
    giveSample(*finite);
  }
}

void TeeSink::giveSample(const pwr::Metric& metric) {
  ++m_samples;
  giveAll(m_sinks, &MessageSink::sample, metric);
}

void TeeSink::table(const pwr::TableMessage& table) {
  giveAll(m_sinks, &MessageSink::table, table);
}

void TeeSink::container(const pwr::MetricContainerInfoMessage& message) {
  giveAll(m_sinks, &MessageSink::container, message);
}

void TeeSink::flush(const pwr::SystemMetadata& metadata) {
  giveAll(m_sinks, &MessageSink::flush, metadata);
}

void TeeSink::attributesChanged(const pwr::DataHandle& handle) {
  giveAll(m_sinks, &MessageSink::attributesChanged, handle);
}

void TeeSink::ended(const pwr::DataHandle& handle) {
  giveAll(m_sinks, &MessageSink::ended, handle);
}

void TeeSink::metadataChanged(const pwr::SystemMetadata& metadata) {
  giveAll(m_sinks, &MessageSink::metadataChanged, metadata);
}

}  // namespace qumetra
