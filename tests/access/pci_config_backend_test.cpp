#include "qumetra/access/pci_config_backend.h"

#include <string>

#include <gtest/gtest.h>

#include "client/src/common/pci_operation.h"
#include "client/src/common/register_access.h"
#include "qumetra/access/pci_devices.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

/// A tree with one device, 0000:80:14.2, whose 64 bytes hold their own offsets.
class PciTree : public ::testing::Test {
 protected:
  PciTree() {
    std::string bytes;
    for (char offset = 0; offset < 64; ++offset) {
      bytes += offset;
    }
    writeFile(config(), bytes);
  }
  std::string sysfs() const { return m_root.path().string(); }
  std::string config() const { return m_root.file("bus/pci/devices/0000:80:14.2/config"); }
  void addAttribute(const std::string& device, const std::string& name, const std::string& text) {
    writeFile(m_root.file("bus/pci/devices/" + device + "/" + name), text);
  }
  static PCIOperation writeOf(const std::string& value) {
    PCIOperation operation;
    operation.setBus(0x80);
    operation.setDevice(0x14);
    operation.setFunction(2);
    operation.setOffset(4);
    operation.set("VALUE", value);
    return operation;
  }

  TempDir m_root;
};

TEST_F(PciTree, RegistersAreReadFromTheDevicesFile) {
  PciConfigBackend backend(sysfs());
  const BackendInUse inUse(backend);
  EXPECT_EQ(pwr::pciRead32(0x80, 0x14, 2, 0x10), 0x13121110U);
  EXPECT_EQ(pwr::pciRead64(0x80, 0x14, 2, 0x10), 0x1716151413121110U);
}

TEST_F(PciTree, WhatIsBehindTheEndOfTheFileCannotBeRead) {
  PciConfigBackend backend(sysfs());
  const BackendInUse inUse(backend);
  EXPECT_EQ(pwr::pciRead32(0x80, 0x14, 2, 0x40), 0xFFFFFFFFU);
  EXPECT_EQ(pwr::pciRead64(0x80, 0x14, 2, 0x3C), 0xFFFFFFFFFFFFFFFFU);
}

TEST_F(PciTree, AMissingDeviceCannotBeRead) {
  PciConfigBackend backend(sysfs());
  const BackendInUse inUse(backend);
  EXPECT_EQ(pwr::pciRead32(0x80, 0x14, 3, 0), 0xFFFFFFFFU);
}

TEST_F(PciTree, WritesAreRefusedUnlessTheUserAllowsThem) {
  PciConfigBackend backend(sysfs());
  const std::string before = readFile(config());
  EXPECT_FALSE(backend.write(writeOf("1"), "ANY"));
  EXPECT_EQ(readFile(config()), before);
}

TEST_F(PciTree, AllowedWritesChangeTheBitsOfTheMaskOnly) {
  PciConfigBackend backend(sysfs(), PciConfigBackend::Writes::Allowed);
  PCIOperation operation = writeOf("0xFFFFFFFF");
  operation.set("VALUE-MASK", "0xFF00");
  std::string expected = readFile(config());
  expected[5] = '\xFF';
  EXPECT_TRUE(backend.write(operation, "ANY"));
  EXPECT_EQ(readFile(config()), expected);
}

TEST_F(PciTree, AllowedWritesDoNotGrowTheFile) {
  PciConfigBackend backend(sysfs(), PciConfigBackend::Writes::Allowed);
  PCIOperation operation = writeOf("1");
  operation.setOffset(64);
  EXPECT_FALSE(backend.write(operation, "ANY"));
  EXPECT_EQ(readFile(config()).size(), 64U);
}

TEST_F(PciTree, DevicesAreListedByLocation) {
  addAttribute("0000:00:02.0", "vendor", "0x1234\n");
  addAttribute("0000:00:02.0", "device", "0xabcd\n");
  addAttribute("0000:00:02.0", "class", "0x030000\n");
  const auto devices = listPciDevices(sysfs());
  ASSERT_EQ(devices.size(), 2U);
  EXPECT_EQ(devices[0].location, "0000:00:02.0");
  EXPECT_EQ(devices[0].vendor, 0x1234U);
  EXPECT_EQ(devices[0].device, 0xABCDU);
  EXPECT_EQ(devices[0].classCode, 0x030000U);
  EXPECT_TRUE(devices[0].isDisplay());
  EXPECT_EQ(devices[1].location, "0000:80:14.2");
  EXPECT_EQ(devices[1].vendor, 0U);
  EXPECT_FALSE(devices[1].isDisplay());
}

TEST(PciDevices, OfAMachineWithoutThemAreNone) {
  const TempDir empty;
  EXPECT_TRUE(listPciDevices(empty.path().string()).empty());
}

}  // namespace
}  // namespace qumetra::test
