#include "client/src/common/pch_utils.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qumetra/access/message_firing.h"
#include "tests/common/restore_world.h"

namespace pwr {
namespace {

using qumetra::fireWriteTrigger;
using qumetra::test::RecordingSink;
using Config = std::vector<KeyValuePair>;

/// The register of PCI 0:31.2 at offset 0xA0, whose bits 0x30 make SSRAM readable.
class EnableSsram : public qumetra::test::RestoreWorld {
 protected:
  static Config fiveEntries() {
    return {{"SSRAM-BUS", "0"},
            {"SSRAM-DEVICE", "0x1F"},
            {"SSRAM-FUNCTION", "2"},
            {"SSRAM-OFFSET", "0xA0"},
            {"SSRAM-VALUE-MASK", "0x30"}};
  }
  void setRegister(std::uint32_t value) { m_registers.setPci({0, 31, 2, 0xA0}, value, 4); }
  std::uint64_t registerValue() const { return m_registers.pci({0, 31, 2, 0xA0}, 4).value_or(0); }
  bool enable(const Config& config, const std::string& location = "") {
    return enableSSRAMRead(m_messages, config, 7, 9, location);
  }
  void expectFailure(const Config& config, const std::string& location, const std::string& text) {
    EXPECT_FALSE(enable(config, location));
    EXPECT_TRUE(m_messages.empty());
    EXPECT_EQ(
        m_log.warnings(),
        (RecordingSink::Texts{
            {2,
             "WARNING: bool pwr::enableSSRAMRead(std::vector<pwr::InputMsg *> &, const "
             "std::vector<pwr::KeyValuePair> &, const int, const int, const std::string &): " +
                 text + "\n"}}));
  }
};

TEST_F(EnableSsram, SetsTheBitsOfTheMaskAndLeavesARestoreMessage) {
  setRegister(0x80000001);
  EXPECT_TRUE(enable(fiveEntries()));
  EXPECT_EQ(registerValue(), 0x80000031U);
  ASSERT_EQ(m_messages.size(), 1U);
  const InputMsg& message = *m_messages[0];
  EXPECT_EQ(message.name, "SSRAMReadRegRestore");
  EXPECT_EQ(message.first, 7);
  EXPECT_EQ(message.second, 9);
  EXPECT_EQ(message.target, "ANY");
  EXPECT_EQ(message.command, QMOpCommand::Write);
  EXPECT_TRUE(message.writeTriggers->contains("FINI"));
  ASSERT_EQ(message.operations.size(), 1U);
  EXPECT_TRUE(m_log.warnings().empty());
}

TEST_F(EnableSsram, FiniPutsTheOldValueBack) {
  setRegister(0x80000001);
  ASSERT_TRUE(enable(fiveEntries()));
  EXPECT_EQ(fireWriteTrigger(m_messages, "INIT"), 0U);
  EXPECT_EQ(registerValue(), 0x80000031U);
  EXPECT_EQ(fireWriteTrigger(m_messages, "FINI"), 0U);
  EXPECT_EQ(registerValue(), 0x80000001U);
}

TEST_F(EnableSsram, BitsThatAreSetAlreadyLeaveMessagesUnchanged) {
  setRegister(0xF0);
  EXPECT_TRUE(enable(fiveEntries()));
  EXPECT_EQ(registerValue(), 0xF0U);
  EXPECT_TRUE(m_messages.empty());
  EXPECT_EQ(m_registers.accesses().size(), 1U);
}

TEST_F(EnableSsram, LocationStandsForBusDeviceAndFunction) {
  setRegister(0);
  EXPECT_TRUE(enable({{"OFFSET", "160"}, {"MASK", "48"}}, "0x0/0x1f/0x2/0x10"));
  EXPECT_EQ(registerValue(), 0x30U);
}

TEST_F(EnableSsram, ConfigurationOverridesTheLocation) {
  m_registers.setPci({5, 31, 2, 0}, 0, 4);
  EXPECT_TRUE(enable({{"BUS", "5"}, {"MASK", "1"}}, "0/31/2/0x10"));
  EXPECT_EQ(m_registers.pci({5, 31, 2, 0}, 4), 1U);
}

TEST_F(EnableSsram, OffsetIsFoundInsideAKeyToo) {
  setRegister(0);
  EXPECT_TRUE(enable({{"BAR-OFFSET", "0xA0"}, {"MASK", "1"}}, "0/31/2/0"));
  EXPECT_EQ(registerValue(), 1U);
}

TEST_F(EnableSsram, TheFirstRuleWhoseWordOccursIsTaken) {
  setRegister(0);
  EXPECT_TRUE(enable({{"OFFSET", "0xA0"}, {"BUS-MASK", "2"}}, "0/31/2/0"));
  EXPECT_EQ(registerValue(), 2U);
}

TEST_F(EnableSsram, LocationOfThreePartsFailsThoughTheConfigurationIsRight) {
  expectFailure({{"OFFSET", "160"}, {"MASK", "48"}}, "0/31/2", "Could not enable SSRAM.");
}

TEST_F(EnableSsram, AnotherNumberOfEntriesFails) {
  expectFailure({{"MASK", "1"}}, "", "Unexpected number of SSRAM enable entries in config.");
}

TEST_F(EnableSsram, WithALocationFiveEntriesAreTooMany) {
  expectFailure(fiveEntries(), "0/31/2/0", "Unexpected number of SSRAM enable entries in config.");
}

TEST_F(EnableSsram, AnUnknownEntryFails) {
  expectFailure({{"MASK", "1"}, {"WIDTH", "4"}}, "0/31/2/0",
                "Unexpected SSRAM enable entry in config.");
}

TEST_F(EnableSsram, AFailedReadFails) {
  expectFailure(fiveEntries(), "", "Could not read SSRAM enable register.");
}

TEST_F(EnableSsram, AFailedWriteFails) {
  setRegister(0);
  m_registers.failAt(2);
  expectFailure(fiveEntries(), "", "SSRAM reads could not be enabled.");
  EXPECT_EQ(registerValue(), 0U);
}

TEST_F(EnableSsram, WarningsNeedTheLevel) {
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  m_log.environment().enabledTags.add("text-writer-plugin");
  EXPECT_FALSE(enable({}));
  EXPECT_TRUE(m_log.warnings().empty());
}

class DiscoverBar : public qumetra::test::RestoreWorld {
 protected:
  std::string discover(const std::vector<std::string>& candidates) {
    return discoverSSRAMBar(&m_bar, candidates);
  }
  unsigned long m_bar = 5;
};

TEST_F(DiscoverBar, WithoutCandidatesThereIsNone) {
  EXPECT_EQ(discover({}), "");
  EXPECT_EQ(m_bar, 5U);
}

TEST_F(DiscoverBar, ZeroAllOnesAndFailuresArePassedOver) {
  m_registers.setPci({0, 1, 0, 0x10}, 0, 8);
  m_registers.setPci({0, 2, 0, 0x10}, ~std::uint64_t{0}, 8);
  m_registers.setPci({0x80, 0x14, 2, 0x10}, 0xFE000004, 8);
  EXPECT_EQ(discover({"0/1/0/16", "0/2/0/16", "0/3/0/16", "0x80/0x14/0x2/0x10", "0/4/0/16"}),
            "0x80/0x14/0x2/0x10");
  EXPECT_EQ(m_bar, 0xFE000004U);
  EXPECT_EQ(m_registers.accesses().size(), 4U);
}

TEST_F(DiscoverBar, ReadsEightBytes) {
  m_registers.setPci({0, 1, 0, 0x10}, 0x1122334455667788, 8);
  EXPECT_EQ(discover({"0/1/0/0x10"}), "0/1/0/0x10");
  EXPECT_EQ(m_bar, 0x1122334455667788U);
}

TEST_F(DiscoverBar, CandidatesWithoutFourPartsAreSkipped) {
  m_registers.setPci({0, 1, 0, 0}, 1, 8);
  EXPECT_EQ(discover({"", "0/1/0", "0/1/0/0/0"}), "");
  EXPECT_TRUE(m_registers.accesses().empty());
  EXPECT_EQ(m_bar, 5U);
}

TEST_F(DiscoverBar, NoAnswerLeavesTheAddressAlone) {
  EXPECT_EQ(discover({"0/1/0/16"}), "");
  EXPECT_EQ(m_bar, 5U);
}

TEST(HubLocation, OfNoHubIsNone) { EXPECT_TRUE(getMZLWSPCHBDF(nullptr).empty()); }

TEST(HubLocation, HasTheBusInHexadecimalAndAFixedTail) {
  PCHMetadata hub;
  hub.m_values["MZL-WS-PCH-BUS"] = "128";
  EXPECT_EQ(getMZLWSPCHBDF(&hub), std::vector<std::string>{"0x80/0x14/0x2/0x10"});
  hub.m_values["MZL-WS-PCH-BUS"] = "0xAB";
  EXPECT_EQ(getMZLWSPCHBDF(&hub), std::vector<std::string>{"0xab/0x14/0x2/0x10"});
}

TEST(HubLocation, OfAnUnknownBusIsTriedLikeAnyOther) {
  PCHMetadata hub;
  EXPECT_EQ(getMZLWSPCHBDF(&hub), std::vector<std::string>{"0xffff/0x14/0x2/0x10"});
}

TEST(HubBus, IsTheLowSixteenBitsOfTheValue) {
  PCHMetadata hub;
  hub.m_values["MZL-WS-PCH-BUS"] = "0x12345";
  EXPECT_EQ(hub.getMZLWSPCHBus(), 0x2345);
}

TEST(HubBus, IsAllOnesWithoutAValue) {
  PCHMetadata hub;
  EXPECT_EQ(hub.getMZLWSPCHBus(), 0xFFFF);
  hub.m_values["MZL-WS-PCH-BUS"] = "";
  EXPECT_EQ(hub.getMZLWSPCHBus(), 0xFFFF);
}

}  // namespace
}  // namespace pwr
