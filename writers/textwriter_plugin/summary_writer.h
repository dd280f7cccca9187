// The default writer: the host's finished tables and texts as one report, `<output name>.csv`.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>

#include "writers/textwriter_plugin/text_writer.h"

namespace pwr {
class HeaderTextMessage;
}

/// The report has, from its top: the header texts, the other texts, and then metric after metric,
/// those of the host's configuration first and in its order. Each table goes to a temp file cell by
/// cell while the collection runs, and `fini` joins them; the layout is told in
/// docs/summary-csv.md.
///
/// May be used for one collection after another: `init` starts afresh. Tables and texts between two
/// collections are taken and dropped by the next `init`. Not synchronised.
class SummaryWriter : public TextWriter {
 public:
  /// A run by this name is shown on the standard output, too.
  static constexpr const char* kConsoleName = "console";

  SummaryWriter();
  ~SummaryWriter() override;

  using TextWriter::writeMessage;

  int init(const std::string& name, bool continuous) override;
  int fini() override;
  /// Returns 1 when a cell of the row could not be read; it is shown as "Invalid".
  int writeMessage(const pwr::TableMessage& table) override;
  int writeMessage(const pwr::TextMessage& message) override;
  int writeMessage(const pwr::HeaderTextMessage& message);
  int writeMessage(const pwr::MetricContainerInfoMessage& message) override;

 private:
  int writeText_i(std::uint64_t key, const std::string& text);
  void noteMetric_i(std::uint32_t metricId);
  int handleTableMessage(const pwr::TableMessage& table, TempFileManager& manager, bool isNew);

  bool m_toConsole = false;
  /// Metric ids in the order of their first appearance, until `fini` puts them into the configured
  /// order.
  std::unique_ptr<TextWriterImpl::MetricOrder> m_metricOrder;
  std::unique_ptr<TextWriterImpl::FeatureMetrics> m_featureMetrics;
  /// What is in `m_metricOrder`, for quick look-up.
  std::unordered_set<std::uint32_t> m_knownMetrics;
};
