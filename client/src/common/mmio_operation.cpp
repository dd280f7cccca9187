#include "client/src/common/mmio_operation.h"

#include <algorithm>
#include <memory>

namespace {
constexpr unsigned int kDefaultSizeBytes = 4;
}

MMIOOperation::MMIOOperation() : HWOperation("MMIO", kDefaultSizeBytes) { init_i(); }

MMIOOperation::MMIOOperation(unsigned long address)
    : HWOperation("MMIO", address, kDefaultSizeBytes) {
  init_i();
}

MMIOOperation::MMIOOperation(const MMIOOperation& other) = default;
MMIOOperation::~MMIOOperation() = default;

void MMIOOperation::init_i() {
  for (const char* const category :
       {"BUS", "DEVICE", "FUNCTION", "BAR-OFFSET", "ADDR-MASK", "ADDR-OFFSET"}) {
    barCategories.add(category);
  }
  addCategories_i();
}

void MMIOOperation::addCategories_i() {
  for (const char* const category : {"ADDRESS", "VALUE", "GBE", "VALUE-MASK"}) {
    m_categories.add(category);
  }
  for (const std::string& category : barCategories) {
    m_categories.add(category);
  }
}

MMIOOperation* MMIOOperation::clone() const {
  return std::make_unique<MMIOOperation>(*this).release();
}

bool MMIOOperation::canSetCategory(const std::string& category) const {
  if (barCategories.contains(category)) {
    return !m_values.contains("ADDRESS");
  }
  if (category != "ADDRESS") {
    return true;
  }
  return std::none_of(m_values.begin(), m_values.end(),
                      [this](const auto& entry) { return barCategories.contains(entry.first); });
}

bool MMIOOperation::isValidCommand_i(pwr::QMOpCommand command) const {
  return command == pwr::QMOpCommand::Read || command == pwr::QMOpCommand::Write;
}
