#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "client/src/common/pw_pmt_helper.h"
#include "host/services.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace pwr {
namespace {

using qumetra::test::LogCapture;
using qumetra::test::readFile;
using qumetra::test::RecordingSink;
using qumetra::test::TempDir;
using qumetra::test::writeFile;
using Delays = std::map<int, int>;

namespace fs = std::filesystem;

// The attributes of a real device keep their values when they are opened for writing; ordinary
// files lose them. So the number comes from here, and the file shows what was written.
int s_delayToRead = 2000;
bool s_canRead = true;
bool s_canWrite = true;

bool readFakeDelay(FILE* /*file*/, int& delay) {
  delay = s_delayToRead;
  return s_canRead;
}

bool writeDelay(FILE* file, int delay) {
  return s_canWrite && pmtSystemDelayAccess().writeDelay(file, delay);
}

/// A tree with telemetry devices.
class PmtHelper : public ::testing::Test {
 protected:
  PmtHelper() {
    setSysfsRoot(m_root.path().string());
    fs::create_directories(m_root.path() / "class/corvane_pmt");
    setPmtDelayAccess({readFakeDelay, writeDelay});
  }
  ~PmtHelper() override { setSysfsRoot("/sys"); }

  /// Makes the link of a device to a target, as it stands.
  void link(int index, const std::string& target) {
    fs::create_symlink(target, m_root.path() / ("class/corvane_pmt/telem" + std::to_string(index)));
  }
  std::string device(int index) const { return m_root.file("devices/d" + std::to_string(index)); }
  std::string delayFile(int index) const { return device(index) + "/power/autosuspend_delay_ms"; }
  /// A device whose delay can be written.
  void addDevice(int index) {
    writeFile(delayFile(index), "2000\n");
    addDeviceWithoutDelay(index);
  }
  void addDeviceWithoutDelay(int index) {
    link(index, "../../devices/d" + std::to_string(index) + "/intf/corvane_pmt/telem");
  }

  TempDir m_root;
  LogCapture m_log;
};

TEST_F(PmtHelper, SourceDropsTheLastThreePartsAndTheLeadingSteps) {
  link(0, "../../a/b/c/d/e");
  EXPECT_EQ(pmtGetSourcePath(0), m_root.file("a/b"));
}

TEST_F(PmtHelper, SourceOfAMissingLinkIsEmpty) {
  EXPECT_EQ(pmtGetSourcePath(0), "");
  EXPECT_EQ(pmtGetSourcePath(-1), "");
}

TEST_F(PmtHelper, SourceOfATargetWithFewerThanThreeSlashesIsEmpty) {
  link(0, "a/b/c");
  link(1, "a");
  EXPECT_EQ(pmtGetSourcePath(0), "");
  EXPECT_EQ(pmtGetSourcePath(1), "");
}

TEST_F(PmtHelper, SourceOfATargetThatFillsTheBufferIsWhole) {
  const std::string tail = "/x/y/z";
  std::string target = "../d";
  while (target.size() + tail.size() < 1024 - 1) {
    target += "/d";
  }
  target += std::string(1024 - tail.size() - target.size(), 'e') + tail;
  ASSERT_EQ(target.size(), 1024U);
  link(0, target);
  const std::string whole = m_root.path().string() + target.substr(2, 1024 - 2 - tail.size());
  EXPECT_EQ(pmtGetSourcePath(0), whole.substr(0, 1024));
}

TEST_F(PmtHelper, SourceOfALongerTargetIsMadeFromItsFirstThousandTwentyFourBytes) {
  link(0, "a/b/c/d/" + std::string(200, 'e') + "/" + std::string(200, 'f') + "/" +
              std::string(200, 'g') + "/" + std::string(200, 'h') + "/" + std::string(200, 'i') +
              "/" + std::string(200, 'j'));
  EXPECT_EQ(pmtGetSourcePath(0), m_root.file("a/b/c/d/" + std::string(200, 'e') + "/" +
                                             std::string(200, 'f') + "/" + std::string(200, 'g')));
}

TEST_F(PmtHelper, SetShortensAndRemembersEveryDelay) {
  addDevice(0);
  addDevice(1);
  pmtSetAutoSuspendDelay();
  EXPECT_EQ(readFile(delayFile(0)), "1");
  EXPECT_EQ(readFile(delayFile(1)), "1");
  EXPECT_EQ(s_pmtOriginalAutoSuspendDelayMap, (Delays{{0, 2000}, {1, 2000}}));
  EXPECT_TRUE(m_log.warnings().empty());
}

TEST_F(PmtHelper, AGapDoesNotStopTheSearch) {
  addDevice(0);
  addDevice(1);
  addDevice(255);
  pmtSetAutoSuspendDelay();
  EXPECT_EQ(s_pmtOriginalAutoSuspendDelayMap, (Delays{{0, 2000}, {1, 2000}, {255, 2000}}));
}

TEST_F(PmtHelper, DevicesEndAtTwoHundredFiftyFive) {
  addDevice(256);
  pmtSetAutoSuspendDelay();
  EXPECT_TRUE(s_pmtOriginalAutoSuspendDelayMap.empty());
  EXPECT_EQ(readFile(delayFile(256)), "2000\n");
}

TEST_F(PmtHelper, AFileOfDeviceZeroThatDoesNotOpenIsPassedOver) {
  addDeviceWithoutDelay(0);
  addDevice(1);
  pmtSetAutoSuspendDelay();
  EXPECT_EQ(s_pmtOriginalAutoSuspendDelayMap, (Delays{{1, 2000}}));
}

TEST_F(PmtHelper, AFileOfAnotherDeviceThatDoesNotOpenIsTheEnd) {
  addDevice(0);
  addDeviceWithoutDelay(1);
  addDevice(2);
  pmtSetAutoSuspendDelay();
  EXPECT_EQ(s_pmtOriginalAutoSuspendDelayMap, (Delays{{0, 2000}}));
  EXPECT_EQ(readFile(delayFile(2)), "2000\n");
}

TEST_F(PmtHelper, AnUnreadableDelayIsAWarningAndLeftOut) {
  addDevice(0);
  s_canRead = false;
  pmtSetAutoSuspendDelay();
  EXPECT_TRUE(s_pmtOriginalAutoSuspendDelayMap.empty());
  EXPECT_EQ(m_log.warnings(),
            (RecordingSink::Texts{{2, "WARNING: couldn't read autosuspend_delay_ms in " +
                                          delayFile(0) + ", PMT endpoint unusable\n"}}));
}

TEST_F(PmtHelper, OpeningAnOrdinaryFileEmptiesItSoThatTheSystemsReadFails) {
  addDevice(0);
  setPmtDelayAccess(pmtSystemDelayAccess());
  pmtSetAutoSuspendDelay();
  EXPECT_TRUE(s_pmtOriginalAutoSuspendDelayMap.empty());
  EXPECT_EQ(readFile(delayFile(0)), "");
  EXPECT_EQ(m_log.warnings().size(), 1U);
}

TEST_F(PmtHelper, ADelayThatCannotBeWrittenIsAWarningAndRemembered) {
  addDevice(0);
  s_canWrite = false;
  pmtSetAutoSuspendDelay();
  EXPECT_EQ(s_pmtOriginalAutoSuspendDelayMap, (Delays{{0, 2000}}));
  EXPECT_EQ(m_log.warnings(),
            (RecordingSink::Texts{
                {2, "WARNING: Could not write value 1 to autosuspend_delay_ms for file " +
                        delayFile(0) + "\n"}}));
}

TEST_F(PmtHelper, RestorePutsTheDelaysBackAndForgetsThem) {
  addDevice(0);
  addDevice(3);
  pmtSetAutoSuspendDelay();
  pmtRestoreAutoSuspendDelay();
  EXPECT_EQ(readFile(delayFile(0)), "2000");
  EXPECT_EQ(readFile(delayFile(3)), "2000");
  EXPECT_TRUE(s_pmtOriginalAutoSuspendDelayMap.empty());
}

TEST_F(PmtHelper, RestoreWithoutASetTouchesNothing) {
  addDevice(0);
  pmtRestoreAutoSuspendDelay();
  EXPECT_EQ(readFile(delayFile(0)), "2000\n");
}

TEST_F(PmtHelper, RestoreWritesRememberedDevicesOnly) {
  addDevice(0);
  addDevice(1);
  s_pmtOriginalAutoSuspendDelayMap[1] = 300;
  pmtRestoreAutoSuspendDelay();
  EXPECT_EQ(readFile(delayFile(0)), "");
  EXPECT_EQ(readFile(delayFile(1)), "300");
}

TEST_F(PmtHelper, RestoreStopsWhereSetDoesAndForgetsAllTheSame) {
  addDeviceWithoutDelay(0);
  addDevice(1);
  addDeviceWithoutDelay(2);
  addDevice(3);
  s_pmtOriginalAutoSuspendDelayMap = {{1, 300}, {3, 300}};
  pmtRestoreAutoSuspendDelay();
  EXPECT_EQ(readFile(delayFile(1)), "300");
  EXPECT_EQ(readFile(delayFile(3)), "2000\n");
  EXPECT_TRUE(s_pmtOriginalAutoSuspendDelayMap.empty());
}

TEST_F(PmtHelper, AFailedRestoreIsAWarning) {
  addDevice(0);
  s_pmtOriginalAutoSuspendDelayMap[0] = 300;
  s_canWrite = false;
  pmtRestoreAutoSuspendDelay();
  EXPECT_EQ(m_log.warnings(),
            (RecordingSink::Texts{{2,
                                   "WARNING: Could not restore autosuspend_delay_ms to original "
                                   "value of 300 for file " +
                                       delayFile(0) + "\n"}}));
}

TEST_F(PmtHelper, ASecondSetBeforeTheRestoreLosesTheOriginal) {
  addDevice(0);
  pmtSetAutoSuspendDelay();
  s_delayToRead = 1;
  pmtSetAutoSuspendDelay();
  EXPECT_EQ(s_pmtOriginalAutoSuspendDelayMap, (Delays{{0, 1}}));
}

TEST_F(PmtHelper, WarningsNeedTheLevelOrTheTag) {
  addDevice(0);
  s_canRead = false;
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  pmtSetAutoSuspendDelay();
  EXPECT_TRUE(m_log.warnings().empty());
  m_log.environment().enabledTags.add("pmt-helper");
  pmtSetAutoSuspendDelay();
  EXPECT_EQ(m_log.warnings().size(), 1U);
}

/// A file opened as the system's access gets it, but not emptied.
class DelayFile : public ::testing::Test {
 protected:
  FILE* open(const std::string& text) {
    writeFile(m_dir.file("delay"), text);
    m_file = std::fopen(m_dir.file("delay").c_str(), "r+");
    return m_file;
  }
  ~DelayFile() override {
    if (m_file != nullptr) {
      std::fclose(m_file);
    }
  }

  TempDir m_dir;
  FILE* m_file = nullptr;
};

TEST_F(DelayFile, NumberIsRead) {
  int delay = 0;
  EXPECT_TRUE(pmtSystemDelayAccess().readDelay(open("-1\n"), delay));
  EXPECT_EQ(delay, -1);
}

TEST_F(DelayFile, TextWithoutAFittingNumberFails) {
  for (const char* const text : {"", "x", "\n", "99999999999"}) {
    int delay = 7;
    EXPECT_FALSE(pmtSystemDelayAccess().readDelay(open(text), delay)) << text;
    EXPECT_EQ(delay, 7);
    std::fclose(m_file);
    m_file = nullptr;
  }
}

TEST_F(DelayFile, BetweenReadingAndWritingThePositionGoesBackToTheStart) {
  int delay = 0;
  FILE* const file = open("2000\n");
  ASSERT_TRUE(pmtSystemDelayAccess().readDelay(file, delay));
  ASSERT_TRUE(pmtSystemDelayAccess().writeDelay(file, 1));
  EXPECT_EQ(readFile(m_dir.file("delay")), "1000\n");
}

}  // namespace
}  // namespace pwr
