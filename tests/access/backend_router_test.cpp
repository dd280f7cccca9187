#include "qumetra/access/backend_router.h"

#include <gtest/gtest.h>

#include "client/src/common/mmio_operation.h"
#include "client/src/common/pci_operation.h"
#include "client/src/common/register_access.h"
#include "qumetra/access/memory_backend.h"
#include "qumetra/access/pci_config_backend.h"
#include "qumetra/access/telemetry_backend.h"
#include "qumetra/model/model.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

TEST(BackendRouter, HandsOperationsToTheBackendForTheirName) {
  MemoryBackend pci;
  MemoryBackend mapped;
  pci.setPci({0, 1, 0, 0}, 11, 4);
  mapped.setMmio(16, 22, 4);
  BackendRouter router;
  router.add("PCI", pci);
  router.add("MMIO", mapped);
  const BackendInUse inUse(router);
  EXPECT_EQ(pwr::pciRead32(0, 1, 0, 0), 11U);
  EXPECT_EQ(pwr::mmioRead32(16), 22U);
  EXPECT_FALSE(pwr::mmioWrite32(16, 33, 0xFFFFFFFF));
  EXPECT_EQ(mapped.mmio(16, 4), 33U);
}

TEST(BackendRouter, HandsEntitiesOnByTheirNames) {
  Model model;
  const pwr::EntityHandle& entity = model.addEntity({.name = "Core 0"});
  MemoryBackend pci;
  BackendRouter router;
  router.add("PCI", pci);
  const BackendInUse inUse(router);
  PCIOperation operation;
  EXPECT_NE(operation.write(&entity), 0);
  ASSERT_EQ(pci.accesses().size(), 1U);
  EXPECT_EQ(pci.accesses()[0].target, "Core 0");
}

TEST(BackendRouter, OfALiveMachineFailsMemoryMappedAccesses) {
  const TempDir sysfs;
  PciConfigBackend pci(sysfs.path().string());
  TelemetryBackend telemetry(sysfs.path().string());
  BackendRouter router;
  router.add("PCI", pci);
  router.add("AGGR-TELEM", telemetry);
  const BackendInUse inUse(router);
  EXPECT_EQ(pwr::mmioRead32(0x1000), 0xFFFFFFFFU);
  EXPECT_EQ(pwr::mmioRead64(0x1000), 0xFFFFFFFFFFFFFFFFU);
  EXPECT_TRUE(pwr::mmioWrite32(0x1000, 1, 1));
  MMIOOperation operation(0x1000);
  unsigned int value = 5;
  EXPECT_EQ(operation.read(value), -1);
  EXPECT_EQ(value, 5U);
}

}  // namespace
}  // namespace qumetra::test
