#include "writers/json_plugin_helper/series.h"

#include <algorithm>
#include <utility>

namespace {

/// For one more, and grows as the vector itself would.
template <typename T>
void makeRoomIn(std::vector<T>& values) {
  if (values.size() == values.capacity()) {
    values.reserve(std::max<std::size_t>(1, 2 * values.size()));
  }
}

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
  makeRoom();
  more->emplace_back(id, v);
}

void Value::makeRoom() {
  if (more == nullptr) {
    more = std::make_unique<std::vector<Pair>>();
  }
  makeRoomIn(*more);
}

void Value::setId(unsigned int id) {
  firstId = id;
  if (more == nullptr) {
    return;
  }
  for (Pair& pair : *more) {
    pair.first = id;
  }
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

Point::Point(unsigned long startTime, unsigned long endTime, Value&& v)
    : start(startTime), end(endTime), value(std::move(v)) {}

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
    stateIds = StateIds(*sharedIds);
    sharedIds.reset();
  }
  const auto [entry, isNew] = stateIds.try_emplace(state, nextStateId);
  if (isNew) {
    ++nextStateId;
  }
  return entry->second;
}

void Series::addData(unsigned long start, unsigned long end, const std::string& state,
                     double value) {
  addPoint_i(start, end, state, Value(0, value));
}

void Series::addData(unsigned long start, unsigned long end, const std::string& state, double value,
                     double value2) {
  Value both(0, value);
  both.addValue(0, value2);
  addPoint_i(start, end, state, std::move(both));
}

void Series::appendData(const std::string& state, double value) {
  if (points.empty()) {
    addState(state);
    return;
  }
  Value& last = points.back().getValue();
  last.makeRoom();  // Before the state, which stays only with its number.
  last.addValue(getStateId(state), value);
}

void Series::addPoint_i(unsigned long start, unsigned long end, const std::string& state,
                        Value value) {
  makeRoomIn(points);  // Before the state, which stays only with its point.
  value.setId(getStateId(state));
  points.emplace_back(start, end, std::move(value));
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
  const std::vector<unsigned int> map =
      newIdsByOld_i([&newIds](const std::string& state) { return newIds[state]; });
  StateIds taken = newIds;
  remapPoints_i(map);
  stateIds = std::move(taken);
  sharedIds.reset();
}

void Series::shareStates(std::shared_ptr<const StateIds> newIds) {
  remapPoints_i(newIdsByOld_i([&newIds](const std::string& state) { return newIds->at(state); }));
  StateIds().swap(stateIds);  // `clear` would keep the room of the table.
  sharedIds = std::move(newIds);
}

template <typename NewId>
std::vector<unsigned int> Series::newIdsByOld_i(NewId newId) const {
  std::vector<unsigned int> map(ids().size());
  for (const auto& [state, id] : ids()) {
    const unsigned int given = newId(state);
    if (id < map.size()) {
      map[id] = given;
    }
  }
  return map;
}

void Series::remapPoints_i(const std::vector<unsigned int>& map) {
  for (Point& point : points) {
    point.remapValues(map);
  }
}
