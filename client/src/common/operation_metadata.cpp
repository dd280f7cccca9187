// The descriptions of operations. Their packed form lies in the host.
#include "host/operation_metadata.h"

#include <utility>

namespace pwr {

OperationMetadata::OperationMetadata(std::string initValue, std::string operationName,
                                     std::uint32_t size)
    : Metadata(kOperation),
      m_initValue(std::move(initValue)),
      m_operationName(std::move(operationName)),
      m_size(size) {}
OperationMetadata::OperationMetadata(const OperationMetadata& other) = default;
OperationMetadata::~OperationMetadata() = default;

void OperationMetadata::addValue(const std::string& key, const std::string& value) {
  m_pairs.emplace_back(key, value);
}

}  // namespace pwr
