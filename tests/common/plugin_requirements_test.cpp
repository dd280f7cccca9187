#include "client/src/common/plugin_requirements.h"

#include <cstdint>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "client/src/common/platform_text.h"
#include "host/platform_metadata.h"
#include "host/system_metadata.h"
#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using qumetra::test::LogCapture;
using qumetra::test::RecordingSink;

constexpr const char* kGraphicsNote =
    "An integrated graphics device is not detected. Integrated graphics related metrics are "
    "disabled.";

bool holds(const PluginRequirement& requirement, const SystemMetadata& system,
           const RequirementValues& values = {}) {
  return requirement.isPluginRequirementSatisfied_i(system, values);
}

CPUMetadata cpu(std::uint8_t family, std::uint8_t model, std::uint8_t stepping) {
  CPUMetadata result;
  result.m_family = family;
  result.m_model = model;
  result.m_stepping = stepping;
  return result;
}

/// A system whose processor is family 6, model 151, stepping 2.
class FmsRequirement : public ::testing::Test {
 protected:
  FmsRequirement() { m_system.m_platformMetadata[SystemMetadata::kCpu] = &m_cpu; }
  bool holdsFor(const CPUMetadata& wanted) {
    return holds(FMSPluginRequirement(wanted, false), m_system);
  }

  CPUMetadata m_cpu = cpu(6, 151, 2);
  SystemMetadata m_system;
};

TEST_F(FmsRequirement, FamilyModelAndSteppingMustMatch) {
  EXPECT_TRUE(holdsFor(cpu(6, 151, 2)));
  EXPECT_FALSE(holdsFor(cpu(5, 151, 2)));
  EXPECT_FALSE(holdsFor(cpu(6, 150, 2)));
  EXPECT_FALSE(holdsFor(cpu(6, 151, 3)));
}

TEST_F(FmsRequirement, SteppingZeroOfTheRequirementIgnoresTheStepping) {
  EXPECT_TRUE(holdsFor(cpu(6, 151, 0)));
  EXPECT_FALSE(holdsFor(cpu(6, 150, 0)));
}

TEST_F(FmsRequirement, SteppingZeroOfTheSystemIgnoresTheStepping) {
  m_cpu.m_stepping = 0;
  EXPECT_TRUE(holdsFor(cpu(6, 151, 3)));
  EXPECT_FALSE(holdsFor(cpu(5, 151, 3)));
}

TEST_F(FmsRequirement, DoesNotHoldWithoutAProcessor) {
  m_system.m_platformMetadata.clear();
  EXPECT_FALSE(holdsFor(cpu(6, 151, 2)));
  m_system.m_platformMetadata[SystemMetadata::kCpu] = nullptr;
  EXPECT_FALSE(holdsFor(cpu(6, 151, 2)));
}

TEST_F(FmsRequirement, DoesNotHoldForAnEntryOfAnotherClass) {
  PCHMetadata hub;
  m_system.m_platformMetadata[SystemMetadata::kCpu] = &hub;
  EXPECT_FALSE(holdsFor(cpu(0, 0, 0)));
}

TEST(ScuRequirement, HoldsForTheSystemsWord) {
  SystemMetadata system;
  system.m_scuWord = 7;
  EXPECT_TRUE(holds(SCUPluginRequirement(7, false), system));
  EXPECT_FALSE(holds(SCUPluginRequirement(8, false), system));
}

TEST(OsNameRequirement, HoldsForTheWholeName) {
  SystemMetadata system;
  system.m_osName = "Linux";
  EXPECT_TRUE(holds(OSNamePluginRequirement("Linux", false), system));
  EXPECT_FALSE(holds(OSNamePluginRequirement("Lin", false), system));
  EXPECT_FALSE(holds(OSNamePluginRequirement("linux", false), system));
}

TEST(PchRequirement, HoldsForAPartOfThePlatformsName) {
  SystemMetadata system;
  system.m_platformName = "Board ABC-P";
  EXPECT_TRUE(holds(PCHPluginRequirement("ABC", false), system));
  EXPECT_FALSE(holds(PCHPluginRequirement("abc", false), system));
}

TEST(CpuidRequirement, ComparesTheMaskedRegister) {
  std::uint32_t words[4] = {};
  getCpuid(0, words[0], words[1], words[2], words[3]);
  for (std::uint32_t index = 0; index < 4; ++index) {
    const std::uint32_t value = words[index] & 0xFF00FFU;
    EXPECT_TRUE(holds(CPUIDRequirement(0, index, 0xFF00FF, value, false), {})) << index;
    EXPECT_FALSE(holds(CPUIDRequirement(0, index, 0xFF00FF, value ^ 1U, false), {})) << index;
  }
}

TEST(CpuidRequirement, ARegisterThatIsNotThereNeverHolds) {
  EXPECT_FALSE(holds(CPUIDRequirement(0, 4, 0, 0, false), {}));
  EXPECT_FALSE(holds(CPUIDRequirement(0, 0xFFFFFFFF, 0, 0, false), {}));
}

class EnergyReporting : public ::testing::Test {
 protected:
  EnergyReporting() { m_system.m_platformMetadata[SystemMetadata::kPch] = &m_hub; }
  bool holdsWithText(const std::string& featureText) {
    return holds(EnergyReportingPluginRequirement("KEY", featureText), m_system);
  }

  LogCapture m_log;
  PCHMetadata m_hub;
  SystemMetadata m_system;
};

TEST_F(EnergyReporting, DoesNotHoldWithoutAHub) {
  m_system.m_platformMetadata.clear();
  EXPECT_FALSE(holdsWithText(""));
}

TEST_F(EnergyReporting, DoesNotHoldForAnEntryOfAnotherClass) {
  CPUMetadata processor;
  m_system.m_platformMetadata[SystemMetadata::kPch] = &processor;
  EXPECT_FALSE(holdsWithText(""));
}

TEST_F(EnergyReporting, HoldsForAHubThatTellsNothing) { EXPECT_TRUE(holdsWithText("")); }

TEST_F(EnergyReporting, DoesNotHoldWithoutItsKeyAndSaysNothing) {
  m_hub.m_values["OTHER_ENERGY-REPORTING"] = "4";
  EXPECT_FALSE(holdsWithText(""));
  EXPECT_TRUE(m_log.environment().notes.empty());
}

TEST_F(EnergyReporting, BitTwoDecides) {
  m_hub.m_values["KEY_ENERGY-REPORTING"] = "0x4";
  EXPECT_TRUE(holdsWithText(""));
  m_hub.m_values["KEY_ENERGY-REPORTING"] = "0xFB";
  EXPECT_FALSE(holdsWithText(""));
}

TEST_F(EnergyReporting, TellsOnceWhichFeatureIsDisabled) {
  m_hub.m_values["KEY_ENERGY-REPORTING"] = "0";
  EXPECT_FALSE(holdsWithText("Hub power"));
  EXPECT_FALSE(holdsWithText("Other"));
  const std::string note = "Energy Reporting is disabled in BIOS. Hub power is disabled.";
  EXPECT_EQ(m_log.warnings(), (RecordingSink::Texts{{0, note + "\n"}}));
  EXPECT_EQ(m_log.environment().notes, std::deque<std::string>{note});
}

TEST_F(EnergyReporting, WithoutAFeatureCertainMetricsAreDisabled) {
  m_hub.m_values["KEY_ENERGY-REPORTING"] = "0";
  EXPECT_FALSE(holdsWithText(""));
  EXPECT_EQ(m_log.environment().notes,
            std::deque<std::string>{"Energy Reporting is disabled in BIOS. Certain PCH related "
                                    "metrics are disabled."});
}

TEST(GraphicsRequirement, HoldsWithADevice) {
  const LogCapture log;
  SystemMetadata system;
  system.m_hasIntegratedGraphics = 1;
  EXPECT_TRUE(holds(IGFXPresentPluginRequirement(false), system));
  EXPECT_TRUE(log.warnings().empty());
}

TEST(GraphicsRequirement, RepeatedFailuresGiveOneNoteThatShowsAtAnyLevel) {
  LogCapture log(PluginEnvironment::kQuiet);
  EXPECT_FALSE(holds(IGFXPresentPluginRequirement(false), {}));
  EXPECT_FALSE(holds(IGFXPresentPluginRequirement(false), {}));
  EXPECT_EQ(log.warnings(), (RecordingSink::Texts{{0, std::string(kGraphicsNote) + "\n"}}));
  EXPECT_EQ(log.environment().notes, std::deque<std::string>{kGraphicsNote});
}

TEST(VtioRequirement, HoldsOnNewBuildsAndWithoutSecureSignIn) {
  SystemMetadata system;
  system.m_osBuildNumber = 26100;
  system.m_secureSignIn = 1;
  EXPECT_TRUE(holds(VTIODisablePluginRequirement("F"), system));
  system.m_osBuildNumber = 26099;
  EXPECT_FALSE(holds(VTIODisablePluginRequirement("F"), system));
  for (const std::uint8_t notOn : {std::uint8_t{0}, std::uint8_t{2}}) {
    system.m_secureSignIn = notOn;
    EXPECT_TRUE(holds(VTIODisablePluginRequirement("F"), system));
  }
}

TEST(VtioRequirement, TellsOnceForEachFeature) {
  LogCapture log(PluginEnvironment::kQuiet);
  SystemMetadata system;
  system.m_secureSignIn = 1;
  for (const char* const feature : {"A", "A", "B", "A"}) {
    EXPECT_FALSE(holds(VTIODisablePluginRequirement(feature), system));
  }
  const std::string text = " has been disabled due to Enhanced Sign-in Security being enabled.";
  EXPECT_EQ(log.warnings(),
            (RecordingSink::Texts{{0, "NOTE: A" + text + "\n"}, {0, "NOTE: B" + text + "\n"}}));
  EXPECT_EQ(log.environment().notes, (std::deque<std::string>{"NOTE: A" + text, "NOTE: B" + text}));
}

TEST(MetricRequirement, HoldsWithoutValues) { EXPECT_TRUE(holds(MetricEnabledRequirement(), {})); }

TEST(MetricRequirement, DoesNotHoldForValuesWithoutTheKey) {
  const LogCapture log;
  EXPECT_FALSE(holds(MetricEnabledRequirement(), {}, {{"OTHER", "TRUE"}}));
}

TEST(MetricRequirement, TheLastValidPairDecides) {
  const LogCapture log;
  EXPECT_TRUE(holds(MetricEnabledRequirement(), {},
                    {{"METRIC-ENABLED", "FALSE"}, {"A-METRIC-ENABLED-B", "TRUE"}, {"X", "FALSE"}}));
  EXPECT_FALSE(holds(MetricEnabledRequirement(), {},
                     {{"METRIC-ENABLED", "TRUE"}, {"METRIC-ENABLED", "FALSE"}}));
  EXPECT_TRUE(log.errors().empty());
}

TEST(MetricRequirement, LowerCaseIsAnErrorAndDecidesNothing) {
  const LogCapture log(PluginEnvironment::kErrors);
  EXPECT_TRUE(holds(MetricEnabledRequirement(), {},
                    {{"METRIC-ENABLED", "TRUE"}, {"METRIC-ENABLED", "true"}}));
  EXPECT_FALSE(holds(MetricEnabledRequirement(), {}, {{"METRIC-ENABLED", "true"}}));
  const std::string text =
      "ERROR: invalid METRIC-ENABLED value true received: MUST be TRUE or FALSE\n";
  EXPECT_EQ(log.errors(), (RecordingSink::Texts{{1, text}, {1, text}}));
}

TEST(MetricRequirement, AllValuesGoToTheQuietLog) {
  const LogCapture log;
  holds(MetricEnabledRequirement(), {}, {{"A", "1"}, {"METRIC-ENABLED", "TRUE"}});
  EXPECT_EQ(log.quiet(),
            "REQ. VALUE Key: A, Value: 1\nREQ. VALUE Key: METRIC-ENABLED, Value: TRUE\n");
}

/// A requirement that is told what to say and counts how often it was asked.
class Fixed : public PluginRequirement {
 public:
  explicit Fixed(bool result, bool negate = false)
      : PluginRequirement("FIXED", negate), m_result(result) {}
  bool isPluginRequirementSatisfied_i(const SystemMetadata& /*metadata*/,
                                      const RequirementValues& /*values*/) const override {
    ++m_asked;
    return m_result;
  }

  bool m_result;
  mutable int m_asked = 0;
};

PluginRequirementGroup group(bool requireAll,
                             const std::vector<std::shared_ptr<PluginRequirement>>& children) {
  PluginRequirementGroup result(requireAll);
  for (const auto& child : children) {
    EXPECT_TRUE(result.addPluginRequirement(child));
  }
  return result;
}

std::shared_ptr<Fixed> fixed(bool result, bool negate = false) {
  return std::make_shared<Fixed>(result, negate);
}

TEST(RequirementGroup, AnEmptyGroupHoldsAlsoWhenAnyMustHold) {
  EXPECT_TRUE(holds(PluginRequirementGroup(true), {}));
  EXPECT_TRUE(holds(PluginRequirementGroup(false), {}));
}

TEST(RequirementGroup, AllMustHold) {
  EXPECT_TRUE(holds(group(true, {fixed(true), fixed(true)}), {}));
  EXPECT_FALSE(holds(group(true, {fixed(true), fixed(false)}), {}));
}

TEST(RequirementGroup, AnyMustHold) {
  EXPECT_TRUE(holds(group(false, {fixed(false), fixed(true)}), {}));
  EXPECT_FALSE(holds(group(false, {fixed(false), fixed(false)}), {}));
}

TEST(RequirementGroup, ANegatedChildCountsTheOtherWayAround) {
  EXPECT_TRUE(holds(group(true, {fixed(false, true), fixed(true)}), {}));
  EXPECT_FALSE(holds(group(true, {fixed(true, true)}), {}));
  EXPECT_FALSE(holds(group(false, {fixed(true, true)}), {}));
}

TEST(RequirementGroup, StopsAtTheChildThatDecides) {
  for (const bool requireAll : {true, false}) {
    const auto decisive = fixed(!requireAll);
    const auto later = fixed(requireAll);
    EXPECT_EQ(holds(group(requireAll, {decisive, later}), {}), !requireAll);
    EXPECT_EQ(decisive->m_asked, 1);
    EXPECT_EQ(later->m_asked, 0);
  }
}

TEST(RequirementGroup, GroupsNest) {
  const auto inner = std::make_shared<PluginRequirementGroup>(group(false, {fixed(false)}));
  EXPECT_FALSE(holds(group(true, {inner}), {}));
  inner->m_negate = true;
  EXPECT_TRUE(holds(group(true, {inner}), {}));
}

TEST(RequirementGroup, ChildrenGetTheValues) {
  const LogCapture log;
  const auto metric = std::make_shared<MetricEnabledRequirement>();
  EXPECT_FALSE(holds(group(true, {metric}), {}, {{"METRIC-ENABLED", "FALSE"}}));
}

TEST(RequirementNegation, IsLookedAtByGroupsOnly) {
  SystemMetadata system;
  system.m_osName = "Linux";
  EXPECT_TRUE(holds(OSNamePluginRequirement("Linux", true), system));
}

TEST(RequirementNames, AreThoseOfTheConfiguration) {
  EXPECT_EQ(FMSPluginRequirement(CPUMetadata(), false).m_name, "FMS");
  EXPECT_EQ(SCUPluginRequirement(0, false).m_name, "SCU");
  EXPECT_EQ(OSNamePluginRequirement("", false).m_name, "OS");
  EXPECT_EQ(EnergyReportingPluginRequirement("", "").m_name, "EnergyReportingEnabled");
  EXPECT_EQ(IGFXPresentPluginRequirement(false).m_name, "IGFX");
  EXPECT_EQ(CPUIDRequirement(0, 0, 0, 0, false).m_name, "CPUID");
  EXPECT_EQ(PCHPluginRequirement("", false).m_name, "PCH");
  EXPECT_EQ(VTIODisablePluginRequirement("Feature").m_name, "Feature");
  EXPECT_EQ(MetricEnabledRequirement().m_name, "MetricEnabledRequirement");
  EXPECT_EQ(PluginRequirementGroup(true).m_name, "SYSTEM");
}

TEST(RequirementNegation, IsWhatTheConstructorGotAndElseOff) {
  EXPECT_TRUE(FMSPluginRequirement(CPUMetadata(), true).m_negate);
  EXPECT_TRUE(SCUPluginRequirement(0, true).m_negate);
  EXPECT_TRUE(OSNamePluginRequirement("", true).m_negate);
  EXPECT_TRUE(IGFXPresentPluginRequirement(true).m_negate);
  EXPECT_TRUE(CPUIDRequirement(0, 0, 0, 0, true).m_negate);
  EXPECT_TRUE(PCHPluginRequirement("", true).m_negate);
  EXPECT_FALSE(EnergyReportingPluginRequirement("", "").m_negate);
  EXPECT_FALSE(VTIODisablePluginRequirement("").m_negate);
  EXPECT_FALSE(MetricEnabledRequirement().m_negate);
  EXPECT_FALSE(PluginRequirementGroup(true).m_negate);
}

}  // namespace
}  // namespace pwr
