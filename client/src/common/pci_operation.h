// An access to the configuration space of a PCI device.
#pragma once

#include "client/src/common/hw_operation.h"

/// Four bytes, unless told otherwise, at an offset of a device's configuration space. Accepts
/// "BUS", "DEVICE", "FUNCTION", "OFFSET", "VALUE" and "VALUE-MASK"; can be read and written.
class PCIOperation : public HWOperation {
 public:
  PCIOperation();
  PCIOperation(const PCIOperation& other);
  ~PCIOperation() override;

  void setBus(unsigned int bus);
  void setDevice(unsigned int device);
  void setFunction(unsigned int function);
  /// In bytes.
  void setOffset(unsigned int offset);

  PCIOperation* clone() const override;
  bool isValidCommand_i(pwr::QMOpCommand command) const override;
};
