#include "client/src/common/register_access.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "client/src/common/mmio_operation.h"
#include "client/src/common/pci_operation.h"
#include "qumetra/access/memory_backend.h"
#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using qumetra::BackendInUse;
using qumetra::MemoryBackend;
using qumetra::test::LogCapture;
using qumetra::test::RecordingSink;
using Texts = std::vector<std::string>;

/// Registers in memory: at PCI 1:2.3 the bytes 0x10 to 0x2F hold their own offsets.
class RegisterAccess : public ::testing::Test {
 protected:
  RegisterAccess() {
    for (std::uint32_t offset = 0x10; offset < 0x30; ++offset) {
      m_registers.setPci({1, 2, 3, offset}, offset, 1);
    }
  }
  /// One category of all accesses so far.
  Texts values(const std::string& category) const {
    Texts result;
    for (const MemoryBackend::Access& access : m_registers.accesses()) {
      result.push_back(access.values.at(category));
    }
    return result;
  }

  MemoryBackend m_registers;
  BackendInUse m_inUse{m_registers};
};

TEST(PciOperation, StartsWithFourBytesAndItsCategories) {
  PCIOperation operation;
  EXPECT_EQ(operation.m_name, "PCI");
  EXPECT_EQ(operation.getSize(), 4U);
  EXPECT_EQ(operation.m_categories.size(), 9U);
  for (const char* const category : {"SIZE", "ENTITY", "DESCRIPTOR", "BUS", "DEVICE", "FUNCTION",
                                     "OFFSET", "VALUE", "VALUE-MASK"}) {
    EXPECT_EQ(operation.set(category, "1"), 0) << category;
  }
}

TEST(PciOperation, PlaceIsDecimalText) {
  PCIOperation operation;
  operation.setBus(255);
  operation.setDevice(31);
  operation.setFunction(7);
  operation.setOffset(4294967295);
  EXPECT_EQ(operation.m_values,
            (std::map<std::string, std::string>{
                {"BUS", "255"}, {"DEVICE", "31"}, {"FUNCTION", "7"}, {"OFFSET", "4294967295"}}));
}

TEST(PciOperation, CanReadAndWriteAndIsCloned) {
  PCIOperation operation;
  operation.setBus(3);
  const std::unique_ptr<PCIOperation> copy(operation.clone());
  EXPECT_EQ(copy->m_values, operation.m_values);
  EXPECT_TRUE(copy->isValidCommand_i(QMOpCommand::Read));
  EXPECT_TRUE(copy->isValidCommand_i(QMOpCommand::Write));
  EXPECT_FALSE(copy->isValidCommand_i(QMOpCommand::None));
}

TEST(MmioOperation, StartsWithFourBytesAndItsCategories) {
  const MMIOOperation operation;
  EXPECT_EQ(operation.m_name, "MMIO");
  EXPECT_EQ(operation.getSize(), 4U);
  EXPECT_EQ(operation.m_categories.size(), 13U);
  EXPECT_EQ(operation.barCategories.size(), 6U);
  EXPECT_TRUE(operation.m_values.empty());
  for (const char* const category :
       {"SIZE", "ENTITY", "DESCRIPTOR", "ADDRESS", "VALUE", "GBE", "VALUE-MASK", "BUS", "DEVICE",
        "FUNCTION", "BAR-OFFSET", "ADDR-MASK", "ADDR-OFFSET"}) {
    EXPECT_EQ(MMIOOperation().set(category, "1"), 0) << category;
  }
}

TEST(MmioOperation, WithAnAddressRefusesPlacesAndTakesTheRest) {
  const LogCapture log;
  MMIOOperation operation(16);
  for (const char* const category :
       {"BUS", "DEVICE", "FUNCTION", "BAR-OFFSET", "ADDR-MASK", "ADDR-OFFSET"}) {
    EXPECT_FALSE(operation.canSetCategory(category)) << category;
    EXPECT_EQ(operation.set(category, "1"), -1) << category;
  }
  for (const char* const category : {"VALUE", "SIZE", "ADDRESS", "GBE"}) {
    EXPECT_TRUE(operation.canSetCategory(category)) << category;
    EXPECT_EQ(operation.set(category, "1"), 0) << category;
  }
  EXPECT_EQ(log.warnings().front(),
            (RecordingSink::Texts::value_type{2, "WARNING: Key BUS is invalid!\n"}));
}

TEST(MmioOperation, WithAPlaceRefusesTheAddress) {
  const LogCapture log;
  MMIOOperation operation;
  EXPECT_EQ(operation.set("BUS", "1"), 0);
  EXPECT_EQ(operation.set("ADDRESS", "1"), -1);
  EXPECT_EQ(operation.set("DEVICE", "1"), 0);
}

TEST(MmioOperation, CanReadAndWriteAndIsCloned) {
  const MMIOOperation operation(16);
  const std::unique_ptr<MMIOOperation> copy(operation.clone());
  EXPECT_EQ(copy->getAddress(), 16U);
  EXPECT_EQ(copy->barCategories.size(), 6U);
  EXPECT_TRUE(copy->isValidCommand_i(QMOpCommand::Read));
  EXPECT_TRUE(copy->isValidCommand_i(QMOpCommand::Write));
  EXPECT_FALSE(copy->isValidCommand_i(QMOpCommand::None));
}

TEST_F(RegisterAccess, MmioReadsFourAndEightBytes) {
  m_registers.setMmio(0x1000, 0x1122334455667788, 8);
  EXPECT_EQ(mmioRead32(0x1000), 0x55667788U);
  EXPECT_EQ(mmioRead64(0x1000), 0x1122334455667788UL);
}

TEST_F(RegisterAccess, FailedMmioReadsAreAllOnes) {
  EXPECT_EQ(mmioRead32(0x1000), 0xFFFFFFFFU);
  EXPECT_EQ(mmioRead64(0x1000), 0xFFFFFFFFFFFFFFFFUL);
}

TEST_F(RegisterAccess, MmioWritesReturnFalseOnSuccess) {
  m_registers.setMmio(0x1000, 0, 8);
  EXPECT_FALSE(mmioWrite32(0x1000, 0xA5A5A5A5, 0xFFFFFFFF));
  EXPECT_EQ(m_registers.mmio(0x1000, 8), 0xA5A5A5A5U);
  EXPECT_FALSE(mmioWrite64(0x1000, 0x1122334455667788, 0xFF000000000000FF));
  EXPECT_EQ(m_registers.mmio(0x1000, 8), 0x11000000A5A5A588U);
}

TEST_F(RegisterAccess, FailedMmioWritesReturnTrue) {
  EXPECT_TRUE(mmioWrite32(0x1000, 1, 1));
  EXPECT_TRUE(mmioWrite64(0x1000, 1, 1));
}

TEST_F(RegisterAccess, MmioWritesReachTheHostAsDecimalText) {
  mmioWrite32(256, 0xFFFFFFFF, 16);
  mmioWrite64(256, 0xFFFFFFFFFFFFFFFF, 16);
  EXPECT_EQ(values("SIZE"), (Texts{"4", "8"}));
  EXPECT_EQ(values("ADDRESS"), (Texts{"256", "256"}));
  EXPECT_EQ(values("VALUE-MASK"), (Texts{"16", "16"}));
  EXPECT_EQ(values("VALUE"), (Texts{"4294967295", "18446744073709551615"}));
  EXPECT_EQ(m_registers.accesses()[0].target, "ANY");
}

TEST_F(RegisterAccess, AlignedPciRead32IsOneRead) {
  EXPECT_EQ(pciRead32(1, 2, 3, 0x10), 0x13121110U);
  EXPECT_EQ(values("OFFSET"), Texts{"16"});
  EXPECT_EQ(values("SIZE"), Texts{"4"});
}

TEST_F(RegisterAccess, UnalignedPciRead32IsMadeOfTwoReads) {
  EXPECT_EQ(pciRead32(1, 2, 3, 0x11), 0x14131211U);
  EXPECT_EQ(values("OFFSET"), (Texts{"16", "20"}));
  EXPECT_EQ(pciRead32(1, 2, 3, 0x12), 0x15141312U);
  EXPECT_EQ(pciRead32(1, 2, 3, 0x13), 0x16151413U);
}

TEST_F(RegisterAccess, PciRead32WhoseSecondReadFailsIsAllOnes) {
  m_registers.failAt(2);
  EXPECT_EQ(pciRead32(1, 2, 3, 0x11), 0xFFFFFFFFU);
  EXPECT_TRUE(m_registers.accesses()[0].done);
}

TEST_F(RegisterAccess, PciRead32WhoseFirstReadFailsIsAllOnesAfterOneRead) {
  m_registers.failAt(1);
  EXPECT_EQ(pciRead32(1, 2, 3, 0x11), 0xFFFFFFFFU);
  EXPECT_EQ(m_registers.accesses().size(), 1U);
}

TEST_F(RegisterAccess, PciRead64AlignsToFourBytesOnly) {
  EXPECT_EQ(pciRead64(1, 2, 3, 0x14), 0x1B1A191817161514UL);
  EXPECT_EQ(values("OFFSET"), Texts{"20"});
  EXPECT_EQ(values("SIZE"), Texts{"8"});
}

TEST_F(RegisterAccess, UnalignedPciRead64IsMadeOfTwoReads) {
  EXPECT_EQ(pciRead64(1, 2, 3, 0x11), 0x1817161514131211UL);
  EXPECT_EQ(values("OFFSET"), (Texts{"16", "24"}));
  EXPECT_EQ(values("SIZE"), (Texts{"8", "8"}));
  EXPECT_EQ(pciRead64(1, 2, 3, 0x13), 0x1A19181716151413UL);
}

TEST_F(RegisterAccess, FailedPciRead64IsAllOnes) {
  EXPECT_EQ(pciRead64(1, 2, 3, 0x40), 0xFFFFFFFFFFFFFFFFUL);
  m_registers.failAt(3);
  EXPECT_EQ(pciRead64(1, 2, 3, 0x11), 0xFFFFFFFFFFFFFFFFUL);
}

TEST_F(RegisterAccess, TheHighestOffsetWrapsWithoutHarm) {
  EXPECT_EQ(pciRead32(1, 2, 3, 0xFFFFFFFF), 0xFFFFFFFFU);
}

}  // namespace
}  // namespace pwr
