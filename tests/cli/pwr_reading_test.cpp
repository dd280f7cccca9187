// qumetra dump and qumetra check of import streams.
#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/tool.h"
#include "tests/readers/pwr_bytes.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::vector<std::string> linesWith(const std::string& text, const std::string& part) {
  std::vector<std::string> found;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (line.find(part) != std::string::npos) {
      found.push_back(line);
    }
  }
  return found;
}

/// What of each line stands behind its first blank, the offset being in front.
std::vector<std::string> withoutOffsets(std::vector<std::string> lines) {
  for (std::string& line : lines) {
    line.erase(0, line.find(' ') + 1);
  }
  return lines;
}

class ImportStream : public ::testing::Test {
 protected:
  std::string result(const std::string& content, const std::string& name = "r.pwr") const {
    writeFile(m_tool.file(name), content);
    return name;
  }
  ToolResult check(const std::string& content) { return m_tool.run({"check", result(content)}); }
  ToolResult dump(const std::string& content) { return m_tool.run({"dump", result(content)}); }
  ToolResult dumpJson(const std::string& content) {
    return m_tool.run({"dump", "--json", result(content)});
  }
  /// Makes r.pwr of a recording that comes with the tests.
  void replay(const std::string& recording) {
    const ToolResult replayed =
        m_tool.run({"replay", QM_RECORDINGS "/" + recording + ".qmrec", "-r", "kelto", "-o", "r"});
    ASSERT_EQ(0, replayed.status) << replayed.err;
  }

  Tool m_tool;
};

using PwrDump = ImportStream;
using PwrCheck = ImportStream;

TEST_F(PwrDump, ShowsEveryKindAsALine) {
  const ToolResult shown =
      dump(fromHex(kMagicHex + kCollectionHex + kSystemHex + kHardwareHex + kHeadMarkerHex +
                   kPowerThresholdHex + kInfoHex + kProcessHex + kThreadHex + kMetricHex +
                   kSampleHex + kPackageHex + kKernelWakelockHex + kUserWakelockHex));
  EXPECT_EQ(0, shown.status);
  EXPECT_EQ("", shown.err);
  EXPECT_EQ(
      "0 magic\n"
      "8 collection: \"power\", version 3.4.5\n"
      "42 system: host \"h\", platform \"pl\", OS \"\" of kind 5, version 5.15.0.91\n"
      "79 hardware: 1000000000 ticks per second, family 6, model 151, stepping 2, 64 bits, "
      "addresses up to 0xffffffffffffffff, 2 threads (package/core/thread): 1/2/0, 1/2/1\n"
      "131 head marker: start 1000, timer resolution / 100 10000\n"
      "156 power threshold: CPU 3600 MHz\n"
      "222 info \"entity\" 300: \"CPU0\", short \"C\", \"d\" 301, parent 299, info type 5\n"
      "279 process at 500: pid 77, \"sh\"\n"
      "314 thread end at 600: pid 77, tid 78\n"
      "342 metric 30: \"ab\", second name \"cd\", type 7, tab group 1610612737, timeline group "
      "1610612738\n"
      "391 sample at 72623859790382856: metric 30 \"ab\", real 1.5\n"
      "437 package at 4000: uid 10042, \"p\"\n"
      "461 kernel wakelock lock with timeout at 4000: \"W\", timeout 5000, pid 1, tid 2\n"
      "498 user wakelock unlock all at 4000: \"W\", screen bright, uid 10042 \"p\", pid 1, tid 2\n",
      shown.out);
}

TEST_F(PwrDump, ShowsTheHeaderAsJson) {
  const ToolResult shown = dumpJson(fromHex(kMagicHex + kCollectionHex + kSystemHex + kHardwareHex +
                                            kHeadMarkerHex + kPowerThresholdHex));
  EXPECT_EQ(0, shown.status);
  EXPECT_EQ(
      R"({"offset":0,"type":null,"kind":"magic","constant_4":2917064442})"
      "\n"
      R"({"offset":8,"type":44,"kind":"collection","size":30,"constant_8":1,"version_major":3,)"
      R"("version_minor":4,"version_patch":5,"constant_20":8796093022208,"name":"power"})"
      "\n"
      R"({"offset":42,"type":45,"kind":"system","size":33,"constant_8":1,"constant_10":0,)"
      R"("os_kind":5,"os_version":[5,15,0,91],"host_name":"h","platform_name":"pl",)"
      R"("os_name":"","last_text":""})"
      "\n"
      R"({"offset":79,"type":18,"kind":"hardware","size":48,"constant_8":1,)"
      R"("tsc_frequency_hz":1000000000,"tsc_frequency_hz_again":1000000000,)"
      R"("highest_address":18446744073709551615,"address_width":64,"family":6,"model":151,)"
      R"("stepping":2,"threads":[{"constant_0":0,"package":1,"core":2,"thread":0},)"
      R"({"constant_0":0,"package":1,"core":2,"thread":1}]})"
      "\n"
      R"({"offset":131,"type":null,"kind":"head_marker","constant_4":33554464,"constant_8":2,)"
      R"("first_tsc":1000,"timer_resolution_div_100":10000})"
      "\n"
      R"({"offset":156,"type":63,"kind":"power_threshold","size":62,"constant_8":1,)"
      R"("constant_12":12,"constant_14":")" +
          std::string(96, '0') +
          R"(","cpu_frequency_mhz":3600})"
          "\n",
      shown.out);
}

TEST_F(PwrDump, ShowsMetadataAndProcessesAsJson) {
  const ToolResult shown = dumpJson(fromHex(kInfoHex + kMetricHex + kProcessHex + kThreadHex));
  EXPECT_EQ(
      R"({"offset":0,"type":72,"kind":"info","size":45,"tsc":0,"sub_type":7,"version":2,)"
      R"("info_type":5,"value":301,"parent_uid":299,"uid":300,"long_name":"CPU0",)"
      R"("short_name":"C","kind_name":"entity","description":"d"})"
      "\n"
      R"({"offset":57,"type":72,"kind":"metric","size":37,"tsc":0,"sub_type":8,"version":2,)"
      R"("metric_type":7,"metric_id":30,"quantity_uid":4294967295,"tab_group_uid":1610612737,)"
      R"("timeline_group_uid":1610612738,"name":"ab","second_name":"cd"})"
      "\n"
      R"({"offset":106,"type":0,"kind":"process","size":7,"event":4096,"constant_8":0,"pid":77,)"
      R"("constant_16":0,"tsc":500,"path":"sh"})"
      "\n"
      R"({"offset":141,"type":null,"kind":"thread","event":8192,"constant_8":0,"pid":77,)"
      R"("tid":78,"tsc":600})"
      "\n",
      shown.out);
}

TEST_F(PwrDump, ShowsWakelocksAsJson) {
  const ToolResult shown = dumpJson(fromHex(kPackageHex + kKernelWakelockHex + kUserWakelockHex));
  EXPECT_EQ(
      R"({"offset":0,"type":68,"kind":"package","size":12,"tsc":4000,"uid":10042,"name":"p"})"
      "\n"
      R"({"offset":24,"type":64,"kind":"kernel_wakelock","size":17,"tid":2,"pid":1,"tsc":4000,)"
      R"("action":2,"timeout":5000,"name":"W"})"
      "\n"
      R"({"offset":61,"type":67,"kind":"user_wakelock","size":18,"tid":2,"pid":1,"tsc":4000,)"
      R"("action":4,"flag":3,"uid":10042,"constant_30":0,"name":"W"})"
      "\n",
      shown.out);
}

TEST_F(PwrDump, ShowsValuesOfAttributesAsTheirKindsTell) {
  const std::string sample = sampleBytes(9, {{PwrAttributeId::Int, ~std::uint64_t{0}},
                                             {PwrAttributeId::Uint, ~std::uint64_t{0}},
                                             {PwrAttributeId::Real, 0x3FF8000000000000},
                                             {PwrAttributeId::IntLowerBound, ~std::uint64_t{1}},
                                             {PwrAttributeId::RealUpperBound, 0x7FF0000000000000},
                                             {PwrAttributeId{19}, 5}});
  EXPECT_EQ(R"({"offset":0,"type":71,"kind":"sample","size":82,"tsc":9,"sub_type":6,"version":2,)"
            R"("attributes":[{"id":9,"name":"int","value":-1},)"
            R"({"id":10,"name":"uint","value":18446744073709551615},)"
            R"({"id":11,"name":"real","value":1.5,"bits":4609434218613702656},)"
            R"({"id":12,"name":"int_lower_bound","value":-2},)"
            R"({"id":17,"name":"real_upper_bound","value":"inf","bits":9218868437227405312},)"
            R"({"id":19,"name":"unknown","value":5}]})"
            "\n",
            dumpJson(sample).out);
  EXPECT_EQ(
      "0 sample at 9: int -1, uint 18446744073709551615, real 1.5, int_lower_bound -2, "
      "real_upper_bound inf, unknown 5\n",
      dump(sample).out);
}

TEST_F(PwrDump, RealOfTheLegacyVersionIsAnUnsignedNumber) {
  std::string sample = sampleBytes(9, {{PwrAttributeId::Real, 1}});
  sample[18] = 1;
  EXPECT_THAT(dumpJson(sample).out,
              EndsWith(R"("version":1,"attributes":[{"id":11,"name":"real","value":1}]})"
                       "\n"));
  EXPECT_EQ("0 sample at 9: real 1\n", dump(sample).out);
}

TEST_F(PwrDump, NamesCannotBreakLines) {
  EXPECT_EQ("0 info \"k\" 1: \"a\\nb\\\"\\u001b\\udcff\", \"\" 1, info type 1\n",
            dump(infoBytes("k", 1, "a\nb\"\x1b\xff")).out);
}

TEST_F(PwrDump, ShowsWhatCanBeReadOfABrokenFile) {
  const ToolResult shown = dump(fromHex(kMagicHex + kThreadHex) + "xyz");
  EXPECT_EQ(1, shown.status);
  EXPECT_EQ("0 magic\n8 thread end at 600: pid 77, tid 78\n", shown.out);
  EXPECT_EQ("r.pwr: byte 36: the file ends in the first word of a record\n", shown.err);
}

TEST_F(PwrDump, SeveralFilesAreShownOneByOne) {
  const ToolResult shown =
      m_tool.run({"dump", result(infoBytes("entity", 7, "seven"), "a.pwr"),
                  result(sampleBytes(1, {{PwrAttributeId::Entity, 7}}), "b.pwr")});
  EXPECT_EQ("0 info \"entity\" 7: \"seven\", \"\" 7, info type 1\n0 sample at 1: entity 7\n",
            shown.out);
}

TEST_F(PwrDump, ImportStreamIsReadUnderAnyName) {
  const ToolResult shown = m_tool.run({"dump", result(fromHex(kMagicHex), "r.qmbin")});
  EXPECT_EQ(0, shown.status);
  EXPECT_EQ("0 magic\n", shown.out);
}

TEST_F(PwrDump, ImportStreamThatBeginsOtherwiseIsKnownByItsSuffix) {
  EXPECT_EQ(0, dump(fromHex(kThreadHex)).status);
}

TEST_F(PwrDump, MissingFileIsOneLine) {
  const ToolResult shown = m_tool.run({"dump", "none.pwr"});
  EXPECT_EQ(2, shown.status);
  EXPECT_EQ("none.pwr: No such file or directory\n", shown.err);
}

TEST_F(PwrDump, FilesOfDifferentFormatsAreRefused) {
  const ToolResult shown = m_tool.run({"dump", result(fromHex(kMagicHex)), result("", "r.qmbin")});
  EXPECT_EQ(2, shown.status);
  EXPECT_EQ("qumetra: r.qmbin: not of the same format as r.pwr\n", shown.err);
}

TEST_F(PwrDump, TracedRecordingIsReadBackAsItSaid) {
  ASSERT_NO_FATAL_FAILURE(replay("kelto_traced"));
  const std::string shown = m_tool.run({"dump", "r.pwr"}).out;
  const std::string grey = R"("153,153,153|153,153,153")";
  const std::string green = R"("1,150,0|1,150,0")";
  const std::vector<std::string> samples = withoutOffsets(linesWith(shown, " sample "));
  ASSERT_EQ(3U, samples.size());
  const std::string cpu = R"(entity 300 "CPU0", process 77, thread 78, field )";
  EXPECT_THAT(samples[0], StartsWith(R"(sample at 2000: metric 20 "Memory States", )" + cpu +
                                     R"(310 "Self Refresh", duration 400, color )"));
  EXPECT_THAT(samples[0], HasSubstr(grey + R"(, info 402 "cause", info )"));
  EXPECT_THAT(samples[0], EndsWith(R"( "Refresh", quantity 200 "Frequency", uint 2400)"));
  EXPECT_THAT(samples[1], StartsWith(R"(sample at 2500: metric 20 "Memory States", )" + cpu +
                                     R"(311 "C6", duration 0, color )"));
  EXPECT_THAT(samples[1], EndsWith(green + ", int_lower_bound -2, int_upper_bound 5"));
  EXPECT_THAT(samples[2],
              StartsWith(R"(sample at 2600: metric 21 "Wakeups", )" + cpu + R"(311 "C6", )"));
  EXPECT_THAT(samples[2], EndsWith(green + ", uint 1"));
  EXPECT_THAT(
      withoutOffsets(linesWith(shown, "pid 77")),
      ElementsAre("process at 500: pid 77, \"stress\"", "thread start at 600: pid 77, tid 78",
                  "process at 8000: pid 77, \"stress\"", "thread end at 8000: pid 77, tid 78"));
}

TEST_F(PwrDump, ResidencyRecordingIsReadBackAsItSaid) {
  ASSERT_NO_FATAL_FAILURE(replay("kelto_residency"));
  const std::string shown = m_tool.run({"dump", "r.pwr"}).out;
  const std::vector<std::string> samples = withoutOffsets(linesWith(shown, " sample "));
  ASSERT_EQ(4U, samples.size());
  EXPECT_THAT(samples[0],
              StartsWith(R"(sample at 2000: metric 10 "Core C-State Residency", entity 301 )"
                         R"("Core_4", field 310 "C0", duration 900, color )"));
  EXPECT_THAT(samples[0], HasSubstr(R"(, uint 700, field 311 "C6", duration 100, color )"));
  EXPECT_THAT(samples[0], EndsWith(", uint 300"));
  EXPECT_THAT(samples[1], HasSubstr(R"(field 311 "C6", duration 1000, color )"));
  EXPECT_THAT(samples[1], EndsWith(", uint 1000"));
  EXPECT_THAT(samples[2], StartsWith(R"(sample at 2000: metric 12 "Package Temperature", )"
                                     R"(entity 300 "Package_0", field 312 "NA", duration 0, )"));
  EXPECT_THAT(samples[2], EndsWith(", int 45"));
  EXPECT_THAT(samples[3], HasSubstr("duration 5, "));
  EXPECT_THAT(samples[3], EndsWith(", real 45.5"));
}

TEST_F(PwrDump, WakelockRecordingIsReadBackAsItSaid) {
  ASSERT_NO_FATAL_FAILURE(replay("kelto_wakelocks"));
  const std::string shown = m_tool.run({"dump", "r.pwr"}).out;
  EXPECT_THAT(
      withoutOffsets(linesWith(shown, "kernel wakelock")),
      ElementsAre(
          R"(kernel wakelock initial lock at 3500: "PowerManager", timeout 0, pid 0, tid 0)",
          R"(kernel wakelock unlock all at 5000: "PowerManager", timeout 0, pid 0, tid 0)",
          R"(kernel wakelock initial lock at 7000: "PowerManager", timeout 0, pid 0, tid 0)",
          R"(kernel wakelock unlock all at 7000: "PowerManager", timeout 0, pid 0, tid 0)"));
  EXPECT_THAT(
      withoutOffsets(linesWith(shown, "10042")),
      ElementsAre(
          R"(package at 6000: uid 10042, "com.example.music")",
          R"(user wakelock lock at 5000: "Audio", screen dim, uid 10042 "com.example.music", pid 900, tid 901)",
          R"(user wakelock unlock at 6000: "Audio", screen dim, uid 10042 "com.example.music", pid 900, tid 901)"));
}

TEST_F(PwrCheck, PassesWhatTheWriterMakes) {
  for (const char* recording : {"kelto_residency", "kelto_traced", "kelto_wakelocks"}) {
    ASSERT_NO_FATAL_FAILURE(replay(recording));
    const ToolResult checked = m_tool.run({"check", "r.pwr"});
    EXPECT_EQ(0, checked.status) << recording;
    EXPECT_EQ("", checked.err) << recording;
    EXPECT_THAT(checked.out, EndsWith(" 0 warnings, 0 faults\n")) << recording;
  }
}

TEST_F(PwrCheck, PassesALiveCollection) {
  const ToolResult collected = m_tool.run({"collect", "-r", "kelto", "-t", "0.3", "-o", "r"});
  ASSERT_EQ(0, collected.status) << collected.err;
  const ToolResult checked = m_tool.run({"check", "r.pwr"});
  EXPECT_EQ(0, checked.status);
  EXPECT_EQ("", checked.err);
  EXPECT_THAT(linesWith(m_tool.run({"dump", "r.pwr"}).out, R"( info "entity" )"),
              testing::Not(IsEmpty()));
}

TEST_F(PwrCheck, CountsWhatIsThere) {
  const ToolResult checked =
      check(fromHex(kMagicHex + kKernelWakelockHex + kPackageHex + kUserWakelockHex) +
            infoBytes("entity", 7, "seven") + sampleBytes(1000, {{PwrAttributeId::Entity, 7}}));
  EXPECT_EQ("r.pwr: 6 records, 0 metrics, 1 samples, 2 wakelock records, 0 warnings, 0 faults\n",
            checked.out);
}

TEST_F(PwrCheck, UndeclaredUidIsAWarning) {
  const ToolResult checked =
      check(fromHex(kMagicHex) + sampleBytes(1000, {{PwrAttributeId::Entity, 7}}));
  EXPECT_EQ(0, checked.status);
  EXPECT_EQ("r.pwr: byte 8: warning: no record declares the entity 7\n", checked.err);
  EXPECT_THAT(checked.out, EndsWith(" 1 warnings, 0 faults\n"));
}

TEST_F(PwrCheck, PackageThatNoRecordNamesIsAWarning) {
  const ToolResult checked = check(fromHex(kMagicHex + kUserWakelockHex));
  EXPECT_EQ(0, checked.status);
  EXPECT_EQ("r.pwr: byte 8: warning: no record declares the package 10042\n", checked.err);
}

TEST_F(PwrCheck, TimeThatDoesNotRiseIsAFault) {
  const ToolResult checked = check(fromHex(kMagicHex) + infoBytes("entity", 7, "seven") +
                                   sampleBytes(2000, {{PwrAttributeId::Entity, 7}}) +
                                   sampleBytes(2000, {{PwrAttributeId::Entity, 7}}));
  EXPECT_EQ(1, checked.status);
  EXPECT_EQ("r.pwr: byte 103: metric 0, entity 7: time 2000 does not come after 2000\n",
            checked.err);
  EXPECT_THAT(checked.out, EndsWith(" 0 warnings, 1 faults, the first at byte 103\n"));
}

TEST_F(PwrCheck, BrokenFramingIsAFault) {
  const ToolResult checked = check(fromHex(kMagicHex + "01 02 03 04"));
  EXPECT_EQ(1, checked.status);
  EXPECT_EQ("r.pwr: byte 8: no record begins with 0x4030201; what follows cannot be read\n",
            checked.err);
  EXPECT_THAT(checked.out, EndsWith(" 1 faults, the first at byte 8\n"));
}

TEST_F(PwrCheck, WrongSizeIsAFault) {
  std::string bytes = fromHex(kMagicHex + kPowerThresholdHex) + 'x';
  bytes[12] = 63;
  const ToolResult checked = check(bytes);
  EXPECT_EQ(1, checked.status);
  EXPECT_EQ("r.pwr: byte 8: the size 63 leaves 1 bytes of the record over\n", checked.err);
}

TEST_F(PwrCheck, CutFileIsAFault) {
  const ToolResult checked = check(fromHex(kMagicHex) + fromHex(kSampleHex).substr(0, 40));
  EXPECT_EQ(1, checked.status);
  EXPECT_EQ("r.pwr: byte 8: the file ends in a record: 40 of 46 bytes are there\n", checked.err);
}

TEST_F(PwrCheck, EmptyFileIsAFault) {
  const ToolResult checked = check("");
  EXPECT_EQ(1, checked.status);
  EXPECT_EQ("r.pwr: byte 0: magic records are missing: 0 of 1 are there\n", checked.err);
}

TEST_F(PwrCheck, OneFaultyFileOfSeveralDecidesTheStatus) {
  const ToolResult checked =
      m_tool.run({"check", result("", "bad.pwr"), result(fromHex(kMagicHex), "good.pwr")});
  EXPECT_EQ(1, checked.status);
  EXPECT_THAT(checked.out, HasSubstr("\ngood.pwr: 1 records, "));
}

TEST_F(PwrCheck, ManyFaultsOfAFileAreCutShort) {
  std::string bytes = fromHex(kMagicHex) + infoBytes("entity", 7, "seven");
  for (int i = 0; i < 31; ++i) {
    bytes += sampleBytes(2000, {{PwrAttributeId::Entity, 7}});
  }
  const ToolResult checked = check(bytes);
  EXPECT_THAT(checked.err, EndsWith("r.pwr: 10 more of these\n"));
  EXPECT_THAT(checked.out, EndsWith(" 30 faults, the first at byte 103\n"));
}

}  // namespace
}  // namespace qumetra::test
