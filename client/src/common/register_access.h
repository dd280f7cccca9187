// Registers read and written by plain calls. The host carries them out.
#pragma once

namespace pwr {

// Memory-mapped registers. A read gives all ones when it fails, which cannot be told from a
// register that holds them. A write returns false on success and true when it failed; what the mask
// means is the host's.
unsigned int mmioRead32(unsigned long address);
unsigned long mmioRead64(unsigned long address);
bool mmioWrite32(unsigned long address, unsigned int value, unsigned int mask);
bool mmioWrite64(unsigned long address, unsigned long value, unsigned long mask);

// PCI configuration space. Only addresses that are multiples of four are read: other offsets take
// two reads, of which the second stands directly behind the first. All ones when a read fails.
unsigned int pciRead32(unsigned int bus, unsigned int device, unsigned int function,
                       unsigned int offset);
unsigned long pciRead64(unsigned int bus, unsigned int device, unsigned int function,
                        unsigned int offset);

}  // namespace pwr
