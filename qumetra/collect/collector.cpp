#include "qumetra/collect/collector.h"

#include "qumetra/collect/cpu_idle_collector.h"
#include "qumetra/collect/cpu_time_collector.h"
#include "qumetra/collect/process_collector.h"

namespace qumetra {

Collector::Collector() = default;
Collector::~Collector() = default;

void Collector::commandStarted(std::uint32_t /*pid*/, std::uint64_t /*ticks*/) {}

void Collector::tellEnds(MessageSink& /*sink*/) {}

void Collector::announce(MessageSink& sink) {
  for (const auto& metric : m_metrics) {
    metric->announce(sink);
  }
}

void Collector::deliver(std::uint64_t now, bool withQuantity, MessageSink& sink) {
  for (const auto& metric : m_metrics) {
    if ((metric->spec().quantity != nullptr) == withQuantity) {
      metric->deliver(now, sink);
    }
  }
  if (withQuantity) {
    tellEnds(sink);
  }
}

void Collector::summarise(SummaryContext& context) {
  for (const auto& metric : m_metrics) {
    deliverSummary(metric->spec(), metric->columns(), context);
  }
}

SampledMetric& Collector::addMetric(CollectorContext& context, MetricSpec spec) {
  spec.metricId = context.nextMetricId++;
  spec.featureName = info().name;
  return *m_metrics.emplace_back(std::make_unique<SampledMetric>(context.model, spec));
}

std::vector<std::unique_ptr<Collector>> makeCollectors() {
  std::vector<std::unique_ptr<Collector>> collectors;
  collectors.push_back(std::make_unique<CpuTimeCollector>());
  collectors.push_back(std::make_unique<CpuIdleCollector>());
  collectors.push_back(std::make_unique<ProcessCollector>());
  return collectors;
}

}  // namespace qumetra
