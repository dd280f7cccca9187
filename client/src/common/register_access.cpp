#include "client/src/common/register_access.h"

#include <cstdint>
#include <limits>

#include "client/src/common/mmio_operation.h"
#include "client/src/common/number_text.h"
#include "client/src/common/pci_operation.h"

namespace pwr {
namespace {

constexpr unsigned int kWordBytes = 4;
constexpr unsigned int kDoubleWordBytes = 8;
constexpr unsigned int kBitsPerByte = 8;
constexpr unsigned int kWordBits = 32;
constexpr unsigned int kDoubleWordBits = 64;

template <typename Number>
constexpr Number kFailedRead = std::numeric_limits<Number>::max();

template <typename Number>
Number readOr(HWOperation& operation, Number failed) {
  Number value = 0;
  return operation.read(value) == 0 ? value : failed;
}

bool mmioWrite(unsigned long address, unsigned int sizeBytes, const std::string& value,
               const std::string& mask) {
  MMIOOperation operation(address);
  operation.setSize(sizeBytes);
  operation.set("VALUE-MASK", mask);
  operation.set("VALUE", value);
  return Operation::dispatchWrite(&operation, "ANY") != 0;
}

PCIOperation pciOperation(unsigned int bus, unsigned int device, unsigned int function) {
  PCIOperation operation;
  operation.setBus(bus);
  operation.setDevice(device);
  operation.setFunction(function);
  return operation;
}

template <typename Number>
bool readAt(PCIOperation& operation, unsigned int offset, unsigned int sizeBytes, Number& out) {
  operation.setOffset(offset);
  operation.setSize(sizeBytes);
  return operation.read(out) == 0;
}

unsigned int aligned(unsigned int offset) { return offset & ~3U; }

/// How many bits of an aligned read stand in front of `offset`.
unsigned int shiftOf(unsigned int offset) { return (offset & 3U) * kBitsPerByte; }

}  // namespace

// A new operation is four bytes wide already.
unsigned int mmioRead32(unsigned long address) {
  MMIOOperation operation(address);
  return readOr(operation, kFailedRead<unsigned int>);
}

unsigned long mmioRead64(unsigned long address) {
  MMIOOperation operation(address);
  operation.setSize(kDoubleWordBytes);
  return readOr(operation, kFailedRead<unsigned long>);
}

bool mmioWrite32(unsigned long address, unsigned int value, unsigned int mask) {
  return mmioWrite(address, kWordBytes, toString(value), toString(mask));
}

bool mmioWrite64(unsigned long address, unsigned long value, unsigned long mask) {
  return mmioWrite(address, kDoubleWordBytes, toString(value), toString(mask));
}

unsigned int pciRead32(unsigned int bus, unsigned int device, unsigned int function,
                       unsigned int offset) {
  PCIOperation operation = pciOperation(bus, device, function);
  unsigned int low = 0;
  if (!readAt(operation, aligned(offset), kWordBytes, low)) {
    return kFailedRead<unsigned int>;
  }
  const unsigned int shift = shiftOf(offset);
  if (shift == 0) {
    return low;
  }
  unsigned int high = 0;
  if (!readAt(operation, aligned(offset) + kWordBytes, kWordBytes, high)) {
    return kFailedRead<unsigned int>;
  }
  return (low >> shift) | (high << (kWordBits - shift));
}

unsigned long pciRead64(unsigned int bus, unsigned int device, unsigned int function,
                        unsigned int offset) {
  PCIOperation operation = pciOperation(bus, device, function);
  unsigned long low = 0;
  if (!readAt(operation, aligned(offset), kDoubleWordBytes, low)) {
    return kFailedRead<unsigned long>;
  }
  const unsigned int shift = shiftOf(offset);
  if (shift == 0) {
    return low;
  }
  // Three bytes at most are missing, so 32 bits of the second read are enough.
  unsigned int high = 0;
  if (!readAt(operation, aligned(offset) + kDoubleWordBytes, kDoubleWordBytes, high)) {
    return kFailedRead<unsigned long>;
  }
  return (low >> shift) | (std::uint64_t{high} << (kDoubleWordBits - shift));
}

}  // namespace pwr
