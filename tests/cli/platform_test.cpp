#include <sys/utsname.h>
#include <unistd.h>

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "tests/cli/tool.h"

namespace qumetra::test {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

rapidjson::Document platformAsJson() {
  rapidjson::Document document;
  document.Parse(Tool().run({"platform", "--json"}).out.c_str());
  return document;
}

utsname thisSystem() {
  utsname system{};
  ::uname(&system);
  return system;
}

TEST(PlatformCommand, TellsToolProcessorSystemAndTopology) {
  const ToolResult result = Tool().run({"platform"});
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.out, StartsWith("tool           " QM_VERSION "\n"));
  EXPECT_THAT(result.out, HasSubstr(std::string("kernel ") + thisSystem().release));
  EXPECT_THAT(result.out, ContainsRegex("\nprocessor      [^\n]+\n"));
  EXPECT_THAT(result.out, ContainsRegex("\nsignature      family [0-9]+ model [0-9]+ stepping "));
  EXPECT_THAT(result.out, ContainsRegex("\ntopology       packages: [1-9]"));
}

TEST(PlatformCommand, TellsDevicesEndpointsAndRequirements) {
  const std::string text = Tool().run({"platform"}).out;
  EXPECT_THAT(text, ContainsRegex("\nPCI devices    "));
  EXPECT_THAT(text, ContainsRegex("\ntelemetry      (endpoint|no endpoints)"));
  EXPECT_THAT(text, ContainsRegex("\nrequirements   (yes|no ) +CPUID: digital thermal sensor\n"));
  EXPECT_THAT(text, ContainsRegex("(yes|no )  IGFX: integrated graphics device\n"));
}

TEST(PlatformCommand, JsonHasTheSameOfThisMachine) {
  const rapidjson::Document document = platformAsJson();
  ASSERT_TRUE(document.IsObject());
  EXPECT_STREQ(QM_VERSION, document["tool"].GetString());
  EXPECT_STREQ(thisSystem().release, document["system"]["kernel"].GetString());
  EXPECT_STREQ(thisSystem().machine, document["system"]["architecture"].GetString());
  EXPECT_EQ(static_cast<std::uint64_t>(::sysconf(_SC_NPROCESSORS_ONLN)),
            document["processor"]["threads"].GetUint64());
  EXPECT_TRUE(document["pciDevices"].IsArray());
  EXPECT_TRUE(document["telemetryEndpoints"].IsArray());
}

TEST(PlatformCommand, JsonTellsWhichRequirementsHold) {
  const rapidjson::Document document = platformAsJson();
  ASSERT_TRUE(document.IsObject());
  const auto& requirements = document["requirements"];
  ASSERT_EQ(6U, requirements.Size());
  EXPECT_STREQ("CPUID", requirements[0]["name"].GetString());
  EXPECT_STREQ("digital thermal sensor", requirements[0]["condition"].GetString());
  EXPECT_TRUE(requirements[0]["holds"].IsBool());
}

TEST(PlatformCommand, MakesNoFiles) {
  Tool tool;
  tool.run({"platform"});
  EXPECT_THAT(tool.files(), IsEmpty());
  EXPECT_THAT(tool.temporaries(), IsEmpty());
}

}  // namespace
}  // namespace qumetra::test
