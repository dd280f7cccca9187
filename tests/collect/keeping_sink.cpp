#include "tests/collect/keeping_sink.h"

#include <gtest/gtest.h>

#include "host/handles.h"

namespace qumetra::test {
namespace {

KeptElement keep(const pwr::DataElement& element) {
  KeptElement kept;
  kept.entity = element.getEntity()->getQualifiedName();
  kept.state = element.getDescriptor() == nullptr ? "" : element.getDescriptor()->getName();
  kept.tag = element.getValue()->m_tag;
  element.getValue()->toUInt(kept.value);
  kept.duration = element.getDuration();
  return kept;
}

/// Appends the names and, in a value table, the cells of a range of handles.
void keepColumns(const pwr::TableMessage& table, pwr::TableMessage::HandleIterator begin,
                 pwr::TableMessage::HandleIterator end, std::vector<std::string>& names,
                 KeptTable& kept) {
  for (auto handle = begin; handle != end; ++handle) {
    names.push_back((*handle)->getName());
    std::string text;
    bool present = false;
    if (table.getTableMessageType() == pwr::TableMessage::kValueTable) {
      EXPECT_EQ(0, table.getFieldAsString(*handle, text, present)) << names.back();
      kept.cells.push_back(present ? std::optional(text) : std::nullopt);
    }
  }
}

}  // namespace

KeepingSink::~KeepingSink() = default;

void KeepingSink::note(const std::string& kind) {
  if (order.empty() || order.back() != kind) {
    order.push_back(kind);
  }
}

void KeepingSink::system(const pwr::SystemMessage& message) {
  note("system");
  systemId = message.m_id;
  metadata = message.m_metadata;
}

void KeepingSink::text(const pwr::TextMessage& message) {
  const bool isHeader = message.getMessageType() == pwr::WriterMessage::kHeaderText;
  note(isHeader ? "header" : "text");
  (isHeader ? headers : texts).push_back(message.m_message);
}

void KeepingSink::id(const pwr::IdMessage&) { note("id"); }

void KeepingSink::sample(const pwr::Metric& metric) {
  note("sample");
  KeptSample kept{metric.name, metric.getData().timestamp, {}};
  for (const pwr::DataElement* element : metric.getData().elements) {
    kept.elements.push_back(keep(*element));
  }
  samples.push_back(kept);
  metrics[metric.name] = &metric;
}

void KeepingSink::table(const pwr::TableMessage& table) {
  note("table");
  KeptTable kept;
  kept.title = table.getTitle();
  kept.id = table.m_id;
  kept.metricId = table.m_metricId;
  kept.type = table.getTableMessageType();
  keepColumns(table, table.sharedHandlesBegin(), table.sharedHandlesEnd(), kept.keyNames, kept);
  keepColumns(table, table.fieldHandlesBegin(), table.fieldHandlesEnd(), kept.fieldNames, kept);
  if (const pwr::TextNotes* notes = table.getTextNotes(); notes != nullptr && notes->contains(1)) {
    kept.notesAfter = notes->at(1);
  }
  tables.push_back(kept);
}

void KeepingSink::container(const pwr::MetricContainerInfoMessage& message) {
  note("container");
  containers.push_back(message);
}

void KeepingSink::flush(const pwr::SystemMetadata& flushed) {
  note("flush");
  flushes.push_back(flushed.m_lastTimestamp);
}

void KeepingSink::ended(const pwr::DataHandle& handle) {
  note("ended");
  ends.push_back(&handle);
}

void KeepingSink::metadataChanged(const pwr::SystemMetadata&) { note("metadata"); }

std::vector<KeptSample> KeepingSink::samplesOf(const std::string& metric) const {
  std::vector<KeptSample> found;
  for (const KeptSample& sample : samples) {
    if (sample.metric == metric) {
      found.push_back(sample);
    }
  }
  return found;
}

unsigned long KeepingSink::valueOf(const KeptSample& sample, const std::string& entity,
                                   const std::string& state) {
  for (const KeptElement& element : sample.elements) {
    if (element.entity == entity && element.state == state) {
      return element.value;
    }
  }
  ADD_FAILURE() << "no value of " << entity << " " << state;
  return 0;
}

std::vector<std::vector<std::optional<std::string>>> KeepingSink::rowsOf(
    const std::string& title) const {
  std::vector<std::vector<std::optional<std::string>>> rows;
  for (const KeptTable& kept : tables) {
    if (kept.title == title && kept.type == pwr::TableMessage::kValueTable) {
      rows.push_back(kept.cells);
    }
  }
  return rows;
}

const KeptTable* KeepingSink::titleTable(const std::string& title) const {
  for (const KeptTable& kept : tables) {
    if (kept.title == title && kept.type == pwr::TableMessage::kTitleTable) {
      return &kept;
    }
  }
  return nullptr;
}

}  // namespace qumetra::test
