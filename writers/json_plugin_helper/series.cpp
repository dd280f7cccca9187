#include "writers/json_plugin_helper/series.h"

#include <utility>

namespace {

void remap(unsigned int& id, const std::vector<unsigned int>& map) {
  if (id < map.size()) {
    id = map[id];
  }
}

}  // namespace

Value::Value(unsigned int id, double v) : firstId(id), firstNumber(v) {}

Value::Value(const Value& other)
    : firstId(other.firstId),
      firstNumber(other.firstNumber),
      more(other.more == nullptr ? nullptr : std::make_unique<std::vector<Pair>>(*other.more)) {}

Value& Value::operator=(const Value& other) {
  Value copy(other);
  *this = std::move(copy);
  return *this;
}

void Value::addValue(unsigned int id, double v) {
  if (more == nullptr) {
    more = std::make_unique<std::vector<Pair>>();
  }
  more->emplace_back(id, v);
}

void Value::remapValues(const std::vector<unsigned int>& map) {
  remap(firstId, map);
  if (more == nullptr) {
    return;
  }
  for (Pair& pair : *more) {
    remap(pair.first, map);
  }
}

std::vector<Value::Pair> Value::getValues() const {
  std::vector<Pair> values{{firstId, firstNumber}};
  if (more != nullptr) {
    values.insert(values.end(), more->begin(), more->end());
  }
  return values;
}

Point::Point(unsigned long startTime, unsigned long endTime, const Value& v)
    : start(startTime), end(endTime), value(v) {}

void Point::remapValues(const std::vector<unsigned int>& map) { value.remapValues(map); }

JsonUnit::JsonUnit(const std::string& quantityName, const std::string& unitsText, double conversion)
    : JsonUnit(quantityName, unitsText, conversion, false) {}

JsonUnit::JsonUnit(const std::string& quantityName, const std::string& unitsText, double conversion,
                   bool isRate)
    : name(quantityName), units(unitsText), rateConversion(conversion), calculatedRate(isRate) {}

Series::Series(const std::string& categoryName, const std::vector<JsonUnit>& allUnits,
               const std::string& uniqueName, const std::string& friendlyName,
               pwr::Metric::MetricType metricType, bool hasStateValues)
    : category(categoryName),
      units(allUnits),
      name(friendlyName),
      key(uniqueName),
      type(static_cast<std::uint8_t>(metricType)),
      stated(hasStateValues) {}

void Series::addState(const std::string& state) { getStateId(state); }

unsigned int Series::getStateId(const std::string& state) {
  if (sharedIds != nullptr) {
    if (const auto shared = sharedIds->find(state); shared != sharedIds->end()) {
      return shared->second;
    }
    stateIds = *std::exchange(sharedIds, nullptr);
  }
  const auto [entry, isNew] = stateIds.try_emplace(state, nextStateId);
  if (isNew) {
    ++nextStateId;
  }
  return entry->second;
}

void Series::addData(unsigned long start, unsigned long end, const std::string& state,
                     double value) {
  points.emplace_back(start, end, Value(getStateId(state), value));
}

void Series::addData(unsigned long start, unsigned long end, const std::string& state, double value,
                     double value2) {
  addData(start, end, state, value);
  appendData(state, value2);
}

void Series::appendData(const std::string& state, double value) {
  const unsigned int id = getStateId(state);
  if (!points.empty()) {
    points.back().getValue().addValue(id, value);
  }
}

std::vector<std::string> Series::getStates() const {
  std::vector<std::string> names(ids().size());
  for (const auto& [state, id] : ids()) {
    if (id < names.size()) {
      names[id] = state;
    }
  }
  return names;
}

void Series::updateStates(std::unordered_map<std::string, unsigned int>& newIds) {
  remapPoints([&newIds](const std::string& state) { return newIds[state]; });
  if (&newIds != &stateIds) {
    stateIds = newIds;
    sharedIds.reset();
  }
}

void Series::shareStates(std::shared_ptr<const StateIds> newIds) {
  remapPoints([&newIds](const std::string& state) { return newIds->at(state); });
  stateIds.clear();
  sharedIds = std::move(newIds);
}

template <typename NewId>
void Series::remapPoints(NewId newId) {
  std::vector<unsigned int> table(ids().size());
  for (const auto& [state, id] : ids()) {
    const unsigned int given = newId(state);
    if (id < table.size()) {
      table[id] = given;
    }
  }
  for (Point& point : points) {
    point.remapValues(table);
  }
}
