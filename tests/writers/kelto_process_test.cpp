// Process and thread records. Bytes are worked out by hand.
#include "tests/writers/kelto_fixture.h"

namespace {

using qumetra::test::hex;
using qumetra::test::KeltoTest;
using qumetra::test::number;
using ::testing::ElementsAre;

class KeltoProcesses : public KeltoTest {
 protected:
  KeltoProcesses() {
    deliverSystem();
    m_headerSize = systemStream().size();
  }
  std::string added() { return systemStream().substr(m_headerSize); }

  /// What the end of the run adds.
  std::string atTheEnd() {
    const std::size_t before = systemStream().size();
    EXPECT_EQ(m_writer.flushStoredStates(), 0);
    return systemStream().substr(before);
  }
  int mention(const pwr::Process& process) { return m_writer.handleProcessInfo(&process, true); }
  int mention(const pwr::Thread& thread) { return m_writer.handleThreadInfo(&thread, true); }

  std::size_t m_headerSize = 0;
};

TEST_F(KeltoProcesses, ProcessRecord) {
  EXPECT_EQ(mention(process(0x11223344, "sh", 0x0102030405060708)), 0);
  EXPECT_EQ(hex(added()),
            "1d 00 40 02 "
            "00 10 00 00 00 00 00 00 "  // event, 0
            "44 33 22 11 00 00 00 00 "  // pid, 0
            "08 07 06 05 04 03 02 01 "  // start
            "07 00 00 00 "              // size 7, type 0
            "73 68 00 ");
}

TEST_F(KeltoProcesses, ThreadRecord) {
  EXPECT_EQ(mention(thread(0x55667788, 0x11223344, 0x0102030405060708)), 0);
  EXPECT_EQ(hex(added()),
            "1d 00 00 02 "
            "00 10 00 00 00 00 00 00 "
            "44 33 22 11 88 77 66 55 "
            "08 07 06 05 04 03 02 01 ");
}

TEST_F(KeltoProcesses, EndOfAProcessHasTheEventOfAStart) {
  mention(process(1, "sh", 2000, 3000));
  const std::string end = atTheEnd();
  EXPECT_EQ(number(end, 4, 4), 0x1000U);
  EXPECT_EQ(number(end, 20, 8), 3000U);
}

TEST_F(KeltoProcesses, EndOfAThreadHasAnEventOfItsOwn) {
  mention(thread(2, 1, 2000, 3000));
  const std::string end = atTheEnd();
  EXPECT_EQ(number(end, 4, 4), 0x2000U);
  EXPECT_EQ(number(end, 20, 8), 3000U);
}

TEST_F(KeltoProcesses, ProcessIsAnnouncedOnce) {
  pwr::Process& shell = process(1, "sh", 2000);
  mention(shell);
  const std::string once = added();
  EXPECT_EQ(mention(shell), 0);
  EXPECT_EQ(added(), once);
}

TEST_F(KeltoProcesses, ThreadIsAnnouncedOnce) {
  pwr::Thread& worker = thread(2, 1, 2000);
  mention(worker);
  const std::string once = added();
  EXPECT_EQ(mention(worker), 0);
  EXPECT_EQ(added(), once);
}

TEST_F(KeltoProcesses, PidUsedAgainIsAnotherProcess) {
  mention(process(1, "sh", 2000, 2500));
  mention(process(1, "sh", 3000, 3500));
  EXPECT_EQ(added().size(), 2U * 35);
  const std::string end = atTheEnd();
  EXPECT_EQ(number(end, 20, 8), 2500U);
  EXPECT_EQ(number(end, 35 + 20, 8), 3500U);
}

TEST_F(KeltoProcesses, ProcessWithoutAnEndEndsWithTheCollection) {
  mention(process(1, "sh", 2000));
  EXPECT_EQ(number(atTheEnd(), 20, 8), kStop);
}

TEST_F(KeltoProcesses, EndThatComesAfterTheMentionCounts) {
  pwr::Process& shell = process(1, "sh", 2000);
  mention(shell);
  shell.setEndTime(4000);
  EXPECT_EQ(number(atTheEnd(), 20, 8), 4000U);
}

TEST_F(KeltoProcesses, EndsComeInTheOrderOfTheirKeysAsTexts) {
  mention(process(9, "sh", 2000));
  mention(process(10, "sh", 2000));
  const std::string end = atTheEnd();
  EXPECT_EQ(number(end, 12, 4), 10U);
  EXPECT_EQ(number(end, 35 + 12, 4), 9U);
}

TEST_F(KeltoProcesses, ProcessesEndBeforeThreads) {
  mention(thread(2, 1, 2000));
  mention(process(1, "sh", 2000));
  const std::string end = atTheEnd();
  EXPECT_EQ(number(end, 0, 4), 0x0240001DU);
  EXPECT_EQ(number(end, 35, 4), 0x0200001DU);
}

TEST_F(KeltoProcesses, ThreadWithoutAnEndTakesThatOfItsProcess) {
  mention(process(1, "sh", 2000, 5000));
  mention(thread(2, 1, 3000));
  EXPECT_EQ(number(atTheEnd(), 35 + 20, 8), 5000U);
}

TEST_F(KeltoProcesses, ThreadOfAProcessWithoutAnEndEndsWithTheCollection) {
  mention(process(1, "sh", 2000));
  mention(thread(2, 1, 3000));
  EXPECT_EQ(number(atTheEnd(), 35 + 20, 8), kStop);
}

TEST_F(KeltoProcesses, ThreadOfAnUnknownProcessEndsWithTheCollection) {
  mention(process(1, "sh", 2000, 5000));
  mention(thread(2, 7, 3000));
  EXPECT_EQ(number(atTheEnd(), 35 + 20, 8), kStop);
}

TEST_F(KeltoProcesses, ThreadFromBeforeItsProcessDoesNotTakeItsEnd) {
  mention(process(1, "sh", 2000, 5000));
  mention(thread(2, 1, 1500));
  EXPECT_EQ(number(atTheEnd(), 35 + 20, 8), kStop);
}

TEST_F(KeltoProcesses, ThreadFromAfterItsProcessDoesNotTakeItsEnd) {
  mention(process(1, "sh", 2000, 5000));
  mention(thread(2, 1, 5000));
  EXPECT_EQ(number(atTheEnd(), 35 + 20, 8), kStop);
}

TEST_F(KeltoProcesses, ThreadThatStartedWithItsProcessDoesNotTakeItsEnd) {
  mention(process(1, "sh", 2000, 5000));
  mention(thread(2, 1, 2000));
  EXPECT_EQ(number(atTheEnd(), 35 + 20, 8), kStop);
}

TEST_F(KeltoProcesses, ThreadOfAPidUsedAgainTakesTheEndOfTheFirstProcessByKey) {
  mention(process(1, "b", 1500, 5000));
  mention(process(1, "a", 2500, 6000));
  mention(process(2, "0", 1500, 7000));
  mention(thread(3, 1, 3000));
  mention(thread(4, 1, 2000));
  const std::string end = atTheEnd();
  constexpr std::size_t kProcessEnds = 3 * 34;
  EXPECT_EQ(number(end, kProcessEnds + 20, 8), 6000U);
  EXPECT_EQ(number(end, kProcessEnds + 28 + 20, 8), 5000U);
}

TEST_F(KeltoProcesses, CollectionEndsWhenTheSystemMessageSaidSo) {
  m_metadata.m_lastTimestamp = kStop + 1;
  mention(process(1, "sh", 2000));
  EXPECT_EQ(number(atTheEnd(), 20, 8), kStop);
}

TEST_F(KeltoProcesses, PathOf29CharactersFits) {
  EXPECT_EQ(mention(process(1, std::string(29, 'p'), 2000)), 0);
  EXPECT_EQ(added().size(), 62U);
  EXPECT_EQ(number(added(), 28, 2), 34U);
}

TEST_F(KeltoProcesses, ZeroByteEndsAPath) {
  mention(process(1, std::string("ab\0cd", 5), 2000));
  EXPECT_EQ(hex(added().substr(28)), "07 00 00 00 61 62 00 ");
}

using KeltoProcessesDeathTest = KeltoProcesses;

TEST_F(KeltoProcessesDeathTest, PathOf30CharactersStopsTheProcess) {
  EXPECT_DEATH(mention(process(1, std::string(30, 'p'), 2000)),
               "^writers/keltowriter_plugin/processes: assertion failed: the path fits into its "
               "field of the process record\n$");
}

TEST_F(KeltoProcesses, RefusedProcessRecordLeavesTheProcessUnknown) {
  refuse(kSystem);
  EXPECT_EQ(mention(process(1, "sh", 2000)), 1);
  EXPECT_THAT(warnings(), ElementsAre("Unable to write process record.\n"));
  EXPECT_TRUE(m_processes.empty());
}

TEST_F(KeltoProcesses, RefusedThreadRecordHasTheTextOfAProcess) {
  refuse(kSystem);
  EXPECT_EQ(mention(thread(2, 1, 2000)), 1);
  EXPECT_THAT(warnings(), ElementsAre("Unable to write process record.\n"));
  EXPECT_TRUE(m_threads.empty());
}

}  // namespace
