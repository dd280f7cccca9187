#include "qumetra/access/memory_backend.h"

#include <gtest/gtest.h>

#include "client/src/common/aggr_telem_operation.h"
#include "client/src/common/mmio_operation.h"
#include "client/src/common/pci_operation.h"

namespace qumetra::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

PCIOperation pciAt(std::uint32_t device, std::uint32_t offset) {
  PCIOperation operation;
  operation.setBus(0);
  operation.setDevice(device);
  operation.setFunction(0);
  operation.setOffset(offset);
  return operation;
}

TEST(MemoryBackend, ReadsTheBytesThatWereSet) {
  MemoryBackend registers;
  registers.setPci({0, 1, 0, 4}, 0x04030201, 4);
  EXPECT_EQ(registers.read(pciAt(1, 4), "ANY"), (Bytes{1, 2, 3, 4}));
  EXPECT_EQ(registers.read(pciAt(2, 4), "ANY"), std::nullopt);
}

TEST(MemoryBackend, BytesThatWereNeverSetAreNotThere) {
  MemoryBackend registers;
  registers.setPci({0, 1, 0, 4}, 0, 3);
  EXPECT_EQ(registers.read(pciAt(1, 4), "ANY"), std::nullopt);
  PCIOperation write = pciAt(1, 4);
  write.set("VALUE", "1");
  EXPECT_FALSE(registers.write(write, "ANY"));
}

TEST(MemoryBackend, AddressSpacesDoNotMix) {
  MemoryBackend registers;
  registers.setMmio(8, 1, 8);
  registers.setSample(0, 1, 2);
  EXPECT_EQ(registers.read(pciAt(0, 8), "ANY"), std::nullopt);
  MMIOOperation mapped(8);
  EXPECT_EQ(registers.read(mapped, "ANY"), (Bytes{1, 0, 0, 0}));
  EXPECT_EQ(registers.read(AggrTelemOperation("C", "F", {0, 0, 1, ""}), "ANY"),
            (Bytes{2, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(MemoryBackend, WritesChangeTheBitsOfTheMask) {
  MemoryBackend registers;
  registers.setMmio(16, 0xFFFFFFFF, 4);
  MMIOOperation operation(16);
  operation.set("VALUE", "0");
  operation.set("VALUE-MASK", "0xFF");
  EXPECT_TRUE(registers.write(operation, "ANY"));
  EXPECT_EQ(registers.mmio(16, 4), 0xFFFFFF00U);
}

TEST(MemoryBackend, AccessesFailWhereTheScriptSays) {
  MemoryBackend registers;
  registers.setPci({0, 1, 0, 4}, 1, 4);
  registers.failAt(1);
  registers.failAt(3);
  EXPECT_FALSE(registers.read(pciAt(1, 4), "ANY"));
  EXPECT_TRUE(registers.read(pciAt(1, 4), "ANY"));
  PCIOperation write = pciAt(1, 4);
  write.set("VALUE", "7");
  EXPECT_FALSE(registers.write(write, "ANY"));
  EXPECT_EQ(registers.pci({0, 1, 0, 4}, 4), 1U);
  EXPECT_TRUE(registers.write(write, "ANY"));
}

TEST(MemoryBackend, EveryAccessIsNoted) {
  MemoryBackend registers;
  registers.setPci({0, 1, 0, 4}, 1, 4);
  registers.read(pciAt(1, 4), "place");
  registers.write(pciAt(1, 4), "ANY");
  ASSERT_EQ(registers.accesses().size(), 2U);
  EXPECT_EQ(registers.accesses()[0].kind, MemoryBackend::Access::Kind::Read);
  EXPECT_EQ(registers.accesses()[0].target, "place");
  EXPECT_EQ(registers.accesses()[0].values.at("DEVICE"), "1");
  EXPECT_TRUE(registers.accesses()[0].done);
  EXPECT_EQ(registers.accesses()[1].kind, MemoryBackend::Access::Kind::Write);
  EXPECT_FALSE(registers.accesses()[1].done);
}

/// An operation whose text is no place is refused rather than taken for register 0.
class BadPlace : public ::testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(BadPlace, IsRefused) {
  MemoryBackend registers;
  registers.setPci({0, 0, 0, 0}, 1, 8);
  PCIOperation operation = pciAt(0, 0);
  operation.set("VALUE", "1");
  ASSERT_TRUE(registers.read(operation, "ANY"));
  ASSERT_EQ(operation.set(GetParam().first, GetParam().second), 0);
  EXPECT_FALSE(registers.read(operation, "ANY"));
  EXPECT_FALSE(registers.write(operation, "ANY"));
}

INSTANTIATE_TEST_SUITE_P(Texts, BadPlace,
                         ::testing::Values(std::pair{"BUS", ""}, std::pair{"BUS", "x"},
                                           std::pair{"BUS", "0 "}, std::pair{"BUS", "0x"},
                                           std::pair{"BUS", "-0"}, std::pair{"BUS", "256"},
                                           std::pair{"DEVICE", "32"}, std::pair{"FUNCTION", "8"},
                                           std::pair{"OFFSET", "4096"},
                                           std::pair{"OFFSET", "18446744073709551616"},
                                           std::pair{"SIZE", "0"}, std::pair{"SIZE", "4097"}));

TEST(MemoryBackend, BadValuesAndMasksAreNotWritten) {
  MemoryBackend registers;
  registers.setPci({0, 1, 0, 4}, 1, 4);
  PCIOperation operation = pciAt(1, 4);
  operation.set("VALUE", "many");
  EXPECT_FALSE(registers.write(operation, "ANY"));
  operation.set("VALUE", "2");
  operation.set("VALUE-MASK", "");
  EXPECT_FALSE(registers.write(operation, "ANY"));
  EXPECT_EQ(registers.pci({0, 1, 0, 4}, 4), 1U);
}

TEST(MemoryBackend, AnAddressThroughADeviceIsRefused) {
  MemoryBackend registers;
  MMIOOperation operation;
  operation.set("BUS", "0");
  EXPECT_FALSE(registers.read(operation, "ANY"));
}

}  // namespace
}  // namespace qumetra::test
