// The results of a run as the JSON writers keep them: series of points, one series per thing.
//
// Ids of states are small numbers that each series gives out by itself, in order of arrival. Those
// of several series are made to agree at the end, see `Series::updateStates`. Not synchronised.
//
// An operation that finds no memory throws, and has changed nothing then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/metric.h"

/// Numbers by state id, in the order in which they came; an id may come twice. Most values are one
/// number, which stands in the object itself: points are what a run's memory is made of.
class Value {
 public:
  using Pair = std::pair<unsigned int, double>;

  Value(unsigned int id, double v);
  Value(const Value& other);
  Value(Value&& other) noexcept = default;
  Value& operator=(const Value& other);
  Value& operator=(Value&& other) noexcept = default;
  ~Value() = default;

  void addValue(unsigned int id, double v);
  /// Makes room for one pair: the next `addValue` cannot fail.
  void makeRoom();
  /// Gives all pairs that id.
  void setId(unsigned int id);
  /// Replaces each id by `map[id]`. An id that the table does not have stays.
  void remapValues(const std::vector<unsigned int>& map);
  std::vector<Pair> getValues() const;

  /// At least 1.
  std::size_t size() const { return more == nullptr ? 1 : 1 + more->size(); }
  unsigned int id(std::size_t index) const {
    return index == 0 ? firstId : (*more)[index - 1].first;
  }
  double number(std::size_t index) const {
    return index == 0 ? firstNumber : (*more)[index - 1].second;
  }

 private:
  unsigned int firstId;
  double firstNumber;
  /// Null while there is no second pair.
  std::unique_ptr<std::vector<Pair>> more;
};

/// The value of a span of time, in microseconds since the start of the collection.
class Point {
 public:
  Point(unsigned long startTime, unsigned long endTime, const Value& v);
  Point(unsigned long startTime, unsigned long endTime, Value&& v);

  void remapValues(const std::vector<unsigned int>& map);
  unsigned long getStartTimestamp() const { return start; }
  unsigned long getEndTimestamp() const { return end; }
  Value& getValue() { return value; }
  const Value& getValue() const { return value; }

 private:
  unsigned long start;
  unsigned long end;
  Value value;
};

/// A unit that the numbers of a series can be told in.
class JsonUnit {
 public:
  JsonUnit(const std::string& quantityName, const std::string& unitsText, double conversion);
  JsonUnit(const std::string& quantityName, const std::string& unitsText, double conversion,
           bool isRate);

  std::string getName() const { return name; }
  std::string getUnits() const { return units; }
  double getRateConversion() const { return rateConversion; }
  bool isCalculatedRate() const { return calculatedRate; }

 private:
  std::string name;
  std::string units;
  double rateConversion;
  bool calculatedRate;
};

/// The life of one thing: an entity of a metric or, where states are counted apart, one state of
/// it.
class Series {
 public:
  /// `hasStateValues`: the numbers are told by state. Only the low byte of the type is kept.
  Series(const std::string& categoryName, const std::vector<JsonUnit>& allUnits,
         const std::string& uniqueName, const std::string& friendlyName,
         pwr::Metric::MetricType metricType, bool hasStateValues);

  std::string getCategory() const { return category; }
  std::string getKey() const { return key; }
  std::string getName() const { return name; }
  std::vector<JsonUnit> getUnits() const { return units; }
  pwr::Metric::MetricType getType() const { return static_cast<pwr::Metric::MetricType>(type); }
  bool hasStates() const { return stated; }
  std::vector<Point> getData() const { return points; }

  /// Gives the state the next id unless it has one.
  void addState(const std::string& state);
  unsigned int getStateId(const std::string& state);
  void addData(unsigned long start, unsigned long end, const std::string& state, double value);
  /// A range: two pairs under one id, low and high end.
  void addData(unsigned long start, unsigned long end, const std::string& state, double value,
               double value2);
  /// Adds to the last point. Without a point only the state is kept.
  void appendData(const std::string& state, double value);

  /// The names of the states, each at its id. A name that stands under an id beyond their number is
  /// left out, and a place without a name is empty; neither comes about by the operations above.
  std::vector<std::string> getStates() const;

  /// Gives the states the ids that they have in `ids`, in all points, and takes the whole of `ids`
  /// over. A state that `ids` lacks gets 0, and is in `ids` afterwards. Afterwards new states may
  /// get ids that are taken: this belongs to the end of a run.
  void updateStates(std::unordered_map<std::string, unsigned int>& ids);

  using StateIds = std::unordered_map<std::string, unsigned int>;
  /// `updateStates` without the copy: a metric may have thousands of series, and each of them would
  /// have its own of all their states. REQUIRES: `ids` has every state of the series, and nobody
  /// changes it any more.
  void shareStates(std::shared_ptr<const StateIds> ids);

  // For printing, without copies.
  const std::string& categoryText() const { return category; }
  const std::string& keyText() const { return key; }
  const std::string& nameText() const { return name; }
  const std::vector<JsonUnit>& allUnits() const { return units; }
  const std::vector<Point>& allPoints() const { return points; }
  bool hasPoints() const { return !points.empty(); }

  /// Declared states by id, for a writer that prints names (`setStateNames`).
  using StateNames = std::unordered_map<unsigned int, std::string>;
  const StateNames& getStateNames() const { return stateNames; }
  void setStateNames(StateNames names) { stateNames = std::move(names); }

 private:
  void addPoint_i(unsigned long start, unsigned long end, const std::string& state, Value value);
  /// What each of the ids becomes that the series has given out.
  template <typename NewId>
  std::vector<unsigned int> newIdsByOld_i(NewId newId) const;
  void remapPoints_i(const std::vector<unsigned int>& map);
  const StateIds& ids() const { return sharedIds == nullptr ? stateIds : *sharedIds; }

  std::string category;
  std::vector<JsonUnit> units;
  std::string name;
  std::string key;
  std::uint8_t type;
  bool stated;
  std::vector<Point> points;
  std::uint32_t nextStateId = 0;
  StateIds stateIds;
  /// In the place of `stateIds` where not null.
  std::shared_ptr<const StateIds> sharedIds;
  StateNames stateNames;
};
