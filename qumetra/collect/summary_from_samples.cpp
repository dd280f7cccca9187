#include "qumetra/collect/summary_from_samples.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/handles.h"
#include "host/table.h"
#include "qumetra/collect/summary_tables.h"
#include "qumetra/model/model.h"

namespace qumetra {
namespace {

std::string nameOf(const pwr::DataHandle* handle) {
  return handle != nullptr ? handle->getName() : std::string();
}

MetricSpec specOf(const pwr::Metric& metric) {
  MetricSpec spec;
  spec.name = metric.name;
  spec.metricId = metric.metricId;
  spec.type = metric.metricType;
  spec.quantity = metric.quantity;
  spec.featureName = metric.featureName;
  spec.valueTitle = nameOf(metric.valueHandle);
  spec.stateTitle = nameOf(metric.descriptorTitleHandle);
  spec.entityTitle = nameOf(metric.entityTitleHandle);
  spec.totalsName = totalsNameFor(spec.entityTitle);
  return spec;
}

/// A collection's columns have both; a hand may have changed its recording.
bool isWhole(const pwr::Metric::Column& column) {
  return column.first != nullptr && column.second != nullptr;
}

}  // namespace

SummaryFromSamples::Totals::Totals(const pwr::Metric& metric) : spec(specOf(metric)) {
  for (const pwr::Metric::Column& announced : metric.entities) {
    if (isWhole(announced)) {
      column(announced);
    }
  }
}

void SummaryFromSamples::Totals::add(const pwr::DataElement& element) {
  const pwr::Metric::Column key(element.getEntity(), element.getDescriptor());
  unsigned long value = 0;
  if (isWhole(key) && element.getValue()->toUInt(value) == 0) {
    column(key).add(value, element.getDuration());
  }
}

SummaryFromSamples::Column& SummaryFromSamples::Totals::column(const pwr::Metric::Column& key) {
  const auto [place, isNew] = m_places.try_emplace(key, columns.size());
  if (isNew) {
    columns.push_back({.entity = key.first, .state = key.second});
  }
  return columns[place->second];
}

SummaryFromSamples::SummaryFromSamples(Model& model, MessageSink& sink)
    : m_model(model), m_sink(sink) {}

SummaryFromSamples::~SummaryFromSamples() = default;

void SummaryFromSamples::note(std::string_view text) {
  m_isCollection = m_isCollection || text == kCollectionNote;
}

void SummaryFromSamples::finish(const std::function<void(const std::string& line)>& tell) {
  const auto lacksTables = [](const auto& entry) { return !entry.second.hasTables; };
  if (std::none_of(m_totals.begin(), m_totals.end(), lacksTables)) {
    return;
  }
  const std::string line = fmt::format(
      "the collection did not end in order; the missing summary tables were made from its {} "
      "sample{}",
      m_samples, m_samples == 1 ? "" : "s");
  tell(line);
  pwr::TextMessage message;
  message.setMessage("Warning: " + line);
  m_sink.text(message);
  // High above the ids that collections give.
  SummaryContext context{.model = m_model,
                         .sink = m_sink,
                         .nextTableId = m_lastTableId + 1,
                         .nextHandleId = Model::kLastReservedId + 1};
  for (const auto& [metricId, totals] : m_totals) {
    if (!totals.hasTables) {
      deliverSummary(totals.spec, totals.columns, context);
    }
  }
}

void SummaryFromSamples::sample(const pwr::Metric& metric) {
  if (m_isCollection) {
    ++m_samples;
    Totals& totals = m_totals.try_emplace(metric.metricId, metric).first->second;
    for (const pwr::DataElement* element : metric.getData().elements) {
      totals.add(*element);
    }
  }
  m_sink.sample(metric);
}

void SummaryFromSamples::table(const pwr::TableMessage& table) {
  m_lastTableId = std::max(m_lastTableId, table.m_id);
  if (const auto totals = m_totals.find(table.m_metricId); totals != m_totals.end()) {
    totals->second.hasTables = true;
  }
  m_sink.table(table);
}

void SummaryFromSamples::system(const pwr::SystemMessage& message) { m_sink.system(message); }

void SummaryFromSamples::text(const pwr::TextMessage& message) { m_sink.text(message); }

void SummaryFromSamples::id(const pwr::IdMessage& message) { m_sink.id(message); }

void SummaryFromSamples::container(const pwr::MetricContainerInfoMessage& message) {
  m_sink.container(message);
}

void SummaryFromSamples::flush(const pwr::SystemMetadata& metadata) { m_sink.flush(metadata); }

void SummaryFromSamples::attributesChanged(const pwr::DataHandle& handle) {
  m_sink.attributesChanged(handle);
}

void SummaryFromSamples::ended(const pwr::DataHandle& handle) { m_sink.ended(handle); }

void SummaryFromSamples::metadataChanged(const pwr::SystemMetadata& metadata) {
  m_sink.metadataChanged(metadata);
}

}  // namespace qumetra
