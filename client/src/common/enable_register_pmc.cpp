#include "client/src/common/enable_register_pmc.h"

#include <array>
#include <memory>
#include <string_view>

#include "client/src/common/mmio_operation.h"
#include "client/src/common/number_text.h"
#include "client/src/common/restore_message.h"
#include "client/src/common/text_parsing.h"
#include "client/src/common/tokenizer.h"

namespace pwr {

std::unordered_map<std::string, _EnableRegOpType> s_stringToOpType = {
    {"READ", _EnableRegOpType::Read}, {"WRITE", _EnableRegOpType::Write}};
std::unordered_map<std::string, _BaseAddressType> s_stringToBaseAddressType = {
    {"SSRAMBASE", _BaseAddressType::Ssram}, {"PWRMBASE", _BaseAddressType::Pwrm}};

namespace {

using Bases = std::unordered_map<unsigned int, unsigned long>;

/// How far a bit's position shifts.
std::uint32_t shiftOf(std::uint32_t bitPosition) {
  constexpr std::uint32_t kWordBits = 64;
  return bitPosition % kWordBits;
}

void setBase(EnableRegisterPMC& target, const std::string& value, const Bases& bases) {
  const _BaseAddressType type = s_stringToBaseAddressType[value];
  target.baseAddress = bases.at(static_cast<unsigned int>(type));
  target.baseType = type;
}

/// A field of a register: the word by which it is known, and how its value is taken.
struct Field {
  std::string_view word;
  void (*take)(EnableRegisterPMC& target, const std::string& value, const Bases& bases);
};

/// In the order in which the words are looked for: the first that a key contains counts.
constexpr std::array kFields = {
    Field{"BASE-ADDRESS", setBase},
    Field{"OFFSET",
          [](EnableRegisterPMC& target, const std::string& value, const Bases&) {
            target.offset = extractNumber<unsigned long>(value, false);
          }},
    Field{"SIZE", [](EnableRegisterPMC& target, const std::string& value,
                     const Bases&) { target.size = extractNumber(value, false); }},
    Field{"BIT-POSITION", [](EnableRegisterPMC& target, const std::string& value,
                             const Bases&) { target.bitPosition = extractNumber(value, false); }},
    Field{"OP-TYPE", [](EnableRegisterPMC& target, const std::string& value,
                        const Bases&) { target.opType = s_stringToOpType[value]; }},
    Field{"EXPECTED-READ-VALUE",
          [](EnableRegisterPMC& target, const std::string& value, const Bases&) {
            target.expectedReadValue = extractNumber<unsigned long>(value, false);
          }},
    Field{"WRITE-VALUE",
          [](EnableRegisterPMC& target, const std::string& value, const Bases&) {
            target.writeValue = extractNumber<unsigned long>(value, false);
          }},
    Field{"COUNT-OPTION", [](EnableRegisterPMC& target, const std::string& value,
                             const Bases&) { target.countOption = value == "TRUE"; }},
};

const Field* findField(const std::string& key) {
  for (const Field& field : kFields) {
    if (key.find(field.word) != std::string::npos) {
      return &field;
    }
  }
  return nullptr;
}

EnableRegisterPMC& findOrMake(std::unordered_map<std::string, EnableRegisterPMC*>& registers,
                              const std::string& name, const std::string& feature) {
  EnableRegisterPMC*& entry = registers[name];
  if (entry == nullptr) {
    entry = std::make_unique<EnableRegisterPMC>(feature).release();
  }
  return *entry;
}

}  // namespace

EnableRegisterPMC::EnableRegisterPMC(const std::string& registerName) : name(registerName) {}

int EnableRegisterPMC::handleRegister() {
  switch (opType) {
    case _EnableRegOpType::Write:
      return writeRegister();
    case _EnableRegOpType::Read:
      return readRegister();
    default:
      return 1;
  }
}

int EnableRegisterPMC::readRegister() {
  MMIOOperation operation(baseAddress + offset);
  unsigned long value = 0;
  if (operation.read(value) != 0) {
    return 1;
  }
  const unsigned long bit = (value >> shiftOf(bitPosition)) & 1U;
  return bit == expectedReadValue ? 0 : 1;
}

int EnableRegisterPMC::writeRegister() {
  MMIOOperation operation;
  operation.set("ADDRESS", toString(baseAddress + offset));
  operation.set("VALUE", toString(writeValue << shiftOf(bitPosition)));
  return operation.write("ANY");
}

int EnableRegisterPMC::addRestoreMessage(unsigned int first, unsigned int second,
                                         const std::string& feature,
                                         std::vector<InputMsg*>& messages) {
  if (opType != _EnableRegOpType::Write) {
    return 0;
  }
  MMIOOperation readOperation(baseAddress + offset);
  readOperation.setSize(size);
  if (readOperation.read(savedValue) != 0) {
    return 1;
  }
  auto restore = std::make_unique<MMIOOperation>();
  restore->setSize(size);
  restore->set("ADDRESS", toString(baseAddress + offset));
  restore->set("VALUE", toString(savedValue));
  appendRestoreMessage(messages, "PMC Residency: " + feature,
                       {static_cast<int>(first), static_cast<int>(second)}, std::move(restore));
  return 0;
}

int addEnableRegisterInfo(const std::vector<std::pair<std::string, std::string>>& config,
                          const Bases& bases, const std::string& feature,
                          std::unordered_map<std::string, EnableRegisterPMC*>& registers) {
  for (const auto& [key, value] : config) {
    const std::vector<std::string> parts = Tokenizer(key, ":").get_all_tokens();
    if (parts.size() != 2) {
      continue;
    }
    EnableRegisterPMC& target = findOrMake(registers, parts[0], feature);
    const Field* const field = findField(parts[1]);
    if (field == nullptr) {
      return 1;
    }
    field->take(target, value, bases);
  }
  return 0;
}

}  // namespace pwr
