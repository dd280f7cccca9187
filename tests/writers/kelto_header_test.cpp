// The records that open the stream. Their bytes are worked out from their layouts by hand.
#include <limits>

#include "tests/writers/kelto_fixture.h"

namespace {

using qumetra::test::FullDisk;
using qumetra::test::hex;
using qumetra::test::KeltoTest;
using qumetra::test::Node;
using qumetra::test::number;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class KeltoHeader : public KeltoTest {
 protected:
  /// Makes the system information and gives the record that `write` makes of it.
  std::string recordOf(int (KeltoWriter::*write)()) {
    EXPECT_EQ(deliverSystem(), 0);
    const std::size_t before = systemStream().size();
    EXPECT_EQ((m_writer.*write)(), 0);
    return hex(systemStream().substr(before));
  }
  void addThread(std::uint32_t package, std::uint32_t core) {
    m_cpu.m_topology.addThread({package, std::nullopt, core, m_nextThread++});
  }
  std::uint32_t osKind(const std::string& osName, const std::string& osType) {
    return keltoOsKind(osName, osType);
  }

 private:
  std::uint32_t m_nextThread = 0;
};

TEST_F(KeltoHeader, MagicRecord) {
  EXPECT_EQ(recordOf(&qumetra::test::OpenKeltoWriter::writeMagicRecord),
            "00 00 00 08 fa de de ad ");
}

TEST_F(KeltoHeader, CollectionInformation) {
  m_metadata.m_versionWord = 0x07E90615;  // 2025, 6, 21
  EXPECT_EQ(recordOf(&qumetra::test::OpenKeltoWriter::writeColInfoRecord),
            "00 00 40 02 "
            "1e 00 2c 00 "              // size 30, type 44
            "01 00 00 00 "              //
            "e9 07 06 00 15 00 00 00 "  // 2025, 6, 21
            "00 00 00 00 00 08 00 00 "  //
            "05 70 6f 77 65 72 ");      // 5, "power"
}

TEST_F(KeltoHeader, SystemInformation) {
  m_metadata.m_hostName = "ab";
  m_metadata.m_platformName = "P";
  m_metadata.m_osName = "Linux";
  m_metadata.m_osType = "x86_64";
  m_metadata.m_osVersion = "6.1.0x20";
  EXPECT_EQ(recordOf(&qumetra::test::OpenKeltoWriter::writeSysInfoRecord),
            "00 00 40 02 "
            "26 00 2d 00 "              // size 38, type 45
            "01 00 00 00 "              // 1, 0
            "05 00 "                    // 64-bit
            "06 00 01 00 20 00 00 00 "  // 6.1.32.0
            "03 00 61 62 00 "           // host
            "02 00 50 00 "              // platform
            "06 00 4c 69 6e 75 78 00 "  // operating system
            "01 00 00 ");               // empty
}

TEST_F(KeltoHeader, ZeroByteEndsASystemText) {
  m_metadata.m_hostName = std::string("ab\0cd", 5);
  const std::string record = recordOf(&qumetra::test::OpenKeltoWriter::writeSysInfoRecord);
  EXPECT_EQ(record.substr(22 * 3, 5 * 3), "03 00 61 62 00 ");
}

TEST_F(KeltoHeader, HardwareConfiguration) {
  m_cpu.m_family = 6;
  m_cpu.m_model = 0x97;
  m_cpu.m_stepping = 2;
  m_metadata.m_osType = "x86_64";
  addThread(1, 0x22);
  addThread(1, 0x22);
  EXPECT_EQ(recordOf(&qumetra::test::OpenKeltoWriter::writeHardCfgRecord),
            "00 00 40 02 "
            "30 00 12 00 "                            // size 48, type 18
            "01 00 00 00 "                            //
            "00 f9 02 95 00 00 00 00 "                // 2,500,000,000
            "00 f9 02 95 00 00 00 00 "                // and again
            "ff ff ff ff ff ff ff ff 40 "             // 64 bits
            "06 97 02 "                               //
            "02 00 00 00 00 01 22 00 00 01 22 01 ");  // two threads
}

TEST_F(KeltoHeader, HeadMarker) {
  m_metadata.m_firstTimestamp = 0x0102030405060708;
  m_metadata.m_timerResolution = 1234567;
  EXPECT_EQ(recordOf(&qumetra::test::OpenKeltoWriter::writeHeadMarkerRecord),
            "20 00 00 22 20 00 00 02 02 "
            "08 07 06 05 04 03 02 01 "
            "39 30 00 00 00 00 00 00 ");  // 12345
}

TEST_F(KeltoHeader, PowerThreshold) {
  m_cpu.m_cpuWords.cpuFrequencyMHz = 3600.9F;
  std::string expected =
      "00 00 40 02 "
      "3e 00 3f 00 "  // size 62, type 63
      "01 00 00 00 0c 00 ";
  for (int i = 0; i < 48; ++i) {
    expected += "00 ";
  }
  expected += "10 0e 00 00 ";  // 3600
  EXPECT_EQ(recordOf(&qumetra::test::OpenKeltoWriter::writePowerThreshold), expected);
}

TEST_F(KeltoHeader, RecordsStandInTheirOrder) {
  ASSERT_EQ(deliverSystem(), 0);
  const std::vector<std::string> all = records(kSystem);
  ASSERT_EQ(all.size(), 13U);
  EXPECT_EQ(number(all[0], 0, 4), 0x08000000U);
  EXPECT_EQ(number(all[1], 6, 2), 44U);
  EXPECT_EQ(number(all[2], 6, 2), 45U);
  EXPECT_EQ(number(all[3], 6, 2), 18U);
  EXPECT_EQ(number(all[4], 0, 4), 0x22000020U);
  EXPECT_EQ(number(all[5], 6, 2), 63U);
  for (std::size_t i = 6; i < 13; ++i) {
    EXPECT_EQ(number(all[i], 14, 2), 72U);
  }
}

TEST_F(KeltoHeader, MetricTypesFollowTheHeader) {
  deliverSystem();
  const std::vector<Node> types = nodes("metric_type");
  ASSERT_EQ(types.size(), 6U);
  const char* const expected[][2] = {{"Sampled Finite Set Counter", "SFSC"},
                                     {"Sampled Value", "SV"},
                                     {"Sampled Finite Set Value", "SFSV"},
                                     {"Traced Finite Set Counter", "TFSC"},
                                     {"Sampled Counter", "SC"},
                                     {"Traced Event", "TE"}};
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(types[i].longName, expected[i][0]);
    EXPECT_EQ(types[i].shortName, expected[i][1]);
    EXPECT_EQ(types[i].description, "metric_type_id");
    EXPECT_EQ(types[i].value, 4 + i);
    EXPECT_EQ(types[i].kindId, 1U);
    EXPECT_EQ(types[i].parent, 0xFFFFFFFFU);
    EXPECT_EQ(types[i].uid, m_writer.metricTypeIds[4 + i]);
  }
}

TEST_F(KeltoHeader, KindOfMetricTypesIsDeclaredFirst) {
  deliverSystem();
  const std::vector<Node> kinds = nodes("info_type");
  ASSERT_EQ(kinds.size(), 1U);
  EXPECT_EQ(kinds[0].longName, "metric_type");
  EXPECT_EQ(kinds[0].shortName, "metric_type");
  EXPECT_EQ(kinds[0].description, "info_type_id");
  EXPECT_EQ(kinds[0].kindId, 0U);
  EXPECT_EQ(kinds[0].value, 1U);
  EXPECT_EQ(nodes("metric_type")[0].uid, kinds[0].uid + 1);
}

// Threads.

TEST_F(KeltoHeader, ThreadsOfACoreAreCounted) {
  addThread(0, 3);
  addThread(0, 3);
  addThread(0, 4);
  deliverSystem();
  EXPECT_THAT(m_writer.systemInfo->threadTable,
              ElementsAre(KeltoThreadEntry{0, 0, 3, 0}, KeltoThreadEntry{0, 0, 3, 1},
                          KeltoThreadEntry{0, 0, 4, 0}));
}

TEST_F(KeltoHeader, CoreIdsAreOfTheirPackage) {
  addThread(0, 3);
  addThread(1, 3);
  deliverSystem();
  EXPECT_THAT(m_writer.systemInfo->threadTable,
              ElementsAre(KeltoThreadEntry{0, 0, 3, 0}, KeltoThreadEntry{0, 1, 3, 0}));
}

TEST_F(KeltoHeader, ModuleIsNoPackage) {
  m_cpu.m_topology.addThread({2, 9, 5, 0});
  deliverSystem();
  EXPECT_THAT(m_writer.systemInfo->threadTable, ElementsAre(KeltoThreadEntry{0, 2, 5, 0}));
}

TEST_F(KeltoHeader, IdsKeepTheirLowByte) {
  m_cpu.m_topology.addThread({0x102, std::nullopt, 0x305, 0});
  deliverSystem();
  EXPECT_THAT(m_writer.systemInfo->threadTable, ElementsAre(KeltoThreadEntry{0, 2, 5, 0}));
}

TEST_F(KeltoHeader, CoreThreadCountIsThatOfEarlierCalls) {
  EXPECT_EQ(getCoreThreadCount(1, 2), 0);
  EXPECT_EQ(getCoreThreadCount(1, 2), 1);
  EXPECT_EQ(getCoreThreadCount(2, 1), 0);
}

TEST_F(KeltoHeader, AsManyThreadsAsARecordHolds) {
  deliverSystem();
  m_writer.systemInfo->threadTable.resize(16373);
  m_writer.systemInfo->threadCount = 16373;
  EXPECT_EQ(m_writer.writeHardCfgRecord(), 0);
  EXPECT_EQ(number(records(kSystem).back(), 4, 2), 65532U);
  EXPECT_EQ(number(records(kSystem).back(), 40, 4), 16373U);
}

TEST_F(KeltoHeader, MoreThreadsThanARecordHoldsAreRefused) {
  deliverSystem();
  m_writer.systemInfo->threadTable.resize(70'000);
  m_writer.systemInfo->threadCount = 70'000;
  EXPECT_EQ(m_writer.writeHardCfgRecord(), 1);
  EXPECT_THAT(warnings(), ElementsAre("Hardware configuration record size mismatch.\n"));
}

TEST_F(KeltoHeader, ManyThreadsAreAllTaken) {
  constexpr std::uint32_t kThreads = 3000;
  for (std::uint32_t i = 0; i < kThreads; ++i) {
    addThread(i / 256, i % 256);
  }
  EXPECT_EQ(deliverSystem(), 0);
  EXPECT_EQ(m_writer.systemInfo->threadCount, kThreads);
  EXPECT_EQ(m_writer.systemInfo->threadTable.back(), (KeltoThreadEntry{0, 11, 183, 0}));
}

// What the system message tells.

TEST_F(KeltoHeader, VersionWordIsTakenApart) {
  m_metadata.m_versionWord = 0x12345678;
  deliverSystem();
  EXPECT_EQ(m_writer.systemInfo->versionMajor, 0x1234);
  EXPECT_EQ(m_writer.systemInfo->versionMinor, 0x56);
  EXPECT_EQ(m_writer.systemInfo->versionPatch, 0x78);
}

TEST_F(KeltoHeader, OsVersionReadsUpToFourNumbers) {
  using Version = std::array<std::uint16_t, 4>;
  EXPECT_EQ(keltoOsVersion("10"), (Version{10, 0, 0, 0}));
  EXPECT_EQ(keltoOsVersion("5.15.0-91"), (Version{5, 15, 0, 0}));
  EXPECT_EQ(keltoOsVersion("0x10.1"), (Version{16, 1, 0, 0}));
  EXPECT_EQ(keltoOsVersion("010.1.2.3.4"), (Version{8, 1, 2, 3}));
  EXPECT_EQ(keltoOsVersion(""), (Version{0, 0, 0, 0}));
  EXPECT_EQ(keltoOsVersion("65537.x"), (Version{1, 0, 0, 0}));
}

TEST_F(KeltoHeader, OsKindGoesByNameThenType) {
  EXPECT_EQ(osKind("Windows 11", "x86_64"), 2U);
  EXPECT_EQ(osKind("Linux", "ia64"), 4U);
  EXPECT_EQ(osKind("Linux", "x86_64"), 5U);
  EXPECT_EQ(osKind("Linux", "i586"), 3U);
  EXPECT_EQ(osKind("Linux", "i586x"), 6U);
  EXPECT_EQ(osKind("Linux", "x586"), 6U);
  EXPECT_EQ(osKind("Linux", "i576"), 6U);
  EXPECT_EQ(osKind("Linux", "i86"), 6U);
  EXPECT_EQ(osKind("Linux", "aarch64"), 6U);
}

TEST_F(KeltoHeader, OnlyTwoTypesCountAs32BitHardware) {
  for (const char* type : {"i386", "i686"}) {
    m_metadata.m_osType = type;
    EXPECT_EQ(recordOf(&qumetra::test::OpenKeltoWriter::writeHardCfgRecord).substr(28 * 3, 27),
              "00 00 00 80 00 00 00 00 20 ");
  }
  m_metadata.m_osType = "i586";
  EXPECT_EQ(recordOf(&qumetra::test::OpenKeltoWriter::writeHardCfgRecord).substr(28 * 3, 27),
            "ff ff ff ff ff ff ff ff 40 ");
  EXPECT_EQ(m_writer.systemInfo->osKind, 3U);
}

TEST_F(KeltoHeader, FrequencyAbove32BitsKeepsItsLowBits) {
  m_cpu.m_cpuWords.cpuFrequencyMHz = 5000;
  m_metadata.m_timestampFrequency = 5000;
  deliverSystem();
  EXPECT_EQ(m_writer.systemInfo->tscFrequencyHz, 705032704U);
  EXPECT_EQ(m_writer.systemInfo->cpuFrequencyHz, 705032704U);
  EXPECT_EQ(m_writer.systemInfo->cpuFrequencyMHz, 5000U);
}

TEST_F(KeltoHeader, FrequencyIsMadeInSinglePrecision) {
  m_metadata.m_timestampFrequency = 2592.123F;
  deliverSystem();
  EXPECT_EQ(m_writer.systemInfo->tscFrequencyHz, 2592123136U);
}

TEST_F(KeltoHeader, FrequencyThatIsNoNumberCountsAsZero) {
  m_metadata.m_timestampFrequency = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(deliverSystem(), 1);
  EXPECT_EQ(m_writer.systemInfo->tscFrequencyHz, 0U);
}

// Trouble.

TEST_F(KeltoHeader, MessageWithoutProcessorLeavesNoHeaderAndTheRunGoesOn) {
  m_metadata.m_platformMetadata.clear();
  EXPECT_EQ(deliverSystem(), 1);
  EXPECT_THAT(m_log.warnings(), IsEmpty());
  EXPECT_TRUE(m_writer.impl->valid);
  EXPECT_EQ(systemStream(), "");
  EXPECT_EQ(m_writer.systemInfo->firstTsc, 0U);
  EXPECT_EQ(deliverPlain(1), 0);
}

TEST_F(KeltoHeader, NullOrForeignPlatformEntryIsNoProcessor) {
  pwr::PCHMetadata pch;
  m_metadata.m_platformMetadata[pwr::SystemMetadata::kCpu] = &pch;
  EXPECT_EQ(deliverSystem(), 1);
  m_metadata.m_platformMetadata[pwr::SystemMetadata::kCpu] = nullptr;
  EXPECT_EQ(deliverSystem(), 1);
  EXPECT_TRUE(m_writer.impl->valid);
}

TEST_F(KeltoHeader, MessageWithoutMetadataCountsAsSeen) {
  pwr::SystemMessage message;
  message.m_id = kSystem;
  EXPECT_EQ(m_writer.writeMessage(message), 1);
  EXPECT_EQ(m_writer.systemStreamId, kSystem);
}

TEST_F(KeltoHeader, UnknownTimestampFrequencyEndsTheResult) {
  m_metadata.m_timestampFrequency = 0;
  EXPECT_EQ(deliverSystem(), 1);
  EXPECT_THAT(warnings(), ElementsAre("Invalid TSC clock frequency: 0Hz\n",
                                      "Failed to write hardware configuration record.\n"));
  EXPECT_FALSE(m_writer.impl->valid);
  EXPECT_EQ(records(kSystem).size(), 3U);
}

TEST_F(KeltoHeader, UnknownProcessorFrequencyEndsTheResultThoughItIsNotStored) {
  m_cpu.m_cpuWords.cpuFrequencyMHz = 0;
  EXPECT_EQ(deliverSystem(), 1);
  EXPECT_THAT(warnings(), ElementsAre("Invalid CPU frequency: 0Hz\n",
                                      "Failed to write hardware configuration record.\n"));
  EXPECT_FALSE(m_writer.impl->valid);
}

TEST_F(KeltoHeader, TextsThatARecordCannotHoldEndTheResult) {
  m_metadata.m_hostName = std::string(65'536, 'h');
  EXPECT_EQ(deliverSystem(), 1);
  EXPECT_THAT(warnings(), ElementsAre("System info record size mismatch.\n",
                                      "Failed to write system info record.\n"));
}

TEST_F(KeltoHeader, LongestTextsThatARecordHoldsAreWritten) {
  m_metadata.m_hostName = std::string(65'505, 'h');
  EXPECT_EQ(deliverSystem(), 0);
  EXPECT_EQ(number(records(kSystem)[2], 4, 2), 65'535U);
}

/// What is told when the store takes so many bytes and no more.
class KeltoFailedHeader
    : public KeltoHeader,
      public ::testing::WithParamInterface<std::pair<std::size_t, const char*>> {};

TEST_P(KeltoFailedHeader, IsToldAndEndsTheResult) {
  leaveRoom(kSystem, GetParam().first);
  const FullDisk full(0);
  EXPECT_EQ(deliverSystem(), 1);
  EXPECT_EQ(warnings().back(), GetParam().second);
  EXPECT_FALSE(m_writer.impl->valid);
}

constexpr std::size_t kColEnd = 8 + 34;
constexpr std::size_t kSysEnd = kColEnd + 34;
constexpr std::size_t kHardEnd = kSysEnd + 44;
constexpr std::size_t kMarkerEnd = kHardEnd + 25;
constexpr std::size_t kThresholdEnd = kMarkerEnd + 66;
INSTANTIATE_TEST_SUITE_P(
    Records, KeltoFailedHeader,
    ::testing::Values(std::pair(std::size_t{0}, "Failed to write magic record.\n"),
                      std::pair(std::size_t{8}, "Failed to write collection info record.\n"),
                      std::pair(kColEnd, "Failed to write system info record.\n"),
                      std::pair(kSysEnd, "Failed to write hardware configuration record.\n"),
                      std::pair(kHardEnd, "Failed to write hardware configuration record.\n"),
                      std::pair(kMarkerEnd, "Failed to write hardware configuration record.\n"),
                      std::pair(kThresholdEnd,
                                "Failed to write metric class type metadata records.\n")));

TEST_F(KeltoHeader, FailedMetricTypesAreToldTwice) {
  const std::size_t kindSize = 45 + 11 + 11 + 9 + 12;
  leaveRoom(kSystem, kThresholdEnd + kindSize);
  const FullDisk full(0);
  deliverSystem();
  const std::vector<std::string> texts = warnings();
  ASSERT_GE(texts.size(), 2U);
  EXPECT_EQ(texts[texts.size() - 2], "Failed to write metric type metadata.\n");
}

}  // namespace
