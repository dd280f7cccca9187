#include "qumetra/collect/platform_report.h"

#include <algorithm>
#include <deque>
#include <string>

#include <gtest/gtest.h>

#include "host/platform_metadata.h"
#include "qumetra/model/model.h"
#include "tests/collect/fake_machine.h"
#include "tests/support/log_capture.h"

namespace qumetra::test {
namespace {

/// Describes a machine made of files.
class Report : public ::testing::Test {
 protected:
  PlatformReport describe() {
    SystemScanOptions options;
    options.procfs = m_machine.procfs();
    options.sysfs = m_machine.sysfs();
    return describePlatform(m_model, options);
  }
  void addDisplay(const std::string& location) {
    m_machine.writeSys("bus/pci/devices/" + location + "/class", "0x030000\n");
  }
  static bool holds(const PlatformReport& report, const std::string& name) {
    return std::any_of(report.requirements.begin(), report.requirements.end(),
                       [&](const auto& state) { return state.name == name && state.holds; });
  }

  LogCapture m_log;
  FakeMachine m_machine;
  Model m_model;
};

TEST_F(Report, HasProcessorTopologyAndSystem) {
  m_machine.addTwoPackages();
  const PlatformReport report = describe();
  EXPECT_EQ(report.processor->m_topology.getNumPackages(), 2U);
  EXPECT_EQ(report.processor->m_topology.getNumThreads(), 8U);
  EXPECT_FALSE(report.system->m_osVersion.empty());
}

TEST_F(Report, OfAMachineWithoutFilesIsMadeAllTheSame) {
  const PlatformReport report = describe();
  EXPECT_TRUE(report.pciDevices.empty());
  EXPECT_TRUE(report.telemetryEndpoints.empty());
  EXPECT_FALSE(report.requirements.empty());
}

TEST_F(Report, ADisplayOnTheFirstBusIsIntegratedGraphics) {
  addDisplay("0000:00:02.0");
  const PlatformReport report = describe();
  EXPECT_EQ(report.pciDevices.size(), 1U);
  EXPECT_TRUE(holds(report, "IGFX"));
  EXPECT_TRUE(m_log.environment().notes.empty());
}

TEST_F(Report, ADisplayOnAnotherBusIsNotAndIsRemarkedUpon) {
  addDisplay("0000:01:00.0");
  EXPECT_FALSE(holds(describe(), "IGFX"));
  EXPECT_EQ(m_log.environment().notes,
            std::deque<std::string>{"An integrated graphics device is not detected. Integrated "
                                    "graphics related metrics are disabled."});
}

TEST_F(Report, TelemetryEndpointsAreKnownToTheSystem) {
  m_machine.writeSys("class/corvane_pmt/telem7/guid", "0x10\n");
  const PlatformReport report = describe();
  ASSERT_EQ(report.telemetryEndpoints.size(), 1U);
  EXPECT_EQ(report.system->m_aggregators.at(7).guid, 0x10U);
}

TEST_F(Report, WithoutAHubEnergyReportingDoesNotHold) {
  EXPECT_FALSE(holds(describe(), "EnergyReportingEnabled"));
}

}  // namespace
}  // namespace qumetra::test
