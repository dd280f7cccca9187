// The summary tables of a collection that did not come to its end, made from its samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "qumetra/collect/sampled_metric.h"
#include "qumetra/model/message_sink.h"

namespace qumetra {

class Model;

/// The note that a collection writes at the beginning of its recording: the summary tables are to
/// come behind the samples. Where they do not, the collection was cut short.
inline constexpr std::string_view kCollectionNote =
    "A collection: summary tables stand behind the samples, unless it was cut short.";

/// Passes every message of a recording on. When the recording is over, and is a collection's, each
/// metric that has samples and no table gets those that an orderly end would have made, behind a
/// text that says so. Recordings without the note of a collection pass as they are.
///
///     SummaryFromSamples summary(model, run);
///     RecordingReader reader(path, model, summary);
///     reader.setNoteHandler([&](std::string_view text) { summary.note(text); });
///     reader.readAll();
///     summary.finish(tell);
///
/// What was never sampled has no table, and a table that broke off in the middle stays so. Model
/// and sink are borrowed; the tables' objects go into the model. Not synchronised.
class SummaryFromSamples : public MessageSink {
 public:
  SummaryFromSamples(Model& model, MessageSink& sink);
  SummaryFromSamples(const SummaryFromSamples&) = delete;
  SummaryFromSamples& operator=(const SummaryFromSamples&) = delete;
  ~SummaryFromSamples() override;

  /// Takes the text of a note of the recording.
  void note(std::string_view text);
  /// Delivers what is missing; `tell` gets one line, without a line end, when that is something.
  void finish(const std::function<void(const std::string& line)>& tell);

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
  using Column = SampledMetric::Column;

  /// What one metric came to so far.
  struct Totals {
    explicit Totals(const pwr::Metric& metric);
    void add(const pwr::DataElement& element);

    MetricSpec spec;
    std::vector<Column> columns;
    bool hasTables = false;

   private:
    Column& column(const pwr::Metric::Column& key);

    std::map<pwr::Metric::Column, std::size_t> m_places;
  };

  Model& m_model;
  MessageSink& m_sink;
  bool m_isCollection = false;
  std::uint64_t m_samples = 0;
  std::uint32_t m_lastTableId = 0;
  /// By metric id, which is the order in which a collection summarises its metrics.
  std::map<std::uint32_t, Totals> m_totals;
};

}  // namespace qumetra
