// The common base of accesses to hardware.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/operation.h"

/// An access that is described by values of categories, all of them texts, and carried out by the
/// host's dispatch. It is filled once and then handed to the host or a message. Not synchronised.
///
///     PCIOperation operation;
///     operation.set("BUS", "0");
///     unsigned int value = 0;
///     if (operation.read(value) != 0) { ...the host could not read... }
class HWOperation : public pwr::Operation {
 public:
  /// Accepts "SIZE", "ENTITY" and "DESCRIPTOR". `size` is in bytes.
  HWOperation(const std::string& name, unsigned int size);
  /// Accepts "ADDRESS" as well, and sets it.
  HWOperation(const std::string& name, unsigned long address, unsigned int size);
  HWOperation(const HWOperation& other);
  ~HWOperation() override;

  /// Gives a category its value, in the place of an earlier one. Returns 0. A category that is not
  /// accepted, or not beside those that are set, is a plain warning and -1.
  int set(const std::string& category, const std::string& value) override;
  pwr::OperationMetadata* getOperationMetadata() const override;

  /// Sets "SIZE", in bytes. Returns 0, also when that was refused.
  virtual int setSize(unsigned int size);
  /// The number in "SIZE" when it is set, else the size given at the start.
  virtual unsigned int getSize() const;
  /// Has the write that the categories describe carried out. Returns 0 on success.
  virtual int write(const std::string& target);
  virtual int write(const pwr::EntityHandle* target);

  /// Sets `out` to the number in a category and returns true. Without a value `out` is left alone.
  /// For unsigned long, unsigned int and unsigned short.
  template <typename Number>
  bool get(const std::string& category, Number& out) const;
  /// The number in "ADDRESS"; without it a plain warning and 0.
  unsigned long getAddress() const;

  /// Has the read carried out and sets `out` to the low bytes of what came, the rest zero. Returns
  /// 0, or -1 when the host could not read; `out` is then left alone. For unsigned long, which
  /// takes what came, and unsigned int, which takes no more than `getSize`.
  template <typename Number>
  int read(Number& out);

  /// The description with `address` for the address. The caller owns it.
  pwr::OperationMetadata* getOperationMetadata_i(const std::string& address) const;

  std::map<std::string, std::string> m_values;
  /// What the last read brought; filled by the host.
  std::vector<std::uint8_t> m_buffer;
  /// In bytes.
  std::uint32_t m_defaultSize;
};

template <>
int HWOperation::read<unsigned long>(unsigned long& out);
template <>
int HWOperation::read<unsigned int>(unsigned int& out);
