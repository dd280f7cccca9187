#include "client/src/common/pci_operation.h"

#include <memory>

#include "client/src/common/number_text.h"

namespace {
constexpr unsigned int kDefaultSizeBytes = 4;
}

PCIOperation::PCIOperation() : HWOperation("PCI", kDefaultSizeBytes) {
  for (const char* const category :
       {"BUS", "DEVICE", "FUNCTION", "OFFSET", "VALUE", "VALUE-MASK"}) {
    m_categories.add(category);
  }
}

PCIOperation::PCIOperation(const PCIOperation& other) = default;
PCIOperation::~PCIOperation() = default;

void PCIOperation::setBus(unsigned int bus) { set("BUS", pwr::toString(bus)); }
void PCIOperation::setDevice(unsigned int device) { set("DEVICE", pwr::toString(device)); }
void PCIOperation::setFunction(unsigned int function) { set("FUNCTION", pwr::toString(function)); }
void PCIOperation::setOffset(unsigned int offset) { set("OFFSET", pwr::toString(offset)); }

PCIOperation* PCIOperation::clone() const {
  return std::make_unique<PCIOperation>(*this).release();
}

bool PCIOperation::isValidCommand_i(pwr::QMOpCommand command) const {
  return command == pwr::QMOpCommand::Read || command == pwr::QMOpCommand::Write;
}
