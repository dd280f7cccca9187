#include "qumetra/readers/pwr_checker.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qumetra/readers/pwr_findings.h"
#include "tests/readers/pwr_bytes.h"

namespace qumetra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FindingsKeeper : public PwrFindings {
 public:
  void fault(std::uint64_t offset, const std::string& what) override {
    faults.push_back(std::to_string(offset) + ": " + what);
  }
  void warning(std::uint64_t offset, const std::string& what) override {
    warnings.push_back(std::to_string(offset) + ": " + what);
  }

  std::vector<std::string> faults;
  std::vector<std::string> warnings;
};

FindingsKeeper check(const std::string& bytes) {
  FindingsKeeper findings;
  PwrChecker checker(findings);
  PwrReader reader(checker);
  StringSource source(bytes);
  checker.end(reader.read(source).end);
  return findings;
}

/// What tells the samples below: magic, start 1000, entities 7 and 8, magic.
std::string declared() {
  return fromHex(kMagicHex + kHeadMarkerHex) + infoBytes("entity", 7, "seven") +
         infoBytes("entity", 8, "eight") + fromHex(kMagicHex);
}

/// The faults of these samples behind what tells them, offsets counted from the first.
std::vector<std::string> faultsOf(const std::string& samples) {
  const std::string front = declared();
  FindingsKeeper findings;
  PwrChecker checker(findings);
  PwrReader reader(checker);
  StringSource source(front + samples);
  checker.end(reader.read(source).end);
  std::vector<std::string> faults;
  for (const std::string& fault : findings.faults) {
    const std::size_t colon = fault.find(':');
    faults.push_back(std::to_string(std::stoull(fault) - front.size()) + fault.substr(colon));
  }
  return faults;
}

/// "W" of the kernel, or of a package.
std::string wakelockBytes(const std::string& hex, PwrWakelockAction action, std::uint64_t tsc) {
  std::string bytes = fromHex(hex);
  bytes.replace(12, 8, littleEndian(tsc, 8));
  bytes[24] = static_cast<char>(action);
  return bytes;
}

TEST(PwrTimeCheck, RisingTimesAreFine) {
  EXPECT_THAT(faultsOf(sampleBytes(2000, 1, 7) + sampleBytes(2001, 1, 7)), IsEmpty());
}

TEST(PwrTimeCheck, RepeatedTimeIsAFaultAtItsRecord) {
  EXPECT_THAT(faultsOf(sampleBytes(2000, 1, 7) + sampleBytes(2000, 1, 7)),
              ElementsAre("46: metric 1, entity 7: time 2000 does not come after 2000"));
}

TEST(PwrTimeCheck, FallingTimeIsAFault) {
  EXPECT_THAT(faultsOf(sampleBytes(2000, 1, 7) + sampleBytes(1999, 1, 7)),
              ElementsAre("46: metric 1, entity 7: time 1999 does not come after 2000"));
}

TEST(PwrTimeCheck, WrongTimeDoesNotMoveTheNextOnes) {
  EXPECT_THAT(faultsOf(sampleBytes(2000, 1, 7) + sampleBytes(1500, 1, 7) + sampleBytes(1700, 1, 7)),
              testing::SizeIs(2));
}

TEST(PwrTimeCheck, StartOfTheCollectionMayRepeat) {
  EXPECT_THAT(faultsOf(sampleBytes(1000, 1, 7) + sampleBytes(1000, 1, 7) + sampleBytes(1001, 1, 7)),
              IsEmpty());
}

TEST(PwrTimeCheck, StartMayNotComeAfterALaterTime) {
  EXPECT_THAT(faultsOf(sampleBytes(1000, 1, 7) + sampleBytes(1001, 1, 7) + sampleBytes(1000, 1, 7)),
              ElementsAre("92: metric 1, entity 7: time 1000 does not come after 1001"));
}

TEST(PwrTimeCheck, TimeBeforeTheStartIsAFault) {
  EXPECT_THAT(faultsOf(sampleBytes(999, 1, 7)),
              ElementsAre("0: metric 1, entity 7: time 999 is before the collection's start 1000"));
}

TEST(PwrTimeCheck, EntitiesAndMetricsHaveTimesOfTheirOwn) {
  EXPECT_THAT(faultsOf(sampleBytes(2000, 1, 7) + sampleBytes(1500, 1, 8) + sampleBytes(1500, 2, 7)),
              IsEmpty());
}

TEST(PwrTimeCheck, EveryEntityOfASampleIsChecked) {
  const std::string both = sampleBytes(
      1500,
      {{PwrAttributeId::Metric, 1}, {PwrAttributeId::Entity, 8}, {PwrAttributeId::Entity, 7}});
  EXPECT_THAT(faultsOf(sampleBytes(2000, 1, 7) + both),
              ElementsAre("46: metric 1, entity 7: time 1500 does not come after 2000"));
}

TEST(PwrTimeCheck, WithoutAHeadMarkerTheStartIsZero) {
  EXPECT_THAT(check(fromHex(kMagicHex) + sampleBytes(0, 1, 7) + sampleBytes(0, 1, 7)).faults,
              IsEmpty());
}

TEST(PwrTimeCheck, UnlocksRise) {
  for (const std::string& hex : {kKernelWakelockHex, kUserWakelockHex}) {
    const auto unlock = [&](std::uint64_t tsc) {
      return wakelockBytes(hex, PwrWakelockAction::Unlock, tsc);
    };
    EXPECT_THAT(faultsOf(unlock(2000) + unlock(2001)), IsEmpty());
    EXPECT_THAT(faultsOf(unlock(2000) + unlock(2000)), testing::SizeIs(1));
    EXPECT_THAT(faultsOf(unlock(999)), testing::SizeIs(1));
  }
}

TEST(PwrTimeCheck, UnlockOfAllIsAnUnlock) {
  EXPECT_THAT(faultsOf(wakelockBytes(kKernelWakelockHex, PwrWakelockAction::UnlockAll, 2000) +
                       wakelockBytes(kKernelWakelockHex, PwrWakelockAction::Unlock, 1999)),
              ElementsAre("37: unlock of a kernel wakelock: time 1999 does not come after 2000"));
}

TEST(PwrTimeCheck, LocksAreFree) {
  for (const std::string& hex : {kKernelWakelockHex, kUserWakelockHex}) {
    for (const auto lock : {PwrWakelockAction::Lock, PwrWakelockAction::LockTimeout,
                            PwrWakelockAction::LockInitial}) {
      EXPECT_THAT(faultsOf(wakelockBytes(hex, PwrWakelockAction::Unlock, 2000) +
                           wakelockBytes(hex, lock, 1500) + wakelockBytes(hex, lock, 1)),
                  IsEmpty());
    }
  }
}

TEST(PwrTimeCheck, WakelocksOfTheKernelAndOfPackagesAreApart) {
  EXPECT_THAT(faultsOf(wakelockBytes(kKernelWakelockHex, PwrWakelockAction::Unlock, 2000) +
                       wakelockBytes(kUserWakelockHex, PwrWakelockAction::Unlock, 1999)),
              IsEmpty());
}

TEST(PwrTimes, WhatIsBeyondTheLimitIsNotFollowed) {
  PwrTimes times(1);
  EXPECT_EQ(times.sample(1, 7, 10), "");
  EXPECT_FALSE(times.gaveUp());
  EXPECT_EQ(times.sample(1, 8, 10), "");
  EXPECT_EQ(times.sample(1, 8, 9), "");
  EXPECT_TRUE(times.gaveUp());
  EXPECT_NE(times.sample(1, 7, 9), "");
}

TEST(PwrReferenceCheck, DeclaredUidsAreFine) {
  const std::string bytes = fromHex(kMagicHex) + infoBytes("tab_group", 0x60000001, "tab") +
                            infoBytes("timeline_group", 0x60000002, "line", 0x60000001) +
                            fromHex(kMagicHex) + fromHex(kMetricHex) +
                            sampleBytes(1, {{PwrAttributeId::Metric, 30}});
  EXPECT_THAT(check(bytes).warnings, IsEmpty());
  EXPECT_THAT(check(bytes).faults, IsEmpty());
}

TEST(PwrReferenceCheck, EveryAttributeWithAUidIsChecked) {
  const std::string bytes = fromHex(kMagicHex) + sampleBytes(1, {{PwrAttributeId::Metric, 1},
                                                                 {PwrAttributeId::Entity, 2},
                                                                 {PwrAttributeId::Field, 3},
                                                                 {PwrAttributeId::Process, 4},
                                                                 {PwrAttributeId::Thread, 5},
                                                                 {PwrAttributeId::Quantity, 6},
                                                                 {PwrAttributeId::Color, 7},
                                                                 {PwrAttributeId::Info, 8},
                                                                 {PwrAttributeId::Uint, 9}});
  const FindingsKeeper found = check(bytes);
  EXPECT_THAT(
      found.warnings,
      testing::UnorderedElementsAre(
          "8: no record declares the metric 1", "8: no record declares the entity 2",
          "8: no record declares the field 3", "8: no record declares the quantity 6",
          "8: no record declares the color 7", "8: no record declares the nameid_attribute 8"));
  EXPECT_THAT(found.faults, IsEmpty());
}

TEST(PwrReferenceCheck, UidIsWarnedOfOnceAtItsFirstUse) {
  const auto entity = [](std::uint64_t number) {
    return sampleBytes(number, {{PwrAttributeId::Entity, number}});
  };
  EXPECT_THAT(
      check(fromHex(kMagicHex) + entity(9) + entity(8) +
            sampleBytes(20, {{PwrAttributeId::Entity, 9}}))
          .warnings,
      ElementsAre("8: no record declares the entity 9", "42: no record declares the entity 8"));
}

TEST(PwrReferenceCheck, DeclarationMayComeLater) {
  EXPECT_THAT(check(sampleBytes(1, {{PwrAttributeId::Entity, 7}}) +
                    infoBytes("entity", 7, "seven") + fromHex(kMagicHex))
                  .warnings,
              IsEmpty());
}

TEST(PwrReferenceCheck, UidOfAnotherKindDoesNotCount) {
  EXPECT_THAT(check(fromHex(kMagicHex) + infoBytes("field", 7, "seven") +
                    sampleBytes(1, {{PwrAttributeId::Entity, 7}}))
                  .warnings,
              testing::SizeIs(1));
}

TEST(PwrReferenceCheck, MetricNeedsItsQuantityAndGroups) {
  std::string metric = fromHex(kMetricHex);
  metric.replace(28, 4, littleEndian(5, 4));
  EXPECT_THAT(check(fromHex(kMagicHex) + metric).warnings,
              testing::UnorderedElementsAre("8: no record declares the quantity 5",
                                            "8: no record declares the tab_group 1610612737",
                                            "8: no record declares the timeline_group 1610612738"));
}

TEST(PwrReferenceCheck, PackageOfAWakelockNeedsItsName) {
  EXPECT_THAT(check(fromHex(kMagicHex + kUserWakelockHex)).warnings,
              ElementsAre("8: no record declares the package 10042"));
  EXPECT_THAT(check(fromHex(kMagicHex + kPackageHex + kUserWakelockHex)).warnings, IsEmpty());
}

TEST(PwrReferenceCheck, WakelockOfNoPackageNeedsNone) {
  std::string bytes = fromHex(kUserWakelockHex);
  bytes.replace(26, 4, littleEndian(0, 4));
  EXPECT_THAT(check(fromHex(kMagicHex) + bytes).warnings, IsEmpty());
}

TEST(PwrReferenceCheck, ParentsAreOfTheKindThatFits) {
  EXPECT_THAT(
      check(fromHex(kMagicHex) + infoBytes("timeline_group", 1, "a", 2) +
            infoBytes("entity", 3, "b", 4) + infoBytes("quantity", 5, "c", 6))
          .warnings,
      ElementsAre("8: no record declares the tab_group 2", "69: no record declares the entity 4",
                  "122: no record declares the quantity 6"));
}

TEST(PwrStreamCheck, FileWithoutAMagicRecordIsFaulty) {
  EXPECT_THAT(check("").faults, ElementsAre("0: magic records are missing: 0 of 1 are there"));
}

TEST(PwrStreamCheck, HeaderWantsASecondMagicRecord) {
  EXPECT_THAT(check(fromHex(kMagicHex + kCollectionHex)).faults,
              ElementsAre("42: magic records are missing: 1 of 2 are there"));
  EXPECT_THAT(check(fromHex(kMagicHex + kCollectionHex + kMagicHex)).faults, IsEmpty());
}

TEST(PwrStreamCheck, WhatTheReaderFindsIsAFault) {
  EXPECT_THAT(check(fromHex(kMagicHex) + "xy").faults,
              ElementsAre("8: the file ends in the first word of a record"));
}

/// A record, the place of a byte that never changes, and the record's kind.
struct Constant {
  std::string hex;
  std::size_t place;
  std::string kind;
};

class ConstantCheck : public testing::TestWithParam<Constant> {};

TEST_P(ConstantCheck, OtherValueIsAWarning) {
  const std::string front = fromHex(kPackageHex);
  std::string bytes = fromHex(GetParam().hex);
  EXPECT_THAT(check(front + bytes).warnings, IsEmpty());
  bytes[GetParam().place] = 0x7f;
  EXPECT_THAT(check(front + bytes).warnings,
              ElementsAre("24: a constant field of the " + GetParam().kind +
                          " record has another value than usual"));
}

INSTANTIATE_TEST_SUITE_P(
    Pwr, ConstantCheck,
    testing::Values(Constant{kCollectionHex, 8, "collection"},
                    Constant{kCollectionHex, 25, "collection"}, Constant{kSystemHex, 8, "system"},
                    Constant{kSystemHex, 10, "system"}, Constant{kHardwareHex, 8, "hardware"},
                    Constant{kHardwareHex, 20, "hardware"}, Constant{kHardwareHex, 48, "hardware"},
                    Constant{kPowerThresholdHex, 8, "power_threshold"},
                    Constant{kPowerThresholdHex, 12, "power_threshold"},
                    Constant{kPowerThresholdHex, 61, "power_threshold"},
                    Constant{kProcessHex, 4, "process"}, Constant{kProcessHex, 8, "process"},
                    Constant{kProcessHex, 16, "process"}, Constant{kThreadHex, 4, "thread"},
                    Constant{kThreadHex, 8, "thread"},
                    Constant{kUserWakelockHex, 30, "user_wakelock"}));

}  // namespace
}  // namespace qumetra::test
