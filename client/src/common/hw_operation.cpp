#include "client/src/common/hw_operation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <memory>

#include "client/src/common/hw_operation_metadata.h"
#include "client/src/common/number_text.h"
#include "client/src/common/pw_log.h"
#include "client/src/common/text_parsing.h"

namespace {

constexpr int kAllOnes = -1;

/// What the values of these categories are is part of every description.
constexpr std::array kDescribedCategories = {"ENTITY", "DESCRIPTOR"};

/// The first bytes of `bytes`, at most `count`, as the low bytes of a number.
template <typename Number>
Number lowBytes(const std::vector<std::uint8_t>& bytes, std::size_t count) {
  Number number = 0;
  const std::size_t copied = std::min({bytes.size(), count, sizeof number});
  if (copied > 0) {
    std::memcpy(&number, bytes.data(), copied);
  }
  return number;
}

}  // namespace

HWOperation::HWOperation(const std::string& name, unsigned int size)
    : Operation(name), m_defaultSize(size) {
  m_categories.add("SIZE");
  m_categories.add("ENTITY");
  m_categories.add("DESCRIPTOR");
}

HWOperation::HWOperation(const std::string& name, unsigned long address, unsigned int size)
    : HWOperation(name, size) {
  m_categories.add("ADDRESS");
  HWOperation::set("ADDRESS", pwr::toString(address));
}

HWOperation::HWOperation(const HWOperation& other) = default;
HWOperation::~HWOperation() = default;

int HWOperation::set(const std::string& category, const std::string& value) {
  if (!m_categories.contains(category) || !canSetCategory(category)) {
    pwr::logPlainWarning("WARNING: Key %s is invalid!\n", category.c_str());
    return kAllOnes;
  }
  m_values[category] = value;
  return 0;
}

pwr::OperationMetadata* HWOperation::getOperationMetadata() const {
  return getOperationMetadata_i(pwr::hexText(getAddress()));
}

pwr::OperationMetadata* HWOperation::getOperationMetadata_i(const std::string& address) const {
  auto metadata =
      std::make_unique<HWOperationMetadata>(m_initValue, m_name, HWOperation::getSize());
  metadata->m_address = address;
  for (const char* const category : kDescribedCategories) {
    const auto found = m_values.find(category);
    if (found != m_values.end()) {
      metadata->addValue(found->first, found->second);
    }
  }
  return metadata.release();
}

// A refused size shows in the log alone: callers never looked at the result.
int HWOperation::setSize(unsigned int size) {
  set("SIZE", pwr::toString(size));
  return 0;
}

unsigned int HWOperation::getSize() const {
  unsigned int size = m_defaultSize;
  get("SIZE", size);
  return size;
}

int HWOperation::write(const std::string& target) { return dispatchWrite(this, target); }

int HWOperation::write(const pwr::EntityHandle* target) { return dispatchWrite(this, target); }

template <typename Number>
bool HWOperation::get(const std::string& category, Number& out) const {
  const auto found = m_values.find(category);
  if (found == m_values.end()) {
    return false;
  }
  out = pwr::extractNumber<Number>(found->second, false);
  return true;
}

template bool HWOperation::get<unsigned long>(const std::string&, unsigned long&) const;
template bool HWOperation::get<unsigned int>(const std::string&, unsigned int&) const;
template bool HWOperation::get<unsigned short>(const std::string&, unsigned short&) const;

unsigned long HWOperation::getAddress() const {
  unsigned long address = 0;
  if (!get("ADDRESS", address)) {
    pwr::logPlainWarning("WARNING: Unable to retrieve operation address\n");
  }
  return address;
}

template <>
int HWOperation::read<unsigned long>(unsigned long& out) {
  if (dispatchRead(this, "ANY") != 0) {
    return kAllOnes;
  }
  out = lowBytes<unsigned long>(m_buffer, m_buffer.size());
  return 0;
}

template <>
int HWOperation::read<unsigned int>(unsigned int& out) {
  if (dispatchRead(this, "ANY") != 0) {
    return kAllOnes;
  }
  out = lowBytes<unsigned int>(m_buffer, getSize());
  return 0;
}
