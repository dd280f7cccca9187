#include <list>
#include <string>

#include <gtest/gtest.h>

#include "host/platform_metadata.h"
#include "host/system_metadata.h"

namespace {

std::list<std::string> namesOf(const std::string& platformName) {
  pwr::PlatformMetadata platform;
  platform.m_name = platformName;
  pwr::SystemMetadata metadata;
  std::list<std::string> names{"former"};
  platform.getPlatformNames(nullptr, names, metadata);
  return names;
}

TEST(PlatformMetadata, ItsNameIsAppendedToTheNames) {
  EXPECT_EQ(namesOf("MZL"), (std::list<std::string>{"former", "MZL"}));
}

TEST(PlatformMetadata, WithoutANameNothingIsAppended) {
  EXPECT_EQ(namesOf(""), std::list<std::string>{"former"});
}

}  // namespace
