#include "qumetra/access/message_firing.h"

#include <memory>

#include <gtest/gtest.h>

#include "client/src/common/input_msg.h"
#include "client/src/common/mmio_operation.h"
#include "qumetra/access/memory_backend.h"

namespace qumetra::test {
namespace {

class Firing : public ::testing::Test {
 protected:
  /// A message that writes `value` to an address.
  std::unique_ptr<pwr::InputMsg> message(unsigned long address, const std::string& value) {
    auto result = std::make_unique<pwr::InputMsg>("M");
    auto operation = std::make_unique<MMIOOperation>(address);
    operation->set("VALUE", value);
    result->addOperation(operation.release());
    return result;
  }

  MemoryBackend m_registers;
  BackendInUse m_inUse{m_registers};
};

TEST_F(Firing, WritesAllMessagesOfTheTriggerInOrder) {
  m_registers.setMmio(16, 0, 4);
  const auto first = message(16, "1");
  const auto second = message(16, "2");
  first->addWriteTrigger("FINI");
  second->addWriteTrigger("FINI");
  EXPECT_EQ(fireWriteTrigger({first.get(), second.get()}, "FINI"), 0U);
  EXPECT_EQ(m_registers.mmio(16, 4), 2U);
  EXPECT_EQ(m_registers.accesses()[0].target, "ANY");
}

TEST_F(Firing, OtherTriggersAndMessagesWithoutOneWriteNothing) {
  m_registers.setMmio(16, 0, 4);
  const auto other = message(16, "1");
  other->addWriteTrigger("A");
  const auto none = message(16, "1");
  none->writeTriggers->add("FINI");
  EXPECT_EQ(fireWriteTrigger({other.get(), none.get()}, "FINI"), 0U);
  EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(Firing, AFailureIsCountedAndStopsNothing) {
  m_registers.setMmio(16, 0, 4);
  const auto failing = message(32, "1");
  const auto working = message(16, "1");
  failing->addWriteTrigger("FINI");
  working->addWriteTrigger("FINI");
  EXPECT_EQ(fireWriteTrigger({failing.get(), working.get()}, "FINI"), 1U);
  EXPECT_EQ(m_registers.mmio(16, 4), 1U);
}

}  // namespace
}  // namespace qumetra::test
