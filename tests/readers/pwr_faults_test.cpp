// Bytes that are no whole file.
#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/readers/pwr_bytes.h"

namespace qumetra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

/// The bytes that a text of them with comments stands for.
std::string expectedResult(const std::string& name) {
  std::ifstream in(QM_RECORDINGS "/" + name + ".pwr.hex");
  std::string digits;
  for (std::string line; std::getline(in, line);) {
    digits += line.substr(0, line.find('#'));
  }
  EXPECT_FALSE(digits.empty()) << name;
  return fromHex(digits);
}

/// The one fault of the bytes; other records are not looked at.
std::string faultOf(const std::string& bytes) {
  const PwrKeeper found = readPwr(bytes);
  EXPECT_THAT(found.faults, SizeIs(1));
  return found.faults.empty() ? "" : found.faults[0];
}

/// The bytes with one of them changed.
std::string changed(std::string bytes, std::size_t place, unsigned char value) {
  bytes.at(place) = static_cast<char>(value);
  return bytes;
}

class CutFile : public testing::TestWithParam<std::string> {};

TEST_P(CutFile, KeepsTheWholeRecordsAndTellsTheOneThatIsCut) {
  const std::string bytes = expectedResult(GetParam());
  const PwrKeeper whole = readPwr(bytes);
  ASSERT_THAT(whole.faults, IsEmpty());
  std::size_t complete = 0;
  for (std::size_t length = 1; length < bytes.size(); ++length) {
    const bool isBorder =
        complete + 1 < whole.records.size() && length == whole.records[complete + 1].offset;
    complete += isBorder ? 1U : 0U;
    const PwrKeeper found = readPwr(bytes.substr(0, length));
    ASSERT_EQ(found.records.size(), complete) << length;
    ASSERT_EQ(found.faults.size(), isBorder ? 0U : 1U) << length;
    if (!isBorder) {
      const std::string offset = std::to_string(whole.records[complete].offset);
      ASSERT_THAT(found.faults[0], StartsWith(offset + ": the file ends in ")) << length;
    }
  }
  EXPECT_EQ(complete + 1, whole.records.size());
}

INSTANTIATE_TEST_SUITE_P(Pwr, CutFile,
                         testing::Values("kelto_residency", "kelto_traced", "kelto_wakelocks"),
                         [](const auto& name) { return name.param; });

TEST(PwrFaults, UnknownFirstWordEndsReading) {
  const PwrKeeper found = readPwr(fromHex(kMagicHex + "34 12 40 02" + kMagicHex));
  EXPECT_THAT(found.records, SizeIs(1));
  EXPECT_THAT(found.faults, ElementsAre("8: no record begins with 0x2401234; what follows cannot "
                                        "be read"));
}

TEST(PwrFaults, SizeWithoutRoomForTheTypeEndsReading) {
  for (unsigned char size = 0; size < 4; ++size) {
    const PwrKeeper found = readPwr(fromHex(kMagicHex) + changed(fromHex(kCollectionHex), 4, size) +
                                    fromHex(kMagicHex));
    EXPECT_THAT(found.records, SizeIs(1));
    EXPECT_THAT(
        found.faults,
        ElementsAre("8: the size " + std::to_string(size) +
                    " has no room for the type of the record; what follows cannot be read"));
  }
}

TEST(PwrFaults, LargestSizeWithoutTheBytesIsACutFile) {
  std::string bytes = changed(fromHex(kProcessHex), 28, 0xff);
  bytes[29] = static_cast<char>(0xff);
  EXPECT_EQ(faultOf(bytes), "0: the file ends in a record: 35 of 65563 bytes are there");
}

TEST(PwrFaults, LargestSizeWithTheBytesLeavesTheRecordOut) {
  std::string bytes = changed(fromHex(kProcessHex), 28, 0xff);
  bytes[29] = static_cast<char>(0xff);
  bytes.resize(28 + 0xffff);
  const PwrKeeper found = readPwr(bytes + fromHex(kMagicHex));
  EXPECT_THAT(found.faults, ElementsAre("0: a text of 65531 bytes where at most 30 may be"));
  EXPECT_THAT(found.records, SizeIs(1));
}

/// A record of each kind that has a size, and where it is.
struct SizedRecord {
  std::string name;
  std::string hex;
  std::size_t sizePlace;
};

class WrongSize : public testing::TestWithParam<SizedRecord> {};

TEST_P(WrongSize, LeavesTheRecordOutAndGoesOnBehindIt) {
  const std::string bytes = fromHex(GetParam().hex);
  const std::size_t place = GetParam().sizePlace;
  const auto size = static_cast<unsigned char>(bytes[place]);
  // From room for the type alone to one byte too few.
  for (unsigned char less = 4; less < size; ++less) {
    const std::string cut = changed(bytes, place, less).substr(0, place + less);
    const PwrKeeper found = readPwr(cut + fromHex(kMagicHex));
    ASSERT_THAT(found.faults, SizeIs(1)) << int{less};
    ASSERT_THAT(found.faults[0], StartsWith("0: ")) << int{less};
    ASSERT_THAT(found.records, SizeIs(1)) << int{less};
  }
  const PwrKeeper found = readPwr(changed(bytes, place, static_cast<unsigned char>(size + 1)) +
                                  'x' + fromHex(kMagicHex));
  EXPECT_THAT(found.faults, SizeIs(1));
  EXPECT_THAT(found.records, SizeIs(1));
}

TEST_P(WrongSize, UnknownTypeIsLeftOut) {
  const std::string bytes = changed(fromHex(GetParam().hex), GetParam().sizePlace + 2, 200);
  const PwrKeeper found = readPwr(bytes + fromHex(kMagicHex));
  ASSERT_THAT(found.faults, SizeIs(1));
  EXPECT_THAT(found.faults[0], testing::HasSubstr("unknown type of a"));
  EXPECT_THAT(found.records, SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(
    Pwr, WrongSize,
    testing::Values(SizedRecord{"Collection", kCollectionHex, 4},
                    SizedRecord{"System", kSystemHex, 4}, SizedRecord{"Hardware", kHardwareHex, 4},
                    SizedRecord{"PowerThreshold", kPowerThresholdHex, 4},
                    SizedRecord{"Info", kInfoHex, 12}, SizedRecord{"Metric", kMetricHex, 12},
                    SizedRecord{"Sample", kSampleHex, 12}, SizedRecord{"Process", kProcessHex, 28},
                    SizedRecord{"KernelWakelock", kKernelWakelockHex, 20},
                    SizedRecord{"UserWakelock", kUserWakelockHex, 20},
                    SizedRecord{"Package", kPackageHex, 12}),
    [](const auto& record) { return record.param.name; });

TEST(PwrFaults, TooSmallSizeIsTold) {
  const std::string bytes = changed(fromHex(kPowerThresholdHex), 4, 61).substr(0, 65);
  EXPECT_EQ(faultOf(bytes), "0: the size 61 is too small for what the record holds");
}

TEST(PwrFaults, TooLargeSizeIsTold) {
  EXPECT_EQ(faultOf(changed(fromHex(kPowerThresholdHex), 4, 63) + 'x'),
            "0: the size 63 leaves 1 bytes of the record over");
}

TEST(PwrFaults, SubTypesAndVersionsAreKnownOnes) {
  EXPECT_EQ(faultOf(changed(fromHex(kSampleHex), 16, 7)), "0: unknown sub-type of a sample 7");
  EXPECT_EQ(faultOf(changed(fromHex(kInfoHex), 16, 6)), "0: unknown sub-type of metadata 6");
  EXPECT_EQ(faultOf(changed(fromHex(kSampleHex), 18, 3)), "0: unknown version 3");
  EXPECT_EQ(faultOf(changed(fromHex(kInfoHex), 18, 0)), "0: unknown version 0");
  EXPECT_EQ(faultOf(changed(fromHex(kMetricHex), 18, 9)), "0: unknown version 9");
}

TEST(PwrFaults, CountOfAttributesHasToFitTheSize) {
  EXPECT_EQ(faultOf(changed(fromHex(kSampleHex), 20, 1)),
            "0: there are not as many attributes as are told: 1");
  EXPECT_EQ(faultOf(changed(fromHex(kSampleHex), 20, 3)),
            "0: there are not as many attributes as are told: 3");
}

TEST(PwrFaults, SampleOf2049AttributesIsTooLong) {
  EXPECT_EQ(faultOf(sampleBytes(1, std::vector<PwrAttribute>(2049))),
            "0: more than 2048 attributes: 2049");
}

TEST(PwrFaults, ClaimOfManyHardwareThreadsIsNotBelieved) {
  std::string bytes = fromHex(kHardwareHex);
  bytes.replace(40, 4, fromHex("ff ff ff ff"));
  EXPECT_EQ(faultOf(bytes), "0: there are not as many hardware threads as are told: 4294967295");
  // Four times this is 8 in 32 bits, the size of the two threads that are there.
  bytes.replace(40, 4, fromHex("02 00 00 40"));
  EXPECT_EQ(faultOf(bytes), "0: there are not as many hardware threads as are told: 1073741826");
}

TEST(PwrFaults, TextsEndInZero) {
  EXPECT_EQ(faultOf(changed(fromHex(kInfoHex), 56, 'x')), "0: a text has no terminating zero");
  EXPECT_EQ(faultOf(changed(fromHex(kMetricHex), 48, 'x')), "0: a text has no terminating zero");
  EXPECT_EQ(faultOf(changed(fromHex(kProcessHex), 34, 'x')), "0: a text has no terminating zero");
  EXPECT_EQ(faultOf(changed(fromHex(kPackageHex), 23, 'x')), "0: a text has no terminating zero");
}

TEST(PwrFaults, SizeOfANameCountsItsZero) {
  // The text of size 0 has no room for it, and leaves over what is there.
  EXPECT_EQ(faultOf(changed(fromHex(kPackageHex), 20, 0)), "0: a text has no terminating zero");
}

TEST(PwrFaults, MetadataTextOf400BytesIsTheLongest) {
  EXPECT_THAT(readPwr(infoBytes("k", 1, std::string(199, 'n'))).faults, IsEmpty());
  EXPECT_EQ(faultOf(infoBytes("kk", 1, std::string(199, 'n'))),
            "0: a text of 401 bytes where at most 400 may be");
}

/// A package with a name of this length.
std::string packageBytes(std::size_t length) {
  return fromHex("10 00 40 02 00 00 00 00 00 00 00 00") + littleEndian(length + 11, 2) +
         fromHex("44 00 01 00 00 00") + littleEndian(length + 1, 2) + std::string(length, 'n') +
         '\0';
}

TEST(PwrFaults, NameOf79CharactersIsTheLongest) {
  EXPECT_THAT(readPwr(packageBytes(79)).faults, IsEmpty());
  EXPECT_EQ(faultOf(packageBytes(80)), "0: a text of 81 bytes where at most 80 may be");
}

/// A process with a path of this length.
std::string processBytes(std::size_t length) {
  return fromHex(kProcessHex).substr(0, 28) + littleEndian(length + 5, 2) + fromHex("00 00") +
         std::string(length, 'p') + '\0';
}

TEST(PwrFaults, PathOf29CharactersIsTheLongest) {
  EXPECT_THAT(readPwr(processBytes(29)).faults, IsEmpty());
  EXPECT_EQ(faultOf(processBytes(30)), "0: a text of 31 bytes where at most 30 may be");
}

TEST(PwrFaults, MagicAndHeadMarkerHaveTheirNumbers) {
  EXPECT_EQ(faultOf(changed(fromHex(kMagicHex), 7, 0)), "0: a magic record without its number");
  EXPECT_EQ(faultOf(changed(fromHex(kHeadMarkerHex), 4, 0)),
            "0: a head marker does not begin as all do");
  EXPECT_EQ(faultOf(changed(fromHex(kHeadMarkerHex), 8, 0)),
            "0: a head marker does not begin as all do");
}

}  // namespace
}  // namespace qumetra::test
