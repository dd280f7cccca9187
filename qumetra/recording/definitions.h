// The objects that a recording has defined, by the names that its records refer to them by.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>

#include "host/handles.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "qumetra/recording/record_object.h"

namespace qumetra {

/// Resolves references. The objects are borrowed. Every look-up throws `RecordFault` for a value
/// that is no string, a name that is not defined, and an object of another kind. Not synchronised.
class Definitions {
 public:
  using Object = std::variant<pwr::Quantity*, pwr::Attribute*, pwr::EntityHandle*,
                              pwr::DataDescriptor*, pwr::NameValuePair*, pwr::Process*,
                              pwr::Thread*, pwr::ColumnHandle*, pwr::Metric*>;

  /// Throws `RecordFault` when the name of `ref` is used already.
  void checkNew(RecordValue ref) const;
  /// REQUIRES: the name of `ref` is not used yet.
  void add(RecordValue ref, Object object);

  const pwr::Quantity& quantity(RecordValue ref) const;
  const pwr::Attribute& attribute(RecordValue ref) const;
  /// An attribute may stand wherever an entity may.
  const pwr::EntityHandle& entity(RecordValue ref) const;
  const pwr::DataDescriptor& descriptor(RecordValue ref) const;
  pwr::Metric& metric(RecordValue ref) const;
  /// Everything but quantities and metrics.
  const pwr::DataHandle& handle(RecordValue ref) const;
  /// The id of an object of any kind but a metric, which has none.
  std::uint64_t id(RecordValue ref) const;
  /// Any kind.
  const Object& object(RecordValue ref) const;

  // The same for members that may be null or absent.
  const pwr::Quantity* quantityOrNull(std::optional<RecordValue> ref) const;
  const pwr::Attribute* attributeOrNull(std::optional<RecordValue> ref) const;
  const pwr::EntityHandle* entityOrNull(std::optional<RecordValue> ref) const;
  const pwr::DataDescriptor* descriptorOrNull(std::optional<RecordValue> ref) const;
  const pwr::DataHandle* handleOrNull(std::optional<RecordValue> ref) const;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };

  std::unordered_map<std::string, Object, Hash, std::equal_to<>> m_objects;
};

/// Throws the fault that `ref` names an object of a kind that does not fit.
[[noreturn]] void failKind(RecordValue ref, const Definitions::Object& object,
                           const std::string& expected);

}  // namespace qumetra
