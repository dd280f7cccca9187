#include "qumetra/collect/sampled_metric.h"

#include <algorithm>
#include <utility>

#include "host/handles.h"
#include "qumetra/collect/named.h"
#include "qumetra/model/message_sink.h"
#include "qumetra/model/model.h"

namespace qumetra {
namespace {

pwr::Metric& describe(Model& model, const MetricSpec& spec) {
  pwr::Metric& metric = model.addMetric();
  const auto title = [&model](const std::string& name) {
    return &model.addColumnHandle(named(name), pwr::DataHandle::kOtherType);
  };
  metric.name = spec.name;
  metric.metricId = spec.metricId;
  metric.m_id = spec.metricId;
  metric.metricType = spec.type;
  metric.quantity = spec.quantity;
  metric.featureName = spec.featureName;
  metric.groupName = spec.featureName;
  metric.valueHandle = title(spec.valueTitle);
  metric.descriptorTitleHandle = title(spec.stateTitle);
  metric.entityTitleHandle = title(spec.entityTitle);
  return metric;
}

bool holdsState(const std::vector<pwr::Data>& states, const pwr::DataDescriptor& state) {
  return std::any_of(states.begin(), states.end(), [&state](const pwr::Data& known) {
    const pwr::DataHandle* handle = nullptr;
    return known.toHandle(handle) == 0 && handle == &state;
  });
}

}  // namespace

std::string totalsNameFor(const std::string& entityTitle) {
  return entityTitle == "CPU" ? "All CPUs" : "";
}

SampledMetric::SampledMetric(Model& model, const MetricSpec& spec)
    : m_spec(spec), m_metric(describe(model, spec)) {}

SampledMetric::~SampledMetric() = default;

std::size_t SampledMetric::addColumn(const pwr::EntityHandle& entity,
                                     const pwr::DataDescriptor& state) {
  m_columns.push_back({.entity = &entity, .state = &state});
  if (!m_announced) {
    m_metric.entities.emplace_back(&entity, &state);
    if (m_metric.entityList.empty() || m_metric.entityList.back() != &entity) {
      m_metric.entityList.push_back(&entity);
    }
    if (!holdsState(m_metric.states, state)) {
      m_metric.states.push_back(pwr::Data::fromHandle(&state));
    }
  }
  return m_columns.size() - 1;
}

void SampledMetric::announce(MessageSink& sink) {
  m_announced = true;
  pwr::MetricContainerInfoMessage message;
  message.m_id = m_spec.metricId;
  message.metricId = m_spec.metricId;
  message.containerName = m_spec.name;
  message.featureName = m_spec.featureName;
  message.metricName = m_spec.name;
  sink.container(message);
}

void SampledMetric::set(std::size_t column, std::uint64_t value, std::uint64_t duration) {
  Column& target = m_columns[column];
  target.add(value, duration);
  // The descriptor serves the import stream as well, hence twice.
  m_elements.emplace_back(target.entity, target.state, target.state, pwr::Data(value), duration,
                          nullptr);
}

void SampledMetric::deliver(std::uint64_t now, MessageSink& sink) {
  if (m_elements.empty()) {
    return;
  }
  pwr::SampleData data{.timestamp = now, .elements = {}};
  data.elements.reserve(m_elements.size());
  for (const pwr::DataElement& element : m_elements) {
    data.elements.push_back(&element);
  }
  m_metric.setData(std::move(data));
  sink.sample(m_metric);
  m_metric.setData({});
  m_elements.clear();
}

}  // namespace qumetra
