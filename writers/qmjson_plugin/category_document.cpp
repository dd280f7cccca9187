#include "writers/qmjson_plugin/category_document.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "client/src/common/number_text.h"
#include "writers/json_plugin_helper/json_file.h"
#include "writers/json_plugin_helper/state_order.h"
#include "writers/sample_reading.h"

namespace {

constexpr double kMicrosecondsPerSecond = 1e6;

/// How numbers without states are printed.
struct NumberRule {
  bool rate = false;
  double factor = 1.0;
};

SharedStates mergeStates(const std::vector<Series*>& members) {
  SharedStates shared;
  shared.ids = std::make_shared<Series::StateIds>();
  for (const Series* series : members) {
    for (const std::string& state : series->getStates()) {
      if (shared.ids->try_emplace(state, 0).second) {
        shared.names.push_back(state);
      }
    }
  }
  sortStateNames(shared.names);
  for (unsigned int i = 0; i < shared.names.size(); ++i) {
    (*shared.ids)[shared.names[i]] = i;
    shared.keys.push_back(pwr::toString(i));
  }
  return shared;
}

/// A series whose states are a beginning of the shared ones is left as it is.
void adoptStates(Series& series, const SharedStates& shared) {
  const std::vector<std::string> own = series.getStates();
  const bool agrees =
      own.size() <= shared.names.size() && std::equal(own.begin(), own.end(), shared.names.begin());
  if (!agrees) {
    series.shareStates(shared.ids);
  }
}

void writeUnits(JsonFile& file, const std::vector<JsonUnit>& units) {
  file.key("altUnits");
  file.startArray();
  for (const JsonUnit& unit : units) {
    file.startObject();
    file.textMember("name", unit.getName());
    file.textMember("unit", unit.getUnits());
    file.numberMember("conversion", unit.getRateConversion());
    file.key("isCalculatedRate");
    file.boolean(unit.isCalculatedRate());
    file.endObject();
  }
  file.endArray();
}

/// Writes "units", if there are any, and returns what follows from them for the numbers.
NumberRule writeUnitRule(JsonFile& file, const Series& first) {
  const std::vector<JsonUnit>& units = first.allUnits();
  if (units.empty()) {
    return {};
  }
  const JsonUnit& last = units.back();
  const bool rate = last.isCalculatedRate();
  if (rate && !first.hasStates()) {
    file.textMember("units", last.getUnits());
    return {rate, last.getRateConversion()};
  }
  file.textMember("units", units.front().getUnits());
  return {rate, 1.0};
}

NumberRule writeMetaData(JsonFile& file, const Series& first, const SharedStates& shared) {
  file.key("metaData");
  file.startObject();
  file.textMember("type", metricTypeName(first.getType()));
  if (first.hasStates()) {
    file.key("states");
    file.startArray();
    for (const std::string& state : shared.names) {
      file.text(state);
    }
    file.endArray();
  }
  writeUnits(file, first.allUnits());
  const NumberRule rule = writeUnitRule(file, first);
  file.endObject();
  return rule;
}

void writeByState(JsonFile& file, const Value& value, const SharedStates& shared) {
  file.key("y");
  file.startObject();
  for (std::size_t i = 0; i < value.size(); ++i) {
    const unsigned int id = value.id(i);
    if (id < shared.keys.size()) {
      file.key(shared.keys[id]);
    } else {
      file.key(pwr::toString(id));
    }
    file.number(value.number(i));
  }
  file.endObject();
}

double printedNumber(double number, const Point& point, const NumberRule& rule) {
  if (!rule.rate) {
    return number;
  }
  const unsigned long length = point.getEndTimestamp() - point.getStartTimestamp();
  if (length == 0) {
    return 0.0;
  }
  return number * rule.factor * kMicrosecondsPerSecond / static_cast<double>(length);
}

void writePoint(JsonFile& file, const Point& point, bool stated, const SharedStates& shared,
                const NumberRule& rule) {
  const Value& value = point.getValue();
  file.startObject();
  file.unsignedMember("x", point.getStartTimestamp());
  file.unsignedMember("x1", point.getEndTimestamp());
  if (stated) {
    writeByState(file, value, shared);
  } else {
    file.numberMember("y", printedNumber(value.number(0), point, rule));
    if (value.size() > 1) {
      file.numberMember("y1", printedNumber(value.number(1), point, rule));
    }
  }
  file.endObject();
}

void writeSeries(JsonFile& file, const Series& series, const SharedStates& shared,
                 const NumberRule& rule) {
  file.key(series.keyText());
  file.startObject();
  file.textMember("name", series.keyText());
  file.textMember("friendlyName", series.nameText());
  file.key("points");
  file.startArray();
  for (const Point& point : series.allPoints()) {
    writePoint(file, point, series.hasStates(), shared, rule);
    file.drain();
  }
  file.endArray();
  file.endObject();
}

}  // namespace

CategoryDocument::CategoryDocument(std::vector<Series*> members)
    : m_members(std::move(members)), m_shared(mergeStates(m_members)) {
  for (Series* series : m_members) {
    adoptStates(*series, m_shared);
  }
}

void CategoryDocument::write(JsonFile& file) const {
  const Series& first = *m_members.front();
  file.key(first.categoryText());
  file.startObject();
  const NumberRule rule = writeMetaData(file, first, m_shared);
  file.key("data");
  file.startObject();
  for (const Series* series : m_members) {
    writeSeries(file, *series, m_shared, rule);
  }
  file.endObject();
  file.endObject();
}
