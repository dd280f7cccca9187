// Every kind of record, from bytes worked out by hand.
#include "qumetra/readers/pwr_reader.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/readers/pwr_bytes.h"

namespace qumetra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Reads bytes that are one record.
PwrRecord one(const std::string& hex) {
  const PwrKeeper found = readPwr(fromHex(hex));
  EXPECT_THAT(found.faults, IsEmpty());
  EXPECT_THAT(found.records, SizeIs(1));
  return found.records.empty() ? PwrRecord{} : found.records[0];
}

template <typename Body>
Body bodyOf(const std::string& hex) {
  const PwrRecord record = one(hex);
  EXPECT_STREQ(pwrKindName(record), Body::kKind);
  const Body* const body = std::get_if<Body>(&record.body);
  return body == nullptr ? Body{} : *body;
}

TEST(PwrReading, EmptyFileSaysNothing) {
  const PwrKeeper found = readPwr("");
  EXPECT_THAT(found.records, IsEmpty());
  EXPECT_THAT(found.faults, IsEmpty());
}

TEST(PwrReading, MagicHasItsNumberAndNeitherSizeNorType) {
  EXPECT_EQ(bodyOf<PwrMagic>(kMagicHex).constant4, 0xADDEDEFAU);
  EXPECT_EQ(one(kMagicHex).size, std::nullopt);
  EXPECT_EQ(one(kMagicHex).type, std::nullopt);
}

TEST(PwrReading, CollectionTellsTheVersion) {
  const auto collection = bodyOf<PwrCollection>(kCollectionHex);
  EXPECT_EQ(collection.constant8, 1U);
  EXPECT_EQ(collection.versionMajor, 3);
  EXPECT_EQ(collection.versionMinor, 4);
  EXPECT_EQ(collection.versionPatch, 5U);
  EXPECT_EQ(collection.constant20, 0x0000080000000000U);
  EXPECT_EQ(collection.name, "power");
}

TEST(PwrReading, SizeAndTypeAreKept) {
  EXPECT_EQ(one(kCollectionHex).size, 30);
  EXPECT_EQ(one(kCollectionHex).type, 44);
}

TEST(PwrReading, SystemTellsItsNamesAndVersion) {
  const auto system = bodyOf<PwrSystem>(kSystemHex);
  EXPECT_EQ(system.constant8, 1);
  EXPECT_EQ(system.constant10, 0);
  EXPECT_EQ(system.osKind, 5);
  EXPECT_THAT(system.osVersion, ElementsAre(5, 15, 0, 91));
  EXPECT_EQ(system.hostName, "h");
  EXPECT_EQ(system.platformName, "pl");
  EXPECT_EQ(system.osName, "");
  EXPECT_EQ(system.lastText, "");
}

TEST(PwrReading, HardwareTellsTheProcessorAndItsThreads) {
  const auto hardware = bodyOf<PwrHardware>(kHardwareHex);
  EXPECT_EQ(hardware.constant8, 1U);
  EXPECT_EQ(hardware.tscFrequencyHz, 1000000000U);
  EXPECT_EQ(hardware.tscFrequencyHzAgain, 1000000000U);
  EXPECT_EQ(hardware.highestAddress, ~std::uint64_t{0});
  EXPECT_EQ(hardware.addressWidth, 64);
  EXPECT_EQ(hardware.family, 6);
  EXPECT_EQ(hardware.model, 0x97);
  EXPECT_EQ(hardware.stepping, 2);
  ASSERT_THAT(hardware.threads, SizeIs(2));
  const PwrHardware::Thread& second = hardware.threads[1];
  EXPECT_THAT((std::array{second.constant0, second.package, second.core, second.thread}),
              ElementsAre(0, 1, 2, 1));
}

TEST(PwrReading, HeadMarkerTellsTheStart) {
  const auto marker = bodyOf<PwrHeadMarker>(kHeadMarkerHex);
  EXPECT_EQ(marker.constant4, 0x02000020U);
  EXPECT_EQ(marker.constant8, 2);
  EXPECT_EQ(marker.firstTsc, 1000U);
  EXPECT_EQ(marker.timerResolutionDiv100, 10000U);
}

TEST(PwrReading, PowerThresholdTellsTheFrequency) {
  const auto threshold = bodyOf<PwrPowerThreshold>(kPowerThresholdHex);
  EXPECT_EQ(threshold.constant8, 1U);
  EXPECT_EQ(threshold.constant12, 12);
  EXPECT_EQ(threshold.constant14, std::string(48, '\0'));
  EXPECT_EQ(threshold.cpuFrequencyMHz, 3600U);
}

TEST(PwrReading, InfoTellsNumbersAndCutsItsTexts) {
  const auto info = bodyOf<PwrInfo>(kInfoHex);
  EXPECT_EQ(info.tsc, 0U);
  EXPECT_EQ(info.subType, 7);
  EXPECT_EQ(info.version, 2);
  EXPECT_EQ(info.infoType, 5U);
  EXPECT_EQ(info.value, 301U);
  EXPECT_EQ(info.parentUid, 299U);
  EXPECT_EQ(info.uid, 300U);
  EXPECT_EQ(info.longName, "CPU0");
  EXPECT_EQ(info.shortName, "C");
  EXPECT_EQ(info.kindName, "entity");
  EXPECT_EQ(info.description, "d");
}

TEST(PwrReading, MetricTellsItsUidsAndBothNames) {
  const auto metric = bodyOf<PwrMetric>(kMetricHex);
  EXPECT_EQ(metric.subType, 8);
  EXPECT_EQ(metric.version, 2);
  EXPECT_EQ(metric.metricType, 7U);
  EXPECT_EQ(metric.metricId, 30U);
  EXPECT_EQ(metric.quantityUid, kPwrNoUid);
  EXPECT_EQ(metric.tabGroupUid, 0x60000001U);
  EXPECT_EQ(metric.timelineGroupUid, 0x60000002U);
  EXPECT_EQ(metric.name, "ab");
  EXPECT_EQ(metric.secondName, "cd");
}

TEST(PwrReading, SampleHasItsTimeAndAttributes) {
  const auto sample = bodyOf<PwrSample>(kSampleHex);
  EXPECT_EQ(sample.tsc, 0x0102030405060708U);
  EXPECT_EQ(sample.subType, 6);
  EXPECT_EQ(sample.version, 2);
  ASSERT_THAT(sample.attributes, SizeIs(2));
  EXPECT_EQ(sample.attributes[0].id, PwrAttributeId::Metric);
  EXPECT_EQ(sample.attributes[0].bits, 30U);
  EXPECT_EQ(sample.attributes[1].id, PwrAttributeId::Real);
  EXPECT_EQ(sample.attributes[1].bits, 0x3FF8000000000000U);
}

TEST(PwrReading, SampleWithoutAttributesIsFine) {
  EXPECT_THAT(readPwr(sampleBytes(1, {})).faults, IsEmpty());
}

TEST(PwrReading, SampleMayHave2048Attributes) {
  const PwrKeeper found = readPwr(sampleBytes(1, std::vector<PwrAttribute>(2048)));
  EXPECT_THAT(found.faults, IsEmpty());
  ASSERT_THAT(found.records, SizeIs(1));
  EXPECT_THAT(std::get<PwrSample>(found.records[0].body).attributes, SizeIs(2048));
}

TEST(PwrReading, AttributesOfALongerSampleDoNotStay) {
  const PwrKeeper found = readPwr(sampleBytes(1, 30, 300) + sampleBytes(2, {}));
  ASSERT_THAT(found.records, SizeIs(2));
  EXPECT_THAT(std::get<PwrSample>(found.records[1].body).attributes, IsEmpty());
}

TEST(PwrReading, LegacyVersionIsRead) {
  std::string bytes = fromHex(kSampleHex);
  bytes[18] = 1;
  const PwrKeeper found = readPwr(bytes);
  ASSERT_THAT(found.records, SizeIs(1));
  EXPECT_EQ(std::get<PwrSample>(found.records[0].body).version, 1);
}

TEST(PwrReading, ProcessHasPathPidAndTime) {
  const auto process = bodyOf<PwrProcess>(kProcessHex);
  EXPECT_EQ(process.event, 0x1000U);
  EXPECT_EQ(process.constant8, 0U);
  EXPECT_EQ(process.pid, 77U);
  EXPECT_EQ(process.constant16, 0U);
  EXPECT_EQ(process.tsc, 500U);
  EXPECT_EQ(process.path, "sh");
}

TEST(PwrReading, ThreadHasEventIdsAndTime) {
  const auto thread = bodyOf<PwrThread>(kThreadHex);
  EXPECT_EQ(thread.event, PwrThread::kEnd);
  EXPECT_EQ(thread.constant8, 0U);
  EXPECT_EQ(thread.pid, 77U);
  EXPECT_EQ(thread.tid, 78U);
  EXPECT_EQ(thread.tsc, 600U);
}

TEST(PwrReading, KernelWakelockHasAllItsFields) {
  const auto wakelock = bodyOf<PwrKernelWakelock>(kKernelWakelockHex);
  EXPECT_EQ(wakelock.tid, 2U);
  EXPECT_EQ(wakelock.pid, 1U);
  EXPECT_EQ(wakelock.tsc, 4000U);
  EXPECT_EQ(wakelock.action, PwrWakelockAction::LockTimeout);
  EXPECT_EQ(wakelock.timeout, 5000U);
  EXPECT_EQ(wakelock.name, "W");
}

TEST(PwrReading, UserWakelockHasAllItsFields) {
  const auto wakelock = bodyOf<PwrUserWakelock>(kUserWakelockHex);
  EXPECT_EQ(wakelock.tid, 2U);
  EXPECT_EQ(wakelock.pid, 1U);
  EXPECT_EQ(wakelock.tsc, 4000U);
  EXPECT_EQ(wakelock.action, PwrWakelockAction::UnlockAll);
  EXPECT_EQ(wakelock.flag, 3);
  EXPECT_EQ(wakelock.uid, 10042U);
  EXPECT_EQ(wakelock.constant30, 0U);
  EXPECT_EQ(wakelock.name, "W");
}

TEST(PwrReading, PackageHasUidAndName) {
  const auto package = bodyOf<PwrPackage>(kPackageHex);
  EXPECT_EQ(package.tsc, 4000U);
  EXPECT_EQ(package.uid, 10042U);
  EXPECT_EQ(package.name, "p");
}

TEST(PwrReading, RecordsTellTheirOffsets) {
  const PwrKeeper found = readPwr(fromHex(kMagicHex + kHeadMarkerHex + kProcessHex + kMagicHex));
  ASSERT_THAT(found.records, SizeIs(4));
  EXPECT_EQ(found.records[0].offset, 0U);
  EXPECT_EQ(found.records[1].offset, 8U);
  EXPECT_EQ(found.records[2].offset, 33U);
  EXPECT_EQ(found.records[3].offset, 68U);
}

TEST(PwrReading, CountsRecordsAndTellsTheEnd) {
  PwrKeeper found;
  PwrReader reader(found);
  StringSource source(fromHex(kMagicHex + kThreadHex) + "x");
  const PwrCounts counts = reader.read(source);
  EXPECT_EQ(counts.records, 2U);
  EXPECT_EQ(counts.faults, 1U);
  EXPECT_EQ(counts.end, 36U);
}

TEST(PwrReading, NextFileBeginsAtItsFront) {
  PwrKeeper found;
  PwrReader reader(found);
  StringSource first(fromHex(kMagicHex));
  StringSource second(fromHex(kMagicHex));
  reader.read(first);
  EXPECT_EQ(reader.read(second).records, 1U);
  ASSERT_THAT(found.records, SizeIs(2));
  EXPECT_EQ(found.records[1].offset, 0U);
}

}  // namespace
}  // namespace qumetra::test
