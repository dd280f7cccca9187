// Memory-mapped power management registers that configuration describes: tested or set at the start
// of a run, and put back at its end.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "client/src/common/input_msg.h"

namespace pwr {

// Names that begin with an underscore are those under which hosts know the types.
// NOLINTBEGIN(bugprone-reserved-identifier)
/// What is done with a register.
enum class _EnableRegOpType : std::uint32_t { Read = 0, Write = 1, None = 2 };
/// Where a register's base address comes from.
enum class _BaseAddressType : std::uint32_t { Ssram = 0, Pwrm = 1, None = 2 };
// NOLINTEND(bugprone-reserved-identifier)

/// The words of the configuration. A look-up of an unknown word leaves the word with the value 0 in
/// the table.
extern std::unordered_map<std::string, _EnableRegOpType> s_stringToOpType;
extern std::unordered_map<std::string, _BaseAddressType> s_stringToBaseAddressType;

/// A register and what is to be done with it. The host carries accesses out. Not synchronised.
class EnableRegisterPMC {
 public:
  explicit EnableRegisterPMC(const std::string& registerName);

  /// Does what `opType` says. Returns 0 for success, else 1 or what the write returned.
  int handleRegister();
  /// Returns 0 when the bit is as expected, 1 when it is not or cannot be read.
  int readRegister();
  /// Writes the whole register, four bytes: only the bits of the value are set, and `size` does not
  /// matter. Returns 0 on success.
  int writeRegister();
  /// For registers that are written: reads the register and appends a message that puts the value
  /// back at "FINI"; the list owns it. Returns 0; 1, and nothing is appended, when the register
  /// cannot be read.
  int addRestoreMessage(unsigned int first, unsigned int second, const std::string& feature,
                        std::vector<InputMsg*>& messages);

  unsigned long baseAddress = 0;
  _BaseAddressType baseType = _BaseAddressType::None;
  unsigned long offset = 0;
  /// In bytes.
  std::uint32_t size = 0;
  std::uint32_t bitPosition = 0;
  _EnableRegOpType opType = _EnableRegOpType::None;
  /// What `addRestoreMessage` read.
  unsigned long savedValue = 0;
  /// 0 or 1, for reads.
  unsigned long expectedReadValue = 0;
  /// Stands at `bitPosition`, for writes.
  unsigned long writeValue = 0;
  bool countOption = false;
  std::string name;
};

/// Reads registers from entries with keys of the form name:field; other keys are skipped. New
/// registers are made with the feature's name; the caller owns all of them. Returns 0; 1 at the
/// first field that is not known. `bases` are the base addresses by type: one that is not there is
/// the `std::out_of_range` of the look-up. What was read before stays in both cases.
int addEnableRegisterInfo(const std::vector<std::pair<std::string, std::string>>& config,
                          const std::unordered_map<unsigned int, unsigned long>& bases,
                          const std::string& feature,
                          std::unordered_map<std::string, EnableRegisterPMC*>& registers);

}  // namespace pwr
