#include "client/src/common/input_msg.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "client/src/common/aggr_telem_operation.h"
#include "client/src/common/pci_operation.h"
#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using qumetra::test::LogCapture;

constexpr std::uint32_t kRefused = 0xFFFFFFFF;

std::string otherRefused(const std::string& trigger) {
  return "1ERROR: Trying to add Trigger " + trigger +
         " to message M which already has an \"INIT\" or \"REQUIREMENTS\" Trigger; \"INIT\" and "
         "\"REQUIREMENTS\" messages cannot be mixed with other messages!\n";
}

std::string lifeRefused(const std::string& trigger) {
  return "1ERROR: Trying to add Trigger " + trigger +
         " to message M which already has other triggers; \"INIT\", \"FINI\" and \"REQUIREMENTS\" "
         "messages CANNOT be mixed with other messages!\n";
}

class Message : public ::testing::Test {
 protected:
  LogCapture m_log;
  InputMsg m_message{"M"};
};

TEST_F(Message, StartsUndecided) {
  EXPECT_EQ(m_message.name, "M");
  EXPECT_EQ(m_message.feature, "");
  EXPECT_EQ(m_message.platformName, "");
  EXPECT_EQ(m_message.target, "ANY");
  EXPECT_EQ(m_message.command, QMOpCommand::None);
  EXPECT_EQ(m_message.first, 0);
  EXPECT_EQ(m_message.second, 0);
  EXPECT_EQ(m_message.third, 0);
  EXPECT_EQ(m_message.hostNumber, 0);
  EXPECT_EQ(m_message.hostSecondNumber, 0);
  EXPECT_EQ(m_message.hostText, "");
  EXPECT_EQ(m_message.writeTriggers, &m_message.writeTrigger.first);
  EXPECT_TRUE(m_message.writeTriggers->empty());
  EXPECT_TRUE(m_message.operations.empty());
}

TEST_F(Message, FullNameWithoutAFeatureBeginsWithTheUnderscore) {
  EXPECT_EQ(m_message.fullName, "_M");
}

TEST_F(Message, InitKeepsWhatItGets) {
  m_message.init_i("N", "abc_def", 1, 2, 3, QMOpCommand::Read);
  EXPECT_EQ(m_message.name, "N");
  EXPECT_EQ(m_message.feature, "abc_def");
  EXPECT_EQ(m_message.fullName, "abc_def_N");
  EXPECT_EQ(m_message.first, 1);
  EXPECT_EQ(m_message.second, 2);
  EXPECT_EQ(m_message.third, 3);
  EXPECT_EQ(m_message.command, QMOpCommand::Read);
}

TEST_F(Message, PlatformIsTheFirstOfTwoParts) {
  m_message.init_i("N", "abc_def", 0, 0, 0, QMOpCommand::None);
  EXPECT_EQ(m_message.platformName, "abc");
}

TEST_F(Message, OneOrThreePartsNameNoPlatform) {
  for (const char* const feature : {"abc", "a_b_c", "", "_"}) {
    m_message.init_i("N", feature, 0, 0, 0, QMOpCommand::None);
    EXPECT_EQ(m_message.platformName, "") << feature;
  }
}

TEST_F(Message, PlatformStaysWhenTheFeatureNamesNone) {
  m_message.init_i("N", "abc_def", 0, 0, 0, QMOpCommand::None);
  m_message.init_i("N", "xyz", 0, 0, 0, QMOpCommand::None);
  EXPECT_EQ(m_message.platformName, "abc");
}

TEST_F(Message, WriteTriggerMakesItAWriteMessage) {
  EXPECT_EQ(m_message.addWriteTrigger("FINI"), 0U);
  EXPECT_EQ(m_message.command, QMOpCommand::Write);
  EXPECT_TRUE(m_message.writeTriggers->contains("FINI"));
}

TEST_F(Message, TheSameLifeTriggerAgainChangesNothing) {
  m_message.addWriteTrigger("FINI");
  EXPECT_EQ(m_message.addWriteTrigger("FINI"), 0U);
  EXPECT_EQ(m_message.writeTriggers->size(), 1U);
}

TEST_F(Message, ASecondLifeTriggerIsRefused) {
  m_message.addWriteTrigger("FINI");
  EXPECT_EQ(m_message.addWriteTrigger("INIT"), kRefused);
  EXPECT_EQ(m_log.streamedErrors(), lifeRefused("INIT"));
  EXPECT_EQ(m_message.writeTriggers->size(), 1U);
}

TEST_F(Message, LifeTriggersAndTheEmptyOneAreRefusedBesideOthers) {
  m_message.addWriteTrigger("OTHER");
  std::string expected;
  for (const char* const trigger : {"INIT", "REQUIREMENTS", "FINI", ""}) {
    EXPECT_EQ(m_message.addWriteTrigger(trigger), kRefused) << trigger;
    expected += lifeRefused(trigger);
  }
  EXPECT_EQ(m_log.streamedErrors(), expected);
}

TEST_F(Message, OthersAreRefusedBesideEachLifeTriggerWithATextThatNamesTwo) {
  for (const char* const life : {"INIT", "REQUIREMENTS", "FINI"}) {
    const LogCapture log(PluginEnvironment::kErrors);
    InputMsg message("M");
    message.addWriteTrigger(life);
    EXPECT_EQ(message.addWriteTrigger("OTHER"), kRefused) << life;
    EXPECT_EQ(log.streamedErrors(), otherRefused("OTHER"));
  }
}

TEST_F(Message, OthersStandBesideTheEmptyTrigger) {
  EXPECT_EQ(m_message.addWriteTrigger(""), 0U);
  EXPECT_EQ(m_message.addWriteTrigger("OTHER"), 0U);
  EXPECT_EQ(m_log.streamedErrors(), "");
}

TEST_F(Message, AnyNumberOfOthersIsRight) {
  EXPECT_EQ(m_message.addWriteTrigger("A"), 0U);
  EXPECT_EQ(m_message.addWriteTrigger("B"), 0U);
  EXPECT_EQ(m_message.writeTriggers->size(), 2U);
}

TEST_F(Message, AtQuietLevelTheReportGoesToThePlainStream) {
  const LogCapture log(PluginEnvironment::kQuiet);
  m_message.addWriteTrigger("FINI");
  m_message.addWriteTrigger("INIT");
  EXPECT_EQ(log.streamedErrors(), "");
  EXPECT_EQ("1ERROR: " + log.quiet(), lifeRefused("INIT"));
}

TEST_F(Message, AReadMessageTakesNoWriteTrigger) {
  m_message.init_i("M", "", 0, 0, 0, QMOpCommand::Read);
  EXPECT_EQ(m_message.addWriteTrigger("FINI"), kRefused);
  EXPECT_EQ(m_message.command, QMOpCommand::Read);
  EXPECT_TRUE(m_message.writeTriggers->empty());
  EXPECT_EQ(m_log.streamedErrors(), "");
}

TEST_F(Message, AnOperationThatCannotWriteRefusesTheTriggerSilently) {
  const pwr::AggrTelemCounterInfo place;
  m_message.addOperation(std::make_unique<AggrTelemOperation>("C", "F", place).release());
  EXPECT_EQ(m_message.addWriteTrigger("FINI"), kRefused);
  EXPECT_EQ(m_message.command, QMOpCommand::None);
  EXPECT_EQ(m_log.streamedErrors(), "");
}

TEST_F(Message, APciOperationMayComeBeforeAndBehindTheTrigger) {
  m_message.addOperation(std::make_unique<PCIOperation>().release());
  EXPECT_EQ(m_message.addWriteTrigger("FINI"), 0U);
  m_message.addOperation(std::make_unique<PCIOperation>().release());
  EXPECT_EQ(m_message.addWriteTrigger("FINI"), 0U);
  EXPECT_EQ(m_message.operations.size(), 2U);
}

TEST_F(Message, AddingAnOperationChecksNothing) {
  m_message.addWriteTrigger("FINI");
  const pwr::AggrTelemCounterInfo place;
  m_message.addOperation(std::make_unique<AggrTelemOperation>("C", "F", place).release());
  EXPECT_EQ(m_message.operations.size(), 1U);
}

TEST_F(Message, CompatibilityLooksAtTheSetItGets) {
  PWSet<std::string> triggers;
  EXPECT_TRUE(m_message.isTriggerCompatible_i("INIT", triggers));
  triggers.add("A");
  EXPECT_FALSE(m_message.isTriggerCompatible_i("INIT", triggers));
  EXPECT_TRUE(m_message.isTriggerCompatible_i("B", triggers));
}

}  // namespace
}  // namespace pwr
