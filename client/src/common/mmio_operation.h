// An access to memory-mapped registers.
#pragma once

#include "client/src/common/hw_operation.h"

/// Four bytes, unless told otherwise, at an address that is given either directly, by "ADDRESS", or
/// through the base address register of a PCI device, by `barCategories`; the two exclude one
/// another. Accepts "VALUE", "VALUE-MASK" and "GBE" as well; can be read and written.
class MMIOOperation : public HWOperation {
 public:
  /// Nothing is set: takes either kind of address.
  MMIOOperation();
  explicit MMIOOperation(unsigned long address);
  MMIOOperation(const MMIOOperation& other);
  ~MMIOOperation() override;

  MMIOOperation* clone() const override;
  /// False for the categories of the kind of address that is not in use.
  bool canSetCategory(const std::string& category) const override;
  bool isValidCommand_i(pwr::QMOpCommand command) const override;

  void init_i();
  void addCategories_i();

  /// The categories that give an address by a PCI location.
  pwr::PWSet<std::string> barCategories;
};
