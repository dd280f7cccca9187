// Wakelock records. Bytes are worked out by hand.
#include "tests/writers/kelto_fixture.h"

namespace {

using qumetra::test::hex;
using qumetra::test::KeltoTest;
using qumetra::test::number;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class KeltoWakelock : public KeltoTest {
 protected:
  KeltoWakelock() {
    deliverSystem();
    m_metric.metricType = pwr::Metric::TRACED_VALUE_TRANSITION;
    m_metric.tableClass = pwr::TableClass::KernelWakelock;
    m_metric.name = "Wakelocks";
  }
  void asUser() { m_metric.tableClass = pwr::TableClass::UserWakelock; }

  void addInfo(const std::string& name, std::uint64_t value, const std::string& infoName = "info") {
    m_lock.addAttributeValue(attribute(name, pwr::AttributeType::Info),
                             pwr::Data::fromHandle(&pair(infoName, "", value)));
  }
  void add(pwr::AttributeType type, const pwr::DataHandle* handle) {
    m_lock.addAttributeValue(attribute("a", type), pwr::Data::fromHandle(handle));
  }
  int hold(std::uint64_t tsc, std::uint64_t duration) {
    return deliver(tsc, {element(m_lock, nullptr, pwr::Data(), duration)});
  }
  /// The action of the stream's record `index`.
  std::uint64_t action(std::size_t index) { return number(records(kMetric).at(index), 24, 1); }
  std::string key() const { return "WAKELOCK_lock_" + std::to_string(m_lock.getId()); }

  pwr::EntityHandle& m_lock = entity("lock");
};

TEST_F(KeltoWakelock, KernelRecord) {
  EXPECT_EQ(m_writer.writeKernelWakelockSampleNonGeneric(
                0x0102030405060708, "ab", 0x11121314, 0x21222324, 0x3132333435363738, 2, kMetric),
            0);
  EXPECT_EQ(hex(stream(kMetric)),
            "18 00 40 02 "
            "24 23 22 21 14 13 12 11 "     // tid, pid
            "08 07 06 05 04 03 02 01 "     // time
            "12 00 40 00 "                 // size 18, type 64
            "02 38 37 36 35 34 33 32 31 "  // action, timeout
            "03 00 61 62 00 ");
}

TEST_F(KeltoWakelock, UserRecord) {
  EXPECT_EQ(m_writer.writeUserWakelockSampleNonGeneric(0x0102030405060708, "ab", 0x41424344,
                                                       0x11121314, 0x21222324, 0, 3, 4, kMetric),
            0);
  EXPECT_EQ(hex(stream(kMetric)),
            "18 00 40 02 "
            "24 23 22 21 14 13 12 11 "
            "08 07 06 05 04 03 02 01 "
            "13 00 43 00 "                    // size 19, type 67
            "03 04 44 43 42 41 00 00 00 00 "  // action, flag, uid, 0
            "03 00 61 62 00 ");
}

TEST_F(KeltoWakelock, PackageRecord) {
  EXPECT_EQ(m_writer.writeAPKMetadataNonGeneric(0x0102030405060708, 0x41424344, "ab", kMetric), 0);
  EXPECT_EQ(hex(stream(kMetric)),
            "10 00 40 02 "
            "08 07 06 05 04 03 02 01 "
            "0d 00 44 00 "  // size 13, type 68
            "44 43 42 41 03 00 61 62 00 ");
}

TEST_F(KeltoWakelock, HeldPeriodIsALockAndAnUnlock) {
  EXPECT_EQ(hold(3000, 500), 0);
  const std::vector<std::string> all = records(kMetric);
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(number(all[0], 12, 8), 2500U);
  EXPECT_EQ(number(all[1], 12, 8), 3000U);
  EXPECT_EQ(action(0), 0U);
  EXPECT_EQ(action(1), 1U);
}

TEST_F(KeltoWakelock, LoneWakelockMetricMakesAFileWithoutMetadata) {
  const std::string header = systemStream();
  hold(3000, 500);
  EXPECT_EQ(systemStream(), header);
  const std::string expected =
      header + std::string("\x00\x00\x00\x08\xFA\xDE\xDE\xAD", 8) + stream(kMetric);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(hex(result()), hex(expected));
}

TEST_F(KeltoWakelock, EntityWithoutAttributesHasTheDefaults) {
  asUser();
  hold(3000, 500);
  const std::vector<std::string> all = records(kMetric);
  EXPECT_EQ(hex(all[0].substr(4, 8)), "00 00 00 00 00 00 00 00 ");
  EXPECT_EQ(hex(all[0].substr(24, 6)), "00 01 00 00 00 00 ");
  EXPECT_EQ(hex(all[1].substr(24, 6)), "01 01 00 00 00 00 ");
}

TEST_F(KeltoWakelock, OnlyTransitionsOfTheTwoClassesAreWakelocks) {
  m_metric.tableClass = static_cast<pwr::TableClass>(13);
  EXPECT_EQ(deliver(3000, {element(m_lock, &descriptor("on"), pwr::Data(1UL))}), 0);
  EXPECT_EQ(samples().size(), 1U);
  m_metric.metricId = 8;
  m_metric.tableClass = pwr::TableClass::UserWakelock;
  m_metric.metricType = pwr::Metric::TRACED_EVENT;
  EXPECT_EQ(deliver(3000, {element(m_lock, &descriptor("on"), pwr::Data(1UL))}), 0);
  EXPECT_EQ(samples(8).size(), 1U);
}

TEST_F(KeltoWakelock, ReleasedSampleWritesNothingWhateverItsTime) {
  hold(3000, 500);
  const std::string before = stream(kMetric);
  const pwr::DataDescriptor& released = descriptor("Released");
  EXPECT_EQ(deliver(1, {element(m_lock, nullptr, pwr::Data::fromHandle(&released))}), 0);
  EXPECT_EQ(stream(kMetric), before);
  EXPECT_THAT(m_log.errors(), IsEmpty());
}

TEST_F(KeltoWakelock, OtherStatesAreHeld) {
  const pwr::DataDescriptor& released = descriptor("released");
  EXPECT_EQ(deliver(3000, {element(m_lock, nullptr, pwr::Data::fromHandle(&released))}), 0);
  EXPECT_EQ(records(kMetric).size(), 2U);
}

TEST_F(KeltoWakelock, ZeroDurationGivesTwoRecordsAtOneTime) {
  hold(3000, 0);
  EXPECT_EQ(number(records(kMetric)[0], 12, 8), 3000U);
  EXPECT_EQ(number(records(kMetric)[1], 12, 8), 3000U);
}

TEST_F(KeltoWakelock, LockMayLieBeforeTheLastUnlock) {
  hold(3000, 500);
  EXPECT_EQ(hold(3100, 2000), 0);
  EXPECT_EQ(number(records(kMetric)[2], 12, 8), 1100U);
}

TEST_F(KeltoWakelock, DurationAboveTheTimeWrapsAroundAndPassesTheProcess) {
  add(pwr::AttributeType::Process, &process(1, "sh", 5000));
  EXPECT_EQ(hold(3000, 3001), 0);
  EXPECT_EQ(number(records(kMetric)[0], 12, 8), ~std::uint64_t{0});
}

// Attributes.

class KeltoWakelockMask : public KeltoWakelock,
                          public ::testing::WithParamInterface<std::array<std::uint64_t, 4>> {};

TEST_P(KeltoWakelockMask, SetsActionsAndTimeout) {
  const auto [mask, lockAction, unlockAction, timeout] = GetParam();
  addInfo("Wakelock Mask", mask);
  hold(3000, 500);
  EXPECT_EQ(action(0), lockAction);
  EXPECT_EQ(action(1), unlockAction);
  EXPECT_EQ(number(records(kMetric)[0], 25, 8), timeout);
  EXPECT_EQ(number(records(kMetric)[1], 25, 8), timeout);
}

using MaskRow = std::array<std::uint64_t, 4>;
INSTANTIATE_TEST_SUITE_P(All, KeltoWakelockMask,
                         ::testing::Values(MaskRow{2, 2, 1, 3000}, MaskRow{3, 3, 1, 0},
                                           MaskRow{4, 0, 4, 0}, MaskRow{7, 3, 4, 0},
                                           MaskRow{1, 0, 1, 0}, MaskRow{8, 0, 1, 0}));

TEST_F(KeltoWakelock, FlagComesFromItsAttribute) {
  asUser();
  addInfo("User Wakelock Flag", 4);
  hold(3000, 500);
  EXPECT_EQ(number(records(kMetric)[0], 25, 1), 4U);
  EXPECT_EQ(number(records(kMetric)[1], 25, 1), 4U);
}

TEST_F(KeltoWakelock, OtherInfoAttributesAreSkipped) {
  addInfo("Wakelock mask", 7);
  m_lock.addAttributeValue(attribute("Wakelock Mask", pwr::AttributeType::Data), pwr::Data(7UL));
  hold(3000, 500);
  EXPECT_EQ(action(0), 0U);
}

TEST_F(KeltoWakelock, NullAttributeEndsTheAttributes) {
  m_lock.addAttributeValue(nullptr, pwr::Data());
  addInfo("Wakelock Mask", 7);
  EXPECT_EQ(hold(3000, 500), 0);
  EXPECT_EQ(action(0), 0U);
}

TEST_F(KeltoWakelock, PackageStandsBeforeItsWakelock) {
  asUser();
  addInfo("APK", 10'001, "com.example");
  hold(3000, 500);
  hold(4000, 500);
  const std::vector<std::string> all = records(kMetric);
  ASSERT_EQ(all.size(), 5U);
  EXPECT_EQ(number(all[0], 14, 2), 68U);
  EXPECT_EQ(number(all[0], 4, 8), 3000U);
  EXPECT_EQ(all[0].substr(22), std::string("com.example\0", 12));
  EXPECT_EQ(number(all[1], 26, 4), 10'001U);
}

TEST_F(KeltoWakelock, ProcessAndThreadAreAnnounced) {
  add(pwr::AttributeType::Thread, &thread(12, 11, 100));
  add(pwr::AttributeType::Process, &process(11, "app", 100));
  hold(3000, 500);
  EXPECT_EQ(number(records(kMetric)[0], 4, 4), 12U);
  EXPECT_EQ(number(records(kMetric)[0], 8, 4), 11U);
  EXPECT_EQ(m_processes.size(), 1U);
  EXPECT_EQ(m_threads.size(), 1U);
}

// Trouble.

TEST_F(KeltoWakelock, SampleHoldsOneElement) {
  EXPECT_EQ(deliver(3000, {}), 1);
  EXPECT_THAT(warnings(), ElementsAre("Invalid wakelock Sample.\n"));
  EXPECT_FALSE(m_writer.impl->findStore(kMetric)->active);
}

TEST_F(KeltoWakelock, TimesOfAWakelockRise) {
  hold(3000, 500);
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(warnings(), ElementsAre("Invalid TSC value.'" + key() + "' TSC: 3000\n"));
}

TEST_F(KeltoWakelock, SampleBeforeTheSystemMessageIsRefused) {
  qumetra::test::OpenKeltoWriter fresh;
  m_target = &fresh;
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(warnings(), ElementsAre("Invalid TSC value.'" + key() + "' TSC: 3000\n"));
}

TEST_F(KeltoWakelock, InfoWithoutAHandleIsRefused) {
  add(pwr::AttributeType::Info, nullptr);
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Failed to get wakelock data handle for info attribute. TSC: 3000\n"));
}

TEST_F(KeltoWakelock, InfoThatIsNoPairIsRefused) {
  add(pwr::AttributeType::Info, &m_lock);
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(warnings(), ElementsAre("Failed to get data for info attribute\n"));
}

TEST_F(KeltoWakelock, ThreadWithoutAHandleIsRefused) {
  add(pwr::AttributeType::Thread, nullptr);
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Failed to get wakelock data for thread attribute handle. TSC: 3000\n"));
}

TEST_F(KeltoWakelock, ProcessWithoutAHandleIsRefused) {
  add(pwr::AttributeType::Process, nullptr);
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Failed to get wakelock data handle for process attribute. TSC: 3000\n"));
}

TEST_F(KeltoWakelock, ThreadThatIsNoneIsRefused) {
  add(pwr::AttributeType::Thread, &m_lock);
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Kelto writer plugin: Unable to retrieve data handle. TSC: 3000\n"));
}

TEST_F(KeltoWakelock, ProcessThatIsNoneIsRefused) {
  add(pwr::AttributeType::Process, &m_lock);
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Kelto writer plugin: Unable to retrieve data handle. TSC: 3000\n"));
}

TEST_F(KeltoWakelock, ThreadThatCannotBeWrittenIsRefused) {
  refuse(kSystem);
  add(pwr::AttributeType::Thread, &thread(12, 11, 100));
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_EQ(warnings().back(), "Failed to handle thread information. TSC: 3000\n");
}

TEST_F(KeltoWakelock, ProcessThatCannotBeWrittenIsRefused) {
  refuse(kSystem);
  add(pwr::AttributeType::Process, &process(11, "app", 100));
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_EQ(warnings().back(), "Failed to handle process information. TSC: 3000\n");
}

TEST_F(KeltoWakelock, LockBeforeItsProcessIsRefused) {
  add(pwr::AttributeType::Process, &process(11, "app", 2501));
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(
      warnings(),
      ElementsAre("Invalid wakelock locking process start time for wakelock: '" + key() +
                  "'. Process pid: 11. Process start TSC: 2501 > Wakelock lock TSC: 2500!\n"));
}

TEST_F(KeltoWakelock, LockThatStartsWithItsProcessPasses) {
  add(pwr::AttributeType::Process, &process(11, "app", 2500));
  EXPECT_EQ(hold(3000, 500), 0);
}

TEST_F(KeltoWakelock, NameOf79CharactersFitsAKernelRecord) {
  const std::string name(79, 'n');
  EXPECT_EQ(m_writer.writeKernelWakelockSampleNonGeneric(5, name, 0, 0, 0, 0, kMetric), 0);
  EXPECT_EQ(stream(kMetric).size(), 36U + 79);
  EXPECT_EQ(m_writer.writeKernelWakelockSampleNonGeneric(5, name + "n", 0, 0, 0, 0, kMetric), 1);
  EXPECT_THAT(warnings(), ElementsAre("Kernel wakelock name too long, TSC: 5\n"));
}

TEST_F(KeltoWakelock, NameOf79CharactersFitsAUserRecord) {
  const std::string name(79, 'n');
  EXPECT_EQ(m_writer.writeUserWakelockSampleNonGeneric(5, name, 0, 0, 0, 0, 0, 0, kMetric), 0);
  EXPECT_EQ(stream(kMetric).size(), 37U + 79);
  EXPECT_EQ(m_writer.writeUserWakelockSampleNonGeneric(5, name + "n", 0, 0, 0, 0, 0, 0, kMetric),
            1);
  EXPECT_THAT(warnings(), ElementsAre("User wakelock name too long, TSC: 5\n"));
}

TEST_F(KeltoWakelock, UnlockIsNotTriedAfterAFailedLock) {
  pwr::EntityHandle& longName = entity(std::string(80, 'n'));
  const std::string longKey =
      "WAKELOCK_" + std::string(80, 'n') + "_" + std::to_string(longName.getId());
  EXPECT_EQ(deliver(3000, {element(longName, nullptr, pwr::Data(), 500)}), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Kernel wakelock name too long, TSC: 2500\n",
                          "Failed to write lock state for wakelock '" + longKey + "' TSC: 3000\n"));
}

TEST_F(KeltoWakelock, FailedUserLockIsTold) {
  asUser();
  refuse(kMetric);
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(warnings(), ElementsAre("Failed to write lock state for user wakelock '" + key() +
                                      "' TSC: 3000\n"));
}

/// The store takes the lock record and needs the disk for the next.
TEST_F(KeltoWakelock, FailedKernelUnlockIsTold) {
  leaveRoom(kMetric, 40);
  const qumetra::test::FullDisk full(0);
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_EQ(warnings().back(),
            "Failed to write unlock state for wakelock '" + key() + "' TSC: 3000\n");
}

TEST_F(KeltoWakelock, FailedUserUnlockIsTold) {
  asUser();
  leaveRoom(kMetric, 41);
  const qumetra::test::FullDisk full(0);
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_EQ(warnings().back(),
            "Failed to write unlock state for user wakelock '" + key() + "' TSC: 3000\n");
}

TEST_F(KeltoWakelock, PackageNameOf79CharactersFits) {
  EXPECT_EQ(m_writer.writeAPKMetadataNonGeneric(5, 1, std::string(79, 'n'), kMetric), 0);
  EXPECT_EQ(stream(kMetric).size(), 23U + 79);
}

TEST_F(KeltoWakelock, TooLongPackageNameFailsOnceAndThenPasses) {
  const std::string name(80, 'n');
  EXPECT_EQ(m_writer.writeAPKMetadataNonGeneric(5, 1, name, kMetric), 1);
  EXPECT_EQ(m_writer.writeAPKMetadataNonGeneric(6, 1, name, kMetric), 0);
  EXPECT_THAT(warnings(), ElementsAre("User wakelock package name too long, TSC: 5\n"));
  EXPECT_EQ(stream(kMetric), "");
}

TEST_F(KeltoWakelock, TwoNamesOfAUidAreAConflict) {
  asUser();
  addInfo("APK", 10'001, "com.one");
  addInfo("APK", 10'001, "com.two");
  EXPECT_EQ(hold(3000, 500), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("APK name conflict! Previously processed APK name 'com.one' for uid "
                          "'10001' does not match current APK name 'com.two' with same uid. TSC: "
                          "3000\n",
                          "Unable to write APK metadata sample. 'com.two' current TSC: 3000\n"));
}

}  // namespace
