#include "writers/textwriter_plugin/int_writer.h"

#include "client/src/common/pw_log.h"
#include "client/src/common/text_parsing.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "host/system_metadata.h"
#include "writers/capability.h"

namespace {

constexpr const char* kGuid = "b1e44565-005f-46ea-9fbb-34ea6bc01203";
constexpr const char* kSuffix = "_trace.csv";

// The texts of absent cells, and what stands behind the titles of views. Strings, as the operations
// that take them do.
const std::string kNoValue = "n/a";
const std::string kNoTicks = "0";
const std::string kNoShare = "0.00";
const std::string kNoSuffix;
const std::string kRateSuffix = " : Instantaneous rate";
const std::string kTimeSuffix = " : Residency Time";
const std::string kPercentageSuffix = " : Residency Percentage";

constexpr std::int32_t kCommonPrecision = 2;
constexpr std::int32_t kFinePrecision = 3;
constexpr std::uint32_t kCoarseResolution = 1000;

/// The numbers of the views among a metric's tables.
constexpr unsigned long kPlainTable = 0;
constexpr unsigned long kRateTable = 1;
constexpr unsigned long kTimeTable = 1;
constexpr unsigned long kPercentageTable = 2;

}  // namespace

IntWriterV2::IntWriterV2() : IntWriterV2(kGuid, kSuffix) {
  declareCapability(*this, {.option = "int",
                            .description = "Write data trace file (*_trace.csv) in CSV format",
                            .suffix = kSuffix});
  readSwitches();
}

IntWriterV2::IntWriterV2(const std::string& pluginId, const std::string& suffix)
    : WriterPlugin(pluginId), fileSuffix(suffix) {}

IntWriterV2::~IntWriterV2() = default;

void IntWriterV2::readSwitches() {
  doTimelineTsc = pwr::check_env("PW_DO_TIMELINE_TSC");
  doTimelineResidencyTicks = pwr::check_env("PW_DO_TIMELINE_RESIDENCY_TICKS");
}

void IntWriterV2::warnWithTag(const char* text) {
  pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag, "%s", text);
}

int IntWriterV2::init(const std::string& base, bool /*continuous*/) {
  outputPath = base + fileSuffix;
  outputFile = createResultFile(outputPath);
  if (outputFile == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag, "WARNING: Could not create %s\n",
                          outputPath.c_str());
    return 1;
  }
  return 0;
}

int IntWriterV2::fini() {
  if (outputFile == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Output file %s does not exist\n", outputPath.c_str());
    return 1;
  }
  for (auto& [outerKey, family] : tables) {
    bool isFirst = true;
    for (auto& [innerKey, table] : family) {
      table.store->flush(outputFile.get(), ",", isFirst);  // What went wrong is in the log.
      isFirst = false;
    }
  }
  closeResultFile(outputFile, outputPath);
  return 0;
}

int IntWriterV2::writeMessage(const pwr::TextMessage& message) {
  if (outputFile != nullptr) {
    writeLine(outputFile, message.m_message);
  }
  return 0;
}

int IntWriterV2::writeMessage(const pwr::SystemMessage& message) {
  if (message.m_metadata == nullptr) {
    return 1;
  }
  const pwr::SystemMetadata& metadata = *message.m_metadata;
  globalStartTimestamp = metadata.m_firstTimestamp;
  timestampFrequency = static_cast<double>(metadata.m_timestampFrequency);
  const std::uint32_t resolution = metadata.m_timeDisplayResolution;
  const bool isFine = resolution > 0 && resolution < kCoarseResolution;
  durationPrecision = isFine ? kFinePrecision : kCommonPrecision;
  for (TickText& text : m_tickTexts) {
    text.isValid = false;
  }
  if (timestampFrequency == 0.0) {
    warnWithTag(
        "WARNING: Frequency of timestamps is zero. Please check the clock frequency in the system "
        "metadata.\n");
    return 1;
  }
  return 0;
}

int IntWriterV2::writeMessage(const pwr::MetricContainerInfoMessage& message) {
  if (message.residencyView != pwr::MetricContainerInfoMessage::kBothViews) {
    residencyViews[message.metricId] = message.residencyView;
  }
  return 0;
}

int IntWriterV2::writeMessage(const pwr::Metric& metric) {
  if (metric.getData().timestamp < globalStartTimestamp) {
    warnWithTag("WARNING: Timestamp of the sample is less than the global start timestamp.\n");
    return 1;
  }
  // The results of the tables are dropped on purpose: the host sees a success, the user the log.
  switch (metric.metricType) {
    case pwr::Metric::SAMPLED_DELTA:
      writeSampledDeltaMetric(metric);
      break;
    case pwr::Metric::SAMPLED_RESIDENCY:
      writeSampledResidencyMetric(metric);
      break;
    case pwr::Metric::TRACED_VALUE_TRANSITION:
    case pwr::Metric::TRACED_EVENT:
      writeTracedMetric(metric);
      break;
    case pwr::Metric::SAMPLED_VALUE:
    default:
      writeSampledGeneric(metric, kPlainTable, Calculations::NoCalculation, metric.quantity,
                          kNoSuffix, kNoValue);
      break;
  }
  return 0;
}

int IntWriterV2::writeSampledDeltaMetric(const pwr::Metric& metric) {
  writeSampledGeneric(metric, kPlainTable, Calculations::NoCalculation, metric.quantity, kNoSuffix,
                      kNoValue);
  const pwr::Quantity* rateQuantity = nullptr;
  double scale = 1.0;
  if (metric.quantity != nullptr && metric.quantity->getRateConversion(rateQuantity, scale) == 0) {
    writeSampledGeneric(metric, kRateTable, Calculations::InstantaneousRate, rateQuantity,
                        kRateSuffix, kNoValue);
  }
  return 0;
}

int IntWriterV2::writeSampledResidencyMetric(const pwr::Metric& metric) {
  using Info = pwr::MetricContainerInfoMessage;
  const std::uint8_t view = residencyViews[metric.metricId];
  const bool wantsTimes = view == Info::kBothViews || view == Info::kTimeView;
  const bool wantsPercentages = view == Info::kBothViews || view == Info::kPercentageView;
  if (wantsTimes && doTimelineResidencyTicks) {
    writeSampledGeneric(metric, kPlainTable, Calculations::NoCalculation, metric.quantity,
                        kNoSuffix, kNoTicks);
  } else if (wantsTimes) {
    writeSampledGeneric(metric, kTimeTable, Calculations::ResidencyTime, metric.quantity,
                        kTimeSuffix, kNoTicks);
  }
  if (wantsPercentages) {
    writeSampledGeneric(metric, kPercentageTable, Calculations::ResidencyPercentage,
                        metric.quantity, kPercentageSuffix, kNoShare);
  }
  return 0;
}

BackingStoreWrapper* IntWriterV2::getStore(const std::string& title, unsigned long outerKey,
                                           unsigned long innerKey,
                                           const std::string& defaultValue) {
  const TableInfo* table = findTable(outerKey, innerKey);
  if (table != nullptr) {
    return table->store.get();
  }
  try {
    return makeTable(title, outerKey, innerKey, defaultValue).store.get();
  } catch (...) {  // The byte store throws a character pointer, which no narrower clause names.
    warnWithTag("WARNING: Failed to initialize buffer.\n");
    return nullptr;
  }
}

IntWriterV2::TableInfo* IntWriterV2::findTable(std::uint64_t outerKey, std::uint64_t innerKey) {
  const auto family = tables.find(outerKey);
  if (family == tables.end()) {
    return nullptr;
  }
  const auto table = family->second.find(innerKey);
  return table == family->second.end() ? nullptr : &table->second;
}

IntWriterV2::TableInfo& IntWriterV2::makeTable(const std::string& title, std::uint64_t outerKey,
                                               std::uint64_t innerKey,
                                               const std::string& defaultValue) {
  TableInfo table;
  table.store = std::make_unique<BackingStoreWrapper>(title, defaultValue);
  return tables[outerKey].emplace(innerKey, std::move(table)).first->second;
}
