// The platform controller hub's SSRAM: finding it, and making it readable.
#pragma once

#include <string>
#include <vector>

#include "client/src/common/input_msg.h"
#include "host/configuration.h"
#include "host/platform_metadata.h"

namespace pwr {

// A location is a text of four numbers, bus/device/function/offset, hexadecimal with "0x". The host
// carries the accesses out.

/// Sets the bits of a configuration register that make SSRAM readable. The register is described by
/// `config`: by five entries or, when `location` has bus, device and function, by two; the entries
/// count. Returns whether SSRAM can be read. When the bits had to be set, a message that puts the
/// register back at "FINI" is appended to `messages`, with the context numbers `first` and
/// `second`; the list owns it. A failure is a plain warning, and appends nothing.
bool enableSSRAMRead(std::vector<InputMsg*>& messages, const std::vector<KeyValuePair>& config,
                     int first, int second, const std::string& location);

/// The first candidate at which there is an address (neither 0 nor all ones), which goes to `*bar`.
/// Empty when there is none; `*bar` is then left alone. REQUIRES: `bar` is not null.
std::string discoverSSRAMBar(unsigned long* bar, const std::vector<std::string>& candidates);

/// The locations at which the hub of one server generation may have its base address; none for
/// null.
std::vector<std::string> getMZLWSPCHBDF(PCHMetadata* metadata);

}  // namespace pwr
