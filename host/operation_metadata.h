// What an operation tells about itself.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/metadata.h"

namespace pwr {

/// A snapshot of an operation as texts. Not synchronised.
///
/// The packed form, in native byte order with nothing between the fields; a text is its length (32
/// bits) and its characters:
///
///     kind (32), init value, operation name, size (32), address
///     count of pairs (32), each a key and its value
class OperationMetadata : public Metadata {
 public:
  /// The kind of description that this is.
  static constexpr std::uint32_t kOperation = 3;

  OperationMetadata(std::string initValue, std::string operationName, std::uint32_t size);
  OperationMetadata(const OperationMetadata& other);
  ~OperationMetadata() override;

  /// Appends a pair. Keys may repeat.
  void addValue(const std::string& key, const std::string& value);

  void serialize_i(Serializer& serializer) const override;
  /// The form is the same in every version.
  int deserialize_i(Serializer& serializer, unsigned int version) override;

  std::string m_initValue;
  std::string m_operationName;
  /// In bytes.
  std::uint32_t m_size;
  /// The address as text or, for telemetry, the name of the counter.
  std::string m_address;
  std::vector<std::pair<std::string, std::string>> m_pairs;
};

/// The descriptions of a message's operations, in their order.
struct MsgMetadata {
  std::vector<std::unique_ptr<OperationMetadata>> m_operations;
};

}  // namespace pwr
