// The three containers of attributes: values by attribute, values by id, and expected attributes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "host/data.h"

namespace pwr {

class Attribute;

/// The attribute values of an entity or descriptor, in the order in which they were added.
/// Attributes are borrowed and may be null.
class AttributeValueManager {
 public:
  using Entry = std::pair<const Attribute*, Data>;
  using const_iterator = std::vector<Entry>::const_iterator;

  AttributeValueManager();
  AttributeValueManager(const AttributeValueManager& other);
  AttributeValueManager& operator=(const AttributeValueManager&) = delete;
  ~AttributeValueManager();

  /// Appends the pair. The same attribute added again is a second entry of the order.
  void addAttributeValue(const Attribute* attribute, const Data& value);

  const_iterator begin() const;
  const_iterator end() const;
  std::size_t getAttributeCount() const;

  /// Host side: replaces all values by `entries`.
  void setAttributeValues(const std::vector<Entry>& entries);

 private:
  /// The last value of each attribute, for the host's own look-ups.
  std::map<const Attribute*, Data> m_values;
  std::vector<Entry> m_order;
};

/// Values that belong to a single sample, by the id of the handle that names each, in id order.
class DynamicAttributeValueManager {
 public:
  using Map = std::map<std::uint64_t, Data>;
  using const_iterator = Map::const_iterator;

  DynamicAttributeValueManager();
  explicit DynamicAttributeValueManager(Map values);
  ~DynamicAttributeValueManager();

  const_iterator begin() const;
  const_iterator end() const;

 private:
  Map m_values;
};

/// The attributes that the values of a metric are going to have, in column order. Borrowed
/// pointers.
class ExpectedAttributeManager {
 public:
  using const_iterator = const Attribute* const*;

  ExpectedAttributeManager();
  explicit ExpectedAttributeManager(std::vector<const Attribute*> attributes);
  ~ExpectedAttributeManager();

  const_iterator begin() const;
  const_iterator end() const;
  std::size_t getAttributeCount() const;

 private:
  std::vector<const Attribute*> m_attributes;
};

}  // namespace pwr
