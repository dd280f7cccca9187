#include "client/src/common/pch_utils.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

#include "client/src/common/number_text.h"
#include "client/src/common/pci_operation.h"
#include "client/src/common/pw_log.h"
#include "client/src/common/restore_message.h"
#include "client/src/common/text_parsing.h"
#include "client/src/common/tokenizer.h"

namespace pwr {
namespace {

constexpr std::size_t kLocationParts = 4;
constexpr std::size_t kEntriesWithLocation = 2;
constexpr std::size_t kEntriesWithoutLocation = 5;
constexpr unsigned int kBarBytes = 8;
constexpr std::uint16_t kUnknownBus = 0xFFFF;

/// How the routine calls itself in the log: readers look for it to the letter.
constexpr const char* kEnableSignature =
    "bool pwr::enableSSRAMRead(std::vector<pwr::InputMsg *> &, const "
    "std::vector<pwr::KeyValuePair> "
    "&, const int, const int, const std::string &)";

struct RegisterBits {
  std::uint32_t bus = 0;
  std::uint32_t device = 0;
  std::uint32_t function = 0;
  std::uint32_t offset = 0;
  std::uint32_t mask = 0;
};

/// The words of keys and what they set, in the order in which they are looked for: the first that a
/// key contains counts.
struct Rule {
  std::string_view word;
  std::uint32_t RegisterBits::*member;
};
constexpr std::array kRules = {
    Rule{"MASK", &RegisterBits::mask},     Rule{"BUS", &RegisterBits::bus},
    Rule{"DEVICE", &RegisterBits::device}, Rule{"FUNCTION", &RegisterBits::function},
    Rule{"OFFSET", &RegisterBits::offset},
};

bool applyEntry(const KeyValuePair& entry, RegisterBits& bits) {
  for (const Rule& rule : kRules) {
    if (entry.key.find(rule.word) != std::string::npos) {
      bits.*rule.member = extractNumber(entry.value, false);
      return true;
    }
  }
  return false;
}

/// Sets bus, device and function, and stores the text of the offset. False unless the location has
/// its four parts.
bool parseLocation(const std::string& location, RegisterBits& bits, std::string& offset) {
  const std::vector<std::string> parts = Tokenizer(location, "/").get_all_tokens();
  if (parts.size() != kLocationParts) {
    return false;
  }
  bits.bus = extractNumber(parts[0], false);
  bits.device = extractNumber(parts[1], false);
  bits.function = extractNumber(parts[2], false);
  offset = parts[3];
  return true;
}

/// Where the register is and which bits enable. False after a warning.
bool readRegisterBits(const std::vector<KeyValuePair>& config, const std::string& location,
                      RegisterBits& bits) {
  std::size_t expected = kEntriesWithoutLocation;
  if (!location.empty()) {
    // Its offset is that of the base address, not of the register.
    std::string unusedOffset;
    if (!parseLocation(location, bits, unusedOffset)) {
      logPlainWarning("WARNING: %s: Could not enable SSRAM.\n", kEnableSignature);
      return false;
    }
    expected = kEntriesWithLocation;
  }
  if (config.size() != expected) {
    logPlainWarning("WARNING: %s: Unexpected number of SSRAM enable entries in config.\n",
                    kEnableSignature);
    return false;
  }
  for (const KeyValuePair& entry : config) {
    if (!applyEntry(entry, bits)) {
      logPlainWarning("WARNING: %s: Unexpected SSRAM enable entry in config.\n", kEnableSignature);
      return false;
    }
  }
  return true;
}

void setPlace(PCIOperation& operation, const RegisterBits& bits) {
  operation.setBus(bits.bus);
  operation.setDevice(bits.device);
  operation.setFunction(bits.function);
  operation.setOffset(bits.offset);
}

}  // namespace

bool enableSSRAMRead(std::vector<InputMsg*>& messages, const std::vector<KeyValuePair>& config,
                     int first, int second, const std::string& location) {
  RegisterBits bits;
  if (!readRegisterBits(config, location, bits)) {
    return false;
  }
  auto operation = std::make_unique<PCIOperation>();
  setPlace(*operation, bits);
  std::uint32_t old = 0;
  if (operation->read(old) != 0) {
    logPlainWarning("WARNING: %s: Could not read SSRAM enable register.\n", kEnableSignature);
    return false;
  }
  const std::uint32_t enabled = bits.mask | old;
  if (enabled == old) {
    return true;
  }
  operation->set("VALUE", toString(enabled));
  if (operation->write("ANY") != 0) {
    logPlainWarning("WARNING: %s: SSRAM reads could not be enabled.\n", kEnableSignature);
    return false;
  }
  operation->set("VALUE", toString(old));
  appendRestoreMessage(messages, "SSRAMReadRegRestore", {first, second}, std::move(operation));
  return true;
}

std::string discoverSSRAMBar(unsigned long* bar, const std::vector<std::string>& candidates) {
  PCIOperation operation;
  operation.setSize(kBarBytes);
  for (const std::string& candidate : candidates) {
    RegisterBits place;
    std::string offset;
    if (!parseLocation(candidate, place, offset)) {
      continue;
    }
    place.offset = extractNumber(offset, false);
    setPlace(operation, place);
    unsigned long value = 0;
    if (operation.read(value) == 0 && value != 0 &&
        value != std::numeric_limits<unsigned long>::max()) {
      *bar = value;
      return candidate;
    }
  }
  return {};
}

std::vector<std::string> getMZLWSPCHBDF(PCHMetadata* metadata) {
  if (metadata == nullptr) {
    return {};
  }
  return {hexText(metadata->getMZLWSPCHBus()) + "/0x14/0x2/0x10"};
}

std::uint16_t PCHMetadata::getMZLWSPCHBus() const {
  const auto found = m_values.find("MZL-WS-PCH-BUS");
  if (found == m_values.end() || found->second.empty()) {
    return kUnknownBus;
  }
  return static_cast<std::uint16_t>(extractNumber(found->second, false));
}

}  // namespace pwr
