#include "qumetra/collect/system_scan.h"

#include <gtest/gtest.h>

#include "host/platform_metadata.h"
#include "qumetra/collect/cpuid.h"
#include "qumetra/collect/topology_scan.h"
#include "qumetra/model/model.h"
#include "tests/collect/fake_machine.h"

namespace qumetra::test {
namespace {

using Numbers = std::vector<std::uint32_t>;

std::string textOf(const pwr::ThreadLocation& location) {
  return std::to_string(location.package) + "/" + std::to_string(location.core) + "/" +
         std::to_string(location.id);
}

std::vector<std::string> textsOf(const std::vector<pwr::ThreadLocation>& locations) {
  std::vector<std::string> texts;
  for (const auto& location : locations) {
    texts.push_back(textOf(location));
  }
  return texts;
}

TEST(CpuList, RangesAndSingleNumbersAreRead) {
  EXPECT_EQ((Numbers{0, 1, 2, 3, 5, 8, 9}), parseCpuList("0-3,5,8-9\n"));
}

TEST(CpuList, NumbersComeSortedAndOnce) { EXPECT_EQ((Numbers{1, 2, 3}), parseCpuList("2-3,1,2")); }

TEST(CpuList, AnEmptyListHasNoNumbers) { EXPECT_EQ(Numbers{}, parseCpuList("\n")); }

TEST(CpuList, GarbageIsNoList) {
  for (const char* text : {"x", "1-", "-1", "3-1", "1,,2", "1;2", "0x3", "99999999999999999999"}) {
    EXPECT_EQ(std::nullopt, parseCpuList(text)) << text;
  }
}

TEST(CpuList, ARangeBeyondEveryMachineIsNoList) {
  EXPECT_EQ(std::nullopt, parseCpuList("0-4294967295"));
}

TEST(Topology, PackagesCoresAndThreadsComeFromSysfs) {
  FakeMachine machine;
  machine.addTwoPackages();
  EXPECT_EQ((std::vector<std::string>{"0/0/0", "0/1/1", "1/0/2", "1/1/3", "0/0/4", "0/1/5", "1/0/6",
                                      "1/1/7"}),
            textsOf(scanTopology(machine.procfs(), machine.sysfs())));
}

TEST(Topology, CpusThatAreOfflineAreLeftOut) {
  FakeMachine machine;
  machine.addTwoPackages();
  machine.writeSys("devices/system/cpu/online", "0,3\n");
  EXPECT_EQ((std::vector<std::string>{"0/0/0", "1/1/3"}),
            textsOf(scanTopology(machine.procfs(), machine.sysfs())));
}

TEST(Topology, WithoutTopologyEachCpuIsACoreOfOnePackage) {
  FakeMachine machine;
  machine.writeSys("devices/system/cpu/online", "0-1");
  EXPECT_EQ((std::vector<std::string>{"0/0/0", "0/1/1"}),
            textsOf(scanTopology(machine.procfs(), machine.sysfs())));
}

TEST(Topology, AnUnknownPackageIsPackageZero) {
  FakeMachine machine;
  machine.addCpu(0, -1, 7);
  EXPECT_EQ("0/7/0", textOf(locateCpu(machine.sysfs(), 0)));
}

TEST(Topology, WithoutAListTheCpusOfStatAreOnline) {
  FakeMachine machine;
  machine.writeProc("stat", "cpu 1 1 1 1\n" + cpuLine(2, {}) + cpuLine(0, {}));
  EXPECT_EQ((Numbers{0, 2}), onlineCpus(machine.procfs(), machine.sysfs()));
}

TEST(Topology, ABrokenListFallsBackToStat) {
  FakeMachine machine;
  machine.writeSys("devices/system/cpu/online", "all of them");
  machine.writeProc("stat", cpuLine(4, {}));
  EXPECT_EQ((Numbers{4}), onlineCpus(machine.procfs(), machine.sysfs()));
}

TEST(Topology, WithNothingAtAllThereIsCpuZero) {
  const FakeMachine machine;
  EXPECT_EQ((Numbers{0}), onlineCpus(machine.procfs(), machine.sysfs()));
}

TEST(Cpuid, FamilySixTakesTheExtendedModelOnly) {
  // Extended family bits are set on purpose: family 6 ignores them.
  const CpuSignature signature = decodeSignature(0x0F0906EA);
  EXPECT_EQ(6U, signature.family);
  EXPECT_EQ(0x9EU, signature.model);
  EXPECT_EQ(10U, signature.stepping);
}

TEST(Cpuid, FamilyFifteenAddsTheExtendedFamily) {
  const CpuSignature signature = decodeSignature(0x00870F10);
  EXPECT_EQ(0x17U, signature.family);
  EXPECT_EQ(0x71U, signature.model);
  EXPECT_EQ(0U, signature.stepping);
}

TEST(Cpuid, OtherFamiliesHaveNoExtendedParts) {
  const CpuSignature signature = decodeSignature(0x0FFF0543);
  EXPECT_EQ(5U, signature.family);
  EXPECT_EQ(4U, signature.model);
  EXPECT_EQ(3U, signature.stepping);
}

TEST(Cpuid, TheVendorIsSpelledByThreeWords) {
  // "ABCD" "EFGH" "IJKL", lowest byte first.
  EXPECT_EQ("ABCDEFGHIJKL", decodeVendor({0x44434241, 0x48474645, 0x4C4B4A49}));
}

TEST(Cpuid, TheBrandLosesBlanksAroundAndDoubledInside) {
  // "  Fa", "st  ", "CPU ", zero.
  EXPECT_EQ("Fast CPU", decodeBrand({0x61462020, 0x20207473, 0x20555043}));
}

TEST(Cpuid, ABrandOfZerosIsEmpty) { EXPECT_EQ("", decodeBrand({})); }

TEST(CpuFrequency, TheBaseFrequencyComesFirst) {
  FakeMachine machine;
  machine.writeSys("devices/system/cpu/cpu0/cpufreq/base_frequency", "2400000\n");
  machine.writeSys("devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "4800000\n");
  machine.writeProc("cpuinfo", "cpu MHz\t\t: 800.123\n");
  EXPECT_FLOAT_EQ(2400, cpuFrequencyMHz(machine.procfs(), machine.sysfs()));
}

TEST(CpuFrequency, TheHighestFrequencyComesSecond) {
  FakeMachine machine;
  machine.writeSys("devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "4800000\n");
  machine.writeProc("cpuinfo", "cpu MHz\t\t: 800.123\n");
  EXPECT_FLOAT_EQ(4800, cpuFrequencyMHz(machine.procfs(), machine.sysfs()));
}

TEST(CpuFrequency, CpuinfoComesThird) {
  FakeMachine machine;
  machine.writeProc("cpuinfo", "processor\t: 0\ncpu MHz\t\t: 2596.122\ncpu MHz\t\t: 1\n");
  EXPECT_FLOAT_EQ(2596.122F, cpuFrequencyMHz(machine.procfs(), machine.sysfs()));
}

TEST(CpuFrequency, WithoutAnySourceItIsAThousand) {
  FakeMachine machine;
  EXPECT_FLOAT_EQ(1000, cpuFrequencyMHz(machine.procfs(), machine.sysfs()));
  for (const char* text : {"cpu MHz : nan\n", "cpu MHz : -5\n", "cpu MHz : 0\n", "cpu MHz : inf\n",
                           "cpu MHz : 1e30\n", "cpu MHz\n"}) {
    machine.writeProc("cpuinfo", text);
    EXPECT_FLOAT_EQ(1000, cpuFrequencyMHz(machine.procfs(), machine.sysfs())) << text;
  }
}

class SystemScanTest : public testing::Test {
 protected:
  pwr::SystemMetadata& scan(const CpuIdentity& cpu = {}) {
    SystemScanOptions options;
    options.procfs = m_machine.procfs();
    options.sysfs = m_machine.sysfs();
    options.osRelease = m_machine.sysfs() + "/os-release";
    options.commandLine = {"qumetra", "collect"};
    return scanSystem(m_model, options, cpu, scanTopology(options.procfs, options.sysfs));
  }
  static const pwr::CPUMetadata& cpuOf(const pwr::SystemMetadata& metadata) {
    return dynamic_cast<const pwr::CPUMetadata&>(*metadata.m_platformMetadata.at(1));
  }

  FakeMachine m_machine;
  Model m_model;
};

TEST_F(SystemScanTest, TheProcessorHasSignatureBrandAndTopology) {
  m_machine.addTwoPackages();
  const auto& metadata = scan({CpuSignature{26, 2, 1}, "SomeVendor", "Some Brand"});
  const pwr::CPUMetadata& cpu = cpuOf(metadata);
  EXPECT_EQ(26, cpu.m_family);
  EXPECT_EQ(2, cpu.m_model);
  EXPECT_EQ(1, cpu.m_stepping);
  EXPECT_EQ("Some Brand", metadata.getCPUNativeModelName(2));
  EXPECT_EQ("family 26 model 2 stepping 1", metadata.getFormattedCPUCodeName());
  EXPECT_EQ(2U, cpu.m_topology.getNumPackages());
  EXPECT_EQ(4U, cpu.m_topology.getNumCores());
  EXPECT_EQ(8U, cpu.m_topology.getNumThreads());
}

TEST_F(SystemScanTest, WithoutTheLeavesCpuinfoTellsTheProcessor) {
  m_machine.writeProc("cpuinfo",
                      "cpu family\t: 23\nmodel\t\t: 49\nmodel name\t: Old CPU\nstepping\t: 3\n");
  const auto& metadata = scan();
  EXPECT_EQ(23, cpuOf(metadata).m_family);
  EXPECT_EQ(49, cpuOf(metadata).m_model);
  EXPECT_EQ(3, cpuOf(metadata).m_stepping);
  EXPECT_EQ("Old CPU", metadata.getCPUNativeModelName(49));
}

TEST_F(SystemScanTest, AnEmptyMachineStillHasAProcessorWithAFrequency) {
  const auto& metadata = scan();
  EXPECT_GT(cpuOf(metadata).m_cpuWords.cpuFrequencyMHz, 0);
  EXPECT_EQ(1U, cpuOf(metadata).m_topology.getNumThreads());
}

TEST_F(SystemScanTest, CpufreqTellsLowAndHighFrequency) {
  m_machine.writeSys("devices/system/cpu/cpu0/cpufreq/cpuinfo_min_freq", "800000\n");
  m_machine.writeSys("devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "4800000\n");
  const pwr::CPUMetadata& cpu = cpuOf(scan());
  EXPECT_FLOAT_EQ(800, cpu.m_cpuWords.lowFrequencyMHz);
  EXPECT_FLOAT_EQ(4800, cpu.m_cpuWords.highFrequencyMHz);
}

TEST_F(SystemScanTest, TheOperatingSystemIsThePrettyName) {
  m_machine.writeSys("os-release", "NAME=\"Other\"\nPRETTY_NAME=\"Some Linux 12 (name)\"\n");
  EXPECT_EQ("Some Linux 12 (name)", scan().m_osName);
}

TEST_F(SystemScanTest, WithoutOsReleaseItIsTheKernelsName) { EXPECT_EQ("Linux", scan().m_osName); }

TEST_F(SystemScanTest, ThePlatformIsTheProductOrElseTheProcessor) {
  EXPECT_EQ("Brand", scan({std::nullopt, "", "Brand"}).m_platformName);
  m_machine.writeSys("class/dmi/id/product_name", "Some Board\n");
  EXPECT_EQ("Some Board", scan({std::nullopt, "", "Brand"}).m_platformName);
}

TEST_F(SystemScanTest, TicksAreNanosecondsOfTheMonotonicClock) {
  EXPECT_FLOAT_EQ(1000, scan().m_timestampFrequency);
}

TEST_F(SystemScanTest, TheVersionWordPacksTheToolVersion) {
  const auto& metadata = scan();
  const pwr::VersionRecord version = metadata.m_toolVersion;
  EXPECT_EQ(metadata.m_versionWord, (std::uint32_t{version.major} << 16U) +
                                        (std::uint32_t{version.minor} << 8U) + version.third);
  EXPECT_GT(metadata.m_versionWord, 0U);
}

TEST_F(SystemScanTest, TheCommandLineIsKept) {
  EXPECT_EQ((std::vector<std::string>{"qumetra", "collect"}), scan().m_collectorArguments);
}

TEST(UtcNow, HasTheFormOfADateWithItsZone) {
  // Not GoogleTest's regular expressions: they lack repetition counts.
  const std::string text = utcNowText();
  ASSERT_EQ(std::string("2000-01-01 00:00:00 UTC").size(), text.size());
  EXPECT_EQ('-', text[4]);
  EXPECT_EQ(':', text[13]);
  EXPECT_EQ(" UTC", text.substr(19));
}

}  // namespace
}  // namespace qumetra::test
