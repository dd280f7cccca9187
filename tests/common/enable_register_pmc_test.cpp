#include "client/src/common/enable_register_pmc.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>

#include <gtest/gtest.h>

#include "client/src/common/hw_operation.h"
#include "qumetra/access/message_firing.h"
#include "tests/common/restore_world.h"

namespace pwr {
namespace {

using qumetra::fireWriteTrigger;

using Config = std::vector<std::pair<std::string, std::string>>;
using Bases = std::unordered_map<unsigned int, unsigned long>;

/// Reads configuration into registers, which it owns.
class RegisterConfiguration : public ::testing::Test {
 protected:
  ~RegisterConfiguration() override {
    for (const auto& [name, entry] : m_registers) {
      std::default_delete<EnableRegisterPMC>()(entry);
    }
  }
  int add(const Config& config, const Bases& bases = {{0, 0x1000}, {1, 0x2000}}) {
    return addEnableRegisterInfo(config, bases, "FEATURE", m_registers);
  }
  const EnableRegisterPMC& at(const std::string& name) const { return *m_registers.at(name); }

  std::unordered_map<std::string, EnableRegisterPMC*> m_registers;
};

TEST(PmcRegister, StartsWithNothingToDo) {
  const EnableRegisterPMC made("N");
  EXPECT_EQ(made.name, "N");
  EXPECT_EQ(made.baseAddress, 0U);
  EXPECT_EQ(static_cast<unsigned int>(made.baseType), 2U);
  EXPECT_EQ(made.offset, 0U);
  EXPECT_EQ(made.size, 0U);
  EXPECT_EQ(made.bitPosition, 0U);
  EXPECT_EQ(static_cast<unsigned int>(made.opType), 2U);
  EXPECT_EQ(made.savedValue, 0U);
  EXPECT_EQ(made.expectedReadValue, 0U);
  EXPECT_EQ(made.writeValue, 0U);
  EXPECT_FALSE(made.countOption);
}

TEST(PmcTables, HoldTheWordsOfTheConfiguration) {
  ASSERT_EQ(s_stringToOpType.size(), 2U);
  EXPECT_EQ(static_cast<int>(s_stringToOpType.at("READ")), 0);
  EXPECT_EQ(static_cast<int>(s_stringToOpType.at("WRITE")), 1);
  ASSERT_EQ(s_stringToBaseAddressType.size(), 2U);
  EXPECT_EQ(static_cast<int>(s_stringToBaseAddressType.at("SSRAMBASE")), 0);
  EXPECT_EQ(static_cast<int>(s_stringToBaseAddressType.at("PWRMBASE")), 1);
}

TEST_F(RegisterConfiguration, AllFieldsAreTaken) {
  EXPECT_EQ(add({{"R:BASE-ADDRESS", "PWRMBASE"},
                 {"R:OFFSET", "0x123456789"},
                 {"R:SIZE", "4"},
                 {"R:BIT-POSITION", "7"},
                 {"R:OP-TYPE", "WRITE"},
                 {"R:EXPECTED-READ-VALUE", "1"},
                 {"R:WRITE-VALUE", "0x1FFFFFFFF"},
                 {"R:COUNT-OPTION", "TRUE"}}),
            0);
  EXPECT_EQ(at("R").baseAddress, 0x2000U);
  EXPECT_EQ(at("R").baseType, _BaseAddressType::Pwrm);
  EXPECT_EQ(at("R").offset, 0x123456789U);
  EXPECT_EQ(at("R").size, 4U);
  EXPECT_EQ(at("R").bitPosition, 7U);
  EXPECT_EQ(at("R").opType, _EnableRegOpType::Write);
  EXPECT_EQ(at("R").expectedReadValue, 1U);
  EXPECT_EQ(at("R").writeValue, 0x1FFFFFFFFU);
  EXPECT_TRUE(at("R").countOption);
}

TEST_F(RegisterConfiguration, RegistersAreNamedAfterTheFeature) {
  EXPECT_EQ(add({{"R:SIZE", "4"}, {"S:SIZE", "8"}}), 0);
  EXPECT_EQ(m_registers.size(), 2U);
  EXPECT_EQ(at("R").name, "FEATURE");
  EXPECT_EQ(at("S").size, 8U);
}

TEST_F(RegisterConfiguration, KeysWithoutTwoPartsAreSkippedSilently) {
  EXPECT_EQ(add({{"R", "4"}, {"R:SIZE:X", "4"}, {"", "4"}, {":", "4"}}), 0);
  EXPECT_TRUE(m_registers.empty());
}

TEST_F(RegisterConfiguration, WordsAreFoundInsideFields) {
  EXPECT_EQ(add({{"R:MY-BAR-OFFSET", "16"}}), 0);
  EXPECT_EQ(at("R").offset, 16U);
}

TEST_F(RegisterConfiguration, TheFirstWordInTheirOrderCounts) {
  EXPECT_EQ(add({{"R:SIZE-OFFSET", "16"}}), 0);
  EXPECT_EQ(at("R").offset, 16U);
  EXPECT_EQ(at("R").size, 0U);
}

TEST_F(RegisterConfiguration, AnUnknownFieldEndsTheCallAndTheEntriesSoFarStay) {
  EXPECT_EQ(add({{"R:SIZE", "4"}, {"S:WIDTH", "4"}, {"R:SIZE", "8"}}), 1);
  EXPECT_EQ(at("R").size, 4U);
  EXPECT_TRUE(m_registers.contains("S"));
}

TEST_F(RegisterConfiguration, CountOptionIsSetByTheExactWordOnly) {
  EXPECT_EQ(add({{"R:COUNT-OPTION", "TRUE"}, {"R:COUNT-OPTION", "true"}}), 0);
  EXPECT_FALSE(at("R").countOption);
}

TEST_F(RegisterConfiguration, AnUnknownOpTypeIsAReadAndStaysInTheTable) {
  EXPECT_EQ(add({{"R:OP-TYPE", "DANCE"}}), 0);
  EXPECT_EQ(at("R").opType, _EnableRegOpType::Read);
  EXPECT_TRUE(s_stringToOpType.contains("DANCE"));
}

TEST_F(RegisterConfiguration, AnUnknownBaseIsTheFirstAndStaysInTheTable) {
  EXPECT_EQ(add({{"R:BASE-ADDRESS", "NOBASE"}}), 0);
  EXPECT_EQ(at("R").baseAddress, 0x1000U);
  EXPECT_EQ(at("R").baseType, _BaseAddressType::Ssram);
  EXPECT_TRUE(s_stringToBaseAddressType.contains("NOBASE"));
}

TEST_F(RegisterConfiguration, ABaseThatIsNotThereIsAnOutOfRangeException) {
  try {
    add({{"R:SIZE", "4"}, {"R:BASE-ADDRESS", "PWRMBASE"}}, {{0, 0x1000}});
    FAIL() << "nothing was thrown";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "unordered_map::at");
  }
  EXPECT_EQ(at("R").size, 4U);
  EXPECT_EQ(at("R").baseType, _BaseAddressType::None);
}

/// A register at 0x1010.
class PmcAccess : public qumetra::test::RestoreWorld {
 protected:
  PmcAccess() {
    m_register.baseAddress = 0x1000;
    m_register.offset = 0x10;
    m_register.size = 4;
  }
  int addRestore() { return m_register.addRestoreMessage(3, 4, "FEATURE", m_messages); }

  EnableRegisterPMC m_register{"FEATURE"};
};

TEST_F(PmcAccess, ReadComparesTheBit) {
  m_registers.setMmio(0x1010, 0x80, 4);
  m_register.bitPosition = 7;
  EXPECT_EQ(m_register.readRegister(), 1);
  m_register.expectedReadValue = 1;
  EXPECT_EQ(m_register.readRegister(), 0);
}

TEST_F(PmcAccess, ReadTakesFourBytesWhateverTheSize) {
  m_registers.setMmio(0x1010, 0, 4);
  m_register.size = 8;
  EXPECT_EQ(m_register.readRegister(), 0);
  EXPECT_FALSE(m_registers.accesses()[0].values.contains("SIZE"));
}

TEST_F(PmcAccess, BitsCountModuloSixtyFour) {
  m_registers.setMmio(0x1010, 2, 4);
  m_register.bitPosition = 65;
  m_register.expectedReadValue = 1;
  EXPECT_EQ(m_register.readRegister(), 0);
  m_register.writeValue = 3;
  m_register.bitPosition = 66;
  EXPECT_EQ(m_register.writeRegister(), 0);
  EXPECT_EQ(m_registers.mmio(0x1010, 4), 12U);
}

TEST_F(PmcAccess, AFailedReadIsOne) { EXPECT_EQ(m_register.readRegister(), 1); }

TEST_F(PmcAccess, WriteReplacesTheWholeRegisterOfFourBytes) {
  m_registers.setMmio(0x1010, 0xFFFFFFFFFFFFFFFF, 8);
  m_register.size = 8;
  m_register.writeValue = 1;
  m_register.bitPosition = 4;
  EXPECT_EQ(m_register.writeRegister(), 0);
  EXPECT_EQ(m_registers.mmio(0x1010, 8), 0xFFFFFFFF00000010U);
  EXPECT_FALSE(m_registers.accesses()[0].values.contains("VALUE-MASK"));
  EXPECT_EQ(m_registers.accesses()[0].target, "ANY");
}

TEST_F(PmcAccess, AFailedWriteIsNotZero) { EXPECT_NE(m_register.writeRegister(), 0); }

TEST_F(PmcAccess, HandlingDoesWhatTheTypeSays) {
  m_registers.setMmio(0x1010, 0, 4);
  EXPECT_EQ(m_register.handleRegister(), 1);
  EXPECT_TRUE(m_registers.accesses().empty());
  m_register.opType = _EnableRegOpType::Read;
  EXPECT_EQ(m_register.handleRegister(), 0);
  m_register.opType = _EnableRegOpType::Write;
  m_register.writeValue = 1;
  EXPECT_EQ(m_register.handleRegister(), 0);
  EXPECT_EQ(m_registers.mmio(0x1010, 4), 1U);
}

TEST_F(PmcAccess, RestoreMessageHasItsNameNumbersAndTrigger) {
  m_registers.setMmio(0x1010, 0xABCD, 4);
  m_register.opType = _EnableRegOpType::Write;
  EXPECT_EQ(addRestore(), 0);
  EXPECT_EQ(m_register.savedValue, 0xABCDU);
  ASSERT_EQ(m_messages.size(), 1U);
  const InputMsg& message = *m_messages[0];
  EXPECT_EQ(message.name, "PMC Residency: FEATURE");
  EXPECT_EQ(message.first, 3);
  EXPECT_EQ(message.second, 4);
  EXPECT_EQ(message.target, "ANY");
  EXPECT_TRUE(message.writeTriggers->contains("FINI"));
  ASSERT_EQ(message.operations.size(), 1U);
  const auto& values = dynamic_cast<const HWOperation&>(*message.operations[0]).m_values;
  EXPECT_EQ(values, (std::map<std::string, std::string>{
                        {"ADDRESS", "4112"}, {"SIZE", "4"}, {"VALUE", "43981"}}));
}

TEST_F(PmcAccess, FiniPutsTheOldValueBack) {
  m_registers.setMmio(0x1010, 0xABCD, 4);
  m_register.opType = _EnableRegOpType::Write;
  m_register.writeValue = 1;
  ASSERT_EQ(addRestore(), 0);
  ASSERT_EQ(m_register.handleRegister(), 0);
  EXPECT_EQ(m_registers.mmio(0x1010, 4), 1U);
  EXPECT_EQ(fireWriteTrigger(m_messages, "FINI"), 0U);
  EXPECT_EQ(m_registers.mmio(0x1010, 4), 0xABCDU);
}

TEST_F(PmcAccess, RegistersThatAreNotWrittenNeedNoRestore) {
  m_register.opType = _EnableRegOpType::Read;
  EXPECT_EQ(addRestore(), 0);
  m_register.opType = _EnableRegOpType::None;
  EXPECT_EQ(addRestore(), 0);
  EXPECT_TRUE(m_messages.empty());
  EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(PmcAccess, AFailedReadMakesNoMessage) {
  m_register.opType = _EnableRegOpType::Write;
  EXPECT_EQ(addRestore(), 1);
  EXPECT_TRUE(m_messages.empty());
}

}  // namespace
}  // namespace pwr
