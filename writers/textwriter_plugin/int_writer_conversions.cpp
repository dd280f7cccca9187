// What the cells of the over-time tables show: ticks, values, rates and residencies as text.
#include "client/src/common/number_text.h"
#include "host/attributes.h"
#include "host/data.h"
#include "host/formatter.h"
#include "host/handles.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "writers/textwriter_plugin/int_writer.h"
#include "writers/textwriter_plugin/time_line_columns.h"

namespace {

constexpr int kCommonDecimals = 2;
constexpr double kMicrosecondsPerSecond = 1e6;
constexpr double kMicrosecondsPerMillisecond = 1000.0;
constexpr double kPercent = 100.0;

double asReal(const pwr::Data& value) {
  double real = 0.0;
  pwr::Data::convertToReal(&value).toReal(real);
  return real;
}

}  // namespace

std::string IntWriterV2::unitSuffix(Calculations calculation, const pwr::Quantity* quantity) {
  switch (calculation) {
    case Calculations::ResidencyPercentage:
      return " (%)";
    case Calculations::ResidencyTime:
      return " (usec)";
    case Calculations::NoCalculation:
    case Calculations::InstantaneousRate:
      break;
  }
  return bracketedUnits(quantity);
}

std::string IntWriterV2::convertTicksToTime(unsigned long ticks, TimeConversion conversion) const {
  std::string text;
  formatTicks(text, ticks, conversion);
  return text;
}

void IntWriterV2::formatTicks(std::string& out, std::uint64_t ticks,
                              TimeConversion conversion) const {
  double time = 0.0;
  int decimals = kCommonDecimals;
  switch (conversion) {
    case TimeConversion::ToMilliseconds:
      time = static_cast<double>(ticks) / (timestampFrequency * kMicrosecondsPerMillisecond);
      decimals = durationPrecision;
      break;
    case TimeConversion::ToMicroseconds:
      time = static_cast<double>(ticks) / timestampFrequency;
      break;
  }
  pwr::RealFormatter(0, decimals).format(out, pwr::Data(time));
}

const std::string& IntWriterV2::tickText(std::uint64_t ticks, TimeConversion conversion) {
  TickText& last = m_tickTexts[conversion == TimeConversion::ToMilliseconds ? 0 : 1];
  if (!last.isValid || last.ticks != ticks) {
    formatTicks(last.text, ticks, conversion);
    last.ticks = ticks;
    last.isValid = true;
  }
  return last.text;
}

bool IntWriterV2::formatValue(const pwr::Metric& metric, const pwr::DataElement& element,
                              Calculations calculation, Warn warn) {
  const pwr::Data& value = *element.getValue();
  switch (calculation) {
    case Calculations::InstantaneousRate:
      return formatRate(metric, element, warn);
    case Calculations::ResidencyPercentage: {
      if (value.m_tag != pwr::Data::kUInt) {
        warn(
            "WARNING: Calculation of residency percentages is requested, but the value is not of "
            "uint type.\n");
        return false;
      }
      const double share = asReal(value) / static_cast<double>(element.getDuration()) * kPercent;
      pwr::RealFormatter(0, kCommonDecimals).format(m_cellText, pwr::Data(share));
      return true;
    }
    case Calculations::ResidencyTime: {
      unsigned long ticks = 0;
      if (value.m_tag != pwr::Data::kUInt || value.toUInt(ticks) != 0) {
        warn(
            "WARNING: Calculation of time in micro-seconds is requested, but the value is not of "
            "uint type.\n");
        return false;
      }
      formatTicks(m_cellText, ticks, TimeConversion::ToMicroseconds);
      return true;
    }
    case Calculations::NoCalculation:
      break;
  }
  value.toFormattedString(m_cellText);
  return true;
}

bool IntWriterV2::formatRate(const pwr::Metric& metric, const pwr::DataElement& element,
                             Warn warn) {
  const pwr::Quantity* rateQuantity = nullptr;
  double scale = 1.0;
  // The metric's own quantity knows the factor: the one of the table is that of the rates already.
  if (metric.quantity != nullptr && metric.quantity->getRateConversion(rateQuantity, scale) != 0) {
    warn("WARNING: Rate conversion is not specified. Unable to calculate rate.\n");
    return false;
  }
  if (!element.getValue()->isNumeric()) {
    warn(
        "WARNING: Calculation of instantaneous rate is requested, but the value is not "
        "numeric.\n");
    return false;
  }
  pwr::Data rate = pwr::Data::convertToReal(element.getValue());
  const auto duration = static_cast<double>(element.getDuration());
  rate.multiplyValue(scale / (duration / (timestampFrequency * kMicrosecondsPerSecond)));
  pwr::RealFormatter(0, kCommonDecimals).format(m_cellText, rate);
  return true;
}

void IntWriterV2::pushSampleNumber(TableInfo& table, std::uint16_t column) {
  ++table.sampleCount;
  pushFormatted(table, column, pwr::Data(static_cast<unsigned long>(table.sampleCount)));
}

void IntWriterV2::pushTime(TableInfo& table, std::uint16_t column, std::uint64_t timestamp,
                           TimeConversion conversion) {
  if (doTimelineTsc) {
    m_cellText.clear();
    pwr::appendUInt(m_cellText, timestamp);
    table.store->pushCell(m_cellText, column);
    return;
  }
  table.store->pushCell(tickText(timestamp - globalStartTimestamp, conversion), column);
}

void IntWriterV2::pushFormatted(TableInfo& table, std::uint16_t column, const pwr::Data& value) {
  value.toFormattedString(m_cellText);
  table.store->pushCell(m_cellText, column);
}

void IntWriterV2::pushAttributes(TableInfo& table, const AttributeColumns& columns,
                                 const pwr::AttributeValueManager& attributes) {
  for (const auto& [attribute, value] : attributes) {
    if (attribute != nullptr) {
      pushFormatted(table, attributeColumn(columns, attribute->getId()), value);
    }
  }
}
